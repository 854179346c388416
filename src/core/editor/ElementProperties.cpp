#include "core/editor/ElementProperties.h"

#include "core/app/bFunctions.h"

#include <QRegularExpression>
#include <QSet>

namespace quillora::editor {

namespace {

using K = RowKind;

constexpr const char* kImgAlign[] = {"absbottom", "absmiddle", "baseline", "bottom", "left",
                                     "middle",    "right",     "texttop",  "top"};
constexpr const char* kTableAlign[] = {"center", "left", "right"};
constexpr const char* kCellAlign[] = {"center", "left", "right", "justify"};
constexpr const char* kVAlign[] = {"middle", "top", "bottom", "baseline"};

constexpr PropertyRow kId{"ID", "id"};
constexpr PropertyRow kClass{"Class", "class"};
constexpr PropertyRow kTitle{"Title", "title"};
constexpr PropertyRow kWidth{"Width", "width"};
constexpr PropertyRow kHeight{"Height", "height"};
constexpr PropertyRow kBorder{"Border", "border"};
constexpr PropertyRow kName{"Name", "name"};
constexpr PropertyRow kValue{"Value", "value"};
constexpr PropertyRow kDisabled{"Disabled", "disabled", K::YesNo};
constexpr PropertyRow kSize{"Size", "size"};
constexpr PropertyRow kColor{"Color", "color", K::Colour};
constexpr PropertyRow kPointsize{"Pointsize", "pointsize"};

constexpr PropertyRow kImg[] = {
    kId,
    kClass,
    {"Image", "src", K::Text, {}, true},
    kWidth,
    kHeight,
    {"Hor. space", "hspace"},
    {"Ver. space", "vspace"},
    kBorder,
    {"Align", "align", K::Choice, kImgAlign},
    kTitle,
    {"Alt", "alt"},
};

constexpr PropertyRow kTable[] = {
    kId,
    kClass,
    {"BG Image", "background", K::Text, {}, true},
    {"BG color", "bgColor", K::Colour},
    kWidth,
    kHeight,
    {"Hor. align", "align", K::Choice, kTableAlign},
    {"Ver. align", "vAlign", K::Choice, kVAlign},
    kBorder,
    {"Border Color", "borderColor", K::Colour},
    kTitle,
};

constexpr PropertyRow kTd[] = {
    kId,
    kClass,
    {"BG Image", "background", K::Text, {}, true},
    {"BG color", "bgColor", K::Colour},
    kWidth,
    kHeight,
    {"Hor. align", "align", K::Choice, kCellAlign},
    {"Ver. align", "vAlign", K::Choice, kVAlign},
    kBorder,
    {"Border Color", "borderColor", K::Colour},
    kTitle,
};

constexpr PropertyRow kInput[] = {
    kId,
    kClass,
    kName,
    kValue,
    kSize,
    {"Max length", "maxLength"},
    {"Align", "align", K::Choice, kTableAlign},
    {"Src", "src"},
    kDisabled,
    {"Checked", "checked", K::YesNo},
};

constexpr PropertyRow kTextarea[] = {
    kId, kClass, kName, kValue, {"Cols", "cols"}, {"Rows", "rows"}, kDisabled,
};

constexpr PropertyRow kSelect[] = {kId, kClass, kName, kValue, kSize, kDisabled};

constexpr PropertyRow kBody[] = {
    kId,
    kClass,
    {"BG Image", "background", K::Text, {}, true},
    {"BG color", "bgColor", K::Colour},
    {"BG properties", "bgProperties"},
    {"Text color", "text", K::Colour},
    {"Link color", "link", K::Colour},
    {"Active link", "aLink", K::Colour},
    {"Visited link", "vLink", K::Colour},
    {"Left margin", "leftmargin"},
    {"Right margin", "rightmargin"},
    {"Top margin", "topmargin"},
    {"Bottom margin", "bottommargin"},
    {"Margin width", "marginwidth"},
    {"Margin height", "marginheight"},
};

constexpr PropertyRow kBlock[] = {kId, kClass, {"Align", "align", K::Choice, kCellAlign}, kTitle};

constexpr PropertyRow kAnchor[] = {
    kId, kClass, {"Link", "href"}, {"Target", "target"}, kTitle, kName,
};

constexpr PropertyRow kSpan[] = {kId, kClass, kTitle};

// FONT, the inline emphasis tags and the list tags share one set of rows.
constexpr PropertyRow kFontLike[] = {kId, kClass, kColor, kSize, kPointsize, kTitle};

struct TagRows {
    const char* tag;
    TagGroup group;
    std::span<const PropertyRow> rows;
};

constexpr TagRows kTags[] = {
    {"IMG", TagGroup::Control, kImg},
    {"TABLE", TagGroup::Control, kTable},
    {"INPUT", TagGroup::Control, kInput},
    {"TEXTAREA", TagGroup::Control, kTextarea},
    {"SELECT", TagGroup::Control, kSelect},
    {"BODY", TagGroup::Text, kBody},
    {"TD", TagGroup::Text, kTd},
    {"P", TagGroup::Text, kBlock},
    {"DIV", TagGroup::Text, kBlock},
    {"CENTER", TagGroup::Text, kBlock},
    {"A", TagGroup::Text, kAnchor},
    {"SPAN", TagGroup::Text, kSpan},
    {"FONT", TagGroup::Text, kFontLike},
    {"B", TagGroup::Text, kFontLike},
    {"STRONG", TagGroup::Text, kFontLike},
    {"EM", TagGroup::Text, kFontLike},
    {"U", TagGroup::Text, kFontLike},
    {"LI", TagGroup::Text, kFontLike},
    {"OL", TagGroup::Text, kFontLike},
};

const TagRows* findTag(QStringView tag) {
    for (const TagRows& t : kTags) {
        if (tag == QLatin1String(t.tag))
            return &t;
    }
    return nullptr;
}

QString hex2(int v) {
    return QStringLiteral("%1").arg(v, 2, 16, QLatin1Char('0'));
}

} // namespace

TagGroup tagGroup(QStringView tag) {
    const TagRows* t = findTag(tag);
    return t ? t->group : TagGroup::None;
}

std::span<const PropertyRow> propertyRows(QStringView tag) {
    const TagRows* t = findTag(tag);
    return t ? t->rows : std::span<const PropertyRow>{};
}

SelectionType selectionType(QStringView bridgeName) {
    if (bridgeName == QLatin1String("Control"))
        return SelectionType::Control;
    if (bridgeName == QLatin1String("Text"))
        return SelectionType::Text;
    return SelectionType::None;
}

std::optional<QString> colourRowToHtml(const QString& row) {
    const QString text = row.trimmed();
    if (text.isEmpty())
        return QString();
    if (text.startsWith(u'#')) {
        static const QRegularExpression hex(QStringLiteral("^#[0-9A-Fa-f]{6}$"));
        if (!hex.match(text).hasMatch())
            return std::nullopt;
        return text.toLower();
    }
    const QStringList parts = text.split(u';');
    if (parts.size() != 3)
        return std::nullopt;
    QString out = QStringLiteral("#");
    for (const QString& p : parts) {
        bool ok = false;
        const int v = p.trimmed().toInt(&ok);
        if (!ok || v < 0 || v > 255)
            return std::nullopt;
        out += hex2(v);
    }
    return out;
}

QString htmlToColourRow(const QString& html) {
    static const QRegularExpression hex(QStringLiteral("^#?[0-9A-Fa-f]{6}$"));
    const QString text = html.trimmed();
    if (!hex.match(text).hasMatch())
        return html;
    const qint32 rgb = bFunctions::HTMLtoRGB(text);
    return QStringLiteral("%1;%2;%3")
        .arg(rgb & 0xff)
        .arg((rgb >> 8) & 0xff)
        .arg((rgb >> 16) & 0xff);
}

AttributeWrite attributeWrite(QStringView tag, const QString& attribute, const QString& value) {
    using W = AttributeWrite::Kind;
    const QString a = attribute.toLower();
    if (a == QLatin1String("id") || a == QLatin1String("title"))
        return {W::TextProperty, a, value};
    if (a == QLatin1String("class"))
        return {W::TextProperty, QStringLiteral("className"), value};
    const bool input = tag == QLatin1String("INPUT");
    if (input || tag == QLatin1String("SELECT")) {
        // The properties that write the markup: an input's live value and checked state
        // would leave the saved HTML as it was.
        if (a == QLatin1String("disabled"))
            return {W::BooleanProperty, a, value};
        if (a == QLatin1String("checked"))
            return {W::BooleanProperty, QStringLiteral("defaultChecked"), value};
        if (a == QLatin1String("value") && input)
            return {value.isEmpty() ? W::Remove : W::Attribute, a, value};
        if ((a == QLatin1String("size") || a == QLatin1String("maxlength")) && !value.isEmpty())
            return {W::NumberProperty, attribute, value};
        if (!value.isEmpty() && (a == QLatin1String("name") || a == QLatin1String("value") ||
                                 a == QLatin1String("align") || a == QLatin1String("src")))
            return {W::TextProperty, a, value};
    }
    if (a == QLatin1String("disabled") || a == QLatin1String("checked"))
        return {value.isEmpty() ? W::Remove : W::Attribute, a, QString()};
    return {value.isEmpty() ? W::Remove : W::Attribute, attribute, value};
}

QStringList classNamesFromSelectors(const QStringList& selectors) {
    QStringList out;
    QSet<QString> seen;
    for (const QString& s : selectors) {
        if (!s.startsWith(u'.'))
            continue;
        const QString name = s.mid(1);
        if (!name.isEmpty() && !seen.contains(name)) {
            seen.insert(name);
            out << name;
        }
    }
    return out;
}

} // namespace quillora::editor
