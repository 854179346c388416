// Any text walks without crashing; rewriting every reference changes those values and nothing
// else, and walking the result finds the new values where the old ones were.
#include "core/message/References.h"

#include <cstdlib>
#include <cstring>
#include <map>

using namespace quillora::References;

namespace {

const QString kMarker = QStringLiteral("/r/new \"&' value.png");

// Value ranges widened to their quotes, once each (a cloned element shares its range). A CSS
// url keeps its quotes as they are, so its range is its text.
std::map<qsizetype, qsizetype> rangesOf(const std::vector<Reference>& references) {
    std::map<qsizetype, qsizetype> ranges;
    for (const Reference& r : references) {
        if (!r.inSource())
            continue;
        if (r.quote && r.syntax() == Syntax::Html)
            ranges.emplace(r.start - 1, r.start + r.length + 1);
        else
            ranges.emplace(r.start, r.start + r.length);
    }
    return ranges;
}

QStringList outside(const QString& html, const std::map<qsizetype, qsizetype>& ranges) {
    QStringList pieces;
    qsizetype at = 0;
    for (const auto& [from, to] : ranges) {
        if (from < at || to > html.size())
            abort(); // ranges overlap or leave the text
        pieces << html.sliced(at, from - at);
        at = to;
    }
    return pieces << html.sliced(at);
}

void check(const QString& html) {
    const ReferenceWalker walker(html);
    std::vector<Edit> edits;
    for (const Reference& r : walker.references()) {
        if (r.value.isEmpty())
            abort();
        if (r.inSource() && r.syntax() == Syntax::Html) {
            const QChar quote = r.quote ? QChar(r.quote) : QChar();
            if (r.quote && (html.at(r.start - 1) != quote || html.at(r.start + r.length) != quote))
                abort();
        }
        if (r.inSource())
            edits.push_back(Edit::of(r, kMarker));
        for (PathStyle style : {PathStyle::Windows, PathStyle::Posix}) {
            const Resolved resolved = normalise(r.value, u"/nonexistent/base/", style);
            if (resolved.isLocal() && resolved.path.isEmpty())
                abort();
            if (const auto name = safeFileName(resolved.path)) {
                if (name->contains(u'/') || name->contains(u'\\') || *name == u".." ||
                    name->isEmpty())
                    abort();
            }
        }
    }
    const QString out = walker.rewrite(edits);
    const ReferenceWalker again(out);
    // The parser may clone an element a different number of times once attribute values
    // change, so ranges are compared, not the length of the list.
    const auto before = rangesOf(walker.references());
    const auto after = rangesOf(again.references());
    if (before.size() != after.size() || outside(html, before) != outside(out, after))
        abort();
    for (const Reference& r : again.references()) {
        if (r.inSource() && r.value != kMarker)
            abort();
    }
    redirectForPreview(html, QStringLiteral("/nonexistent/restore/"), PathStyle::Posix);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    check(QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size)));
    // The same bytes as UTF-16: lone surrogates and every code unit the decoder never makes.
    QString units(qsizetype(size / 2), Qt::Uninitialized);
    std::memcpy(units.data(), data, size_t(units.size()) * 2);
    check(units);
    return 0;
}
