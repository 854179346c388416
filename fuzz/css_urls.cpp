// Any bytes scan without crashing, in both contexts. Each url found lies inside the text, after
// "url(" and before ")", in order and apart; writing a new value into every url and scanning
// again finds the same urls holding that value, with every byte outside them unchanged.
#include "core/message/CssUrls.h"

#include <QByteArray>
#include <cstdlib>
#include <string>

using namespace quillora::CssUrls;

namespace {

const QString kMarker = QStringLiteral("/r/new \"&'() <value>.png\\x");

std::string pieceOutside(std::string_view css, const std::vector<Url>& urls, size_t i) {
    const size_t from = i == 0 ? 0 : urls[i - 1].to;
    const size_t to = i == urls.size() ? css.size() : urls[i].from;
    return std::string(css.substr(from, to - from));
}

void check(std::string_view css, Context context) {
    const std::vector<Url> urls = scan(css, context);
    size_t at = 0;
    for (const Url& u : urls) {
        if (u.from < at + 4 || u.to <= u.from || u.to >= css.size())
            abort();
        if (css.find(')', u.to) == std::string_view::npos)
            abort();
        at = u.to;
        valueOf(css.substr(u.from, u.to - u.from), context);
    }
    const QByteArray marker = escaped(kMarker).toUtf8();
    std::string out;
    for (size_t i = 0; i < urls.size(); ++i)
        out += pieceOutside(css, urls, i) + marker.toStdString();
    out += pieceOutside(css, urls, urls.size());
    const std::vector<Url> again = scan(out, context);
    if (again.size() != urls.size())
        abort();
    for (size_t i = 0; i <= again.size(); ++i) {
        if (pieceOutside(out, again, i) != pieceOutside(css, urls, i))
            abort();
        if (i < again.size() &&
            valueOf(std::string_view(out).substr(again[i].from, again[i].to - again[i].from),
                    context) != kMarker)
            abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view css(reinterpret_cast<const char*>(data), size);
    check(css, Context::StyleSheet);
    check(css, Context::Attribute);
    return 0;
}
