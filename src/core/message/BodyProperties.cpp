#include "core/message/BodyProperties.h"

#include "core/app/bFunctions.h"

namespace quillora::BodyProperties {

namespace {

constexpr const char* kAttributes[ColourCount] = {"bgcolor", "text", "link", "alink", "vlink"};
constexpr const char* kDefaults[ColourCount] = {"#FFFFFF", "#000000", "#0000FF", "#0000FF",
                                                "#800080"};

QString nvl(const QString& s) {
    return bFunctions::NVL(s, QString()).toString();
}

} // namespace

const char* colourAttribute(Colour c) {
    return kAttributes[c];
}

const char* defaultColour(Colour c) {
    return kDefaults[c];
}

Values valuesFromBody(const BodyAttributes& body) {
    Values v;
    v.leftMargin = nvl(body.leftmargin);
    v.topMargin = nvl(body.topmargin);
    v.marginWidth = nvl(body.marginwidth);
    v.marginHeight = nvl(body.marginheight);
    v.background = nvl(body.background);
    for (int c = 0; c < ColourCount; ++c) {
        const QString written = body.colours[c].trimmed();
        v.colours[c] =
            bFunctions::HTMLtoRGB(written.isEmpty() ? QString::fromLatin1(kDefaults[c]) : written);
    }
    return v;
}

QList<Step> writeSteps(const Values& v) {
    QList<Step> steps{
        {true, QStringLiteral("leftmargin"), {}},
        {true, QStringLiteral("topmargin"), {}},
        {false, QStringLiteral("leftmargin"), nvl(v.leftMargin)},
        {false, QStringLiteral("topmargin"), nvl(v.topMargin)},
        {false, QStringLiteral("marginwidth"), nvl(v.marginWidth)},
        {false, QStringLiteral("marginheight"), nvl(v.marginHeight)},
    };
    for (int c = 0; c < ColourCount; ++c)
        steps.append(
            {false, QString::fromLatin1(kAttributes[c]), bFunctions::RGBtoHTML(v.colours[c])});
    steps.append({false, QStringLiteral("background"), nvl(v.background)});
    return steps;
}

} // namespace quillora::BodyProperties
