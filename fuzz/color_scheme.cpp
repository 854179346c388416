// The colour-scheme reader takes any pair of choice and scheme files without crashing, and only
// the keys of the chosen section change a colour.
#include "core/app/TextFile.h"
#include "core/app/bColorStyle.h"

#include <algorithm>
#include <cstdlib>

using namespace quillora;
using namespace quillora::bColorStyle;

namespace {

QStringList linesOf(QByteArrayView bytes) {
    const TextFile::Decoded d = TextFile::decode(bytes);
    return d.ok() ? TextFile::splitLines(d.text) : QStringList();
}

} // namespace

// Input: two bytes giving the length of the choice file (little-endian), the choice file, then
// the scheme file.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const size_t choiceSize = std::min<size_t>(size - 2, size_t(data[0]) | size_t(data[1]) << 8);
    const char* bytes = reinterpret_cast<const char*>(data) + 2;
    const QStringList choice = linesOf(QByteArrayView(bytes, qsizetype(choiceSize)));
    const QStringList schemeLines =
        linesOf(QByteArrayView(bytes + choiceSize, qsizetype(size - 2 - choiceSize)));

    const QString name = SchemeChoice(choice);
    if (choice.size() >= 2 && name != choice[(choice.size() / 2) * 2 - 1])
        abort();

    constexpr qint32 kUnset = 0x7F123456;
    ColorScheme scheme;
    for (Colour c : AllColours())
        scheme.set(c, kUnset);
    ApplySchemeSection(schemeLines, name, scheme);
    const QString header = u'[' + name + u']';
    const bool hasSection = schemeLines.contains(header);
    for (Colour c : AllColours()) {
        if (scheme.value(c) == kUnset)
            continue;
        // A colour changed: its key must be on some line of a section of that name.
        if (!hasSection)
            abort();
        bool keyed = false;
        for (const QString& l : schemeLines)
            keyed = keyed || l.startsWith(KeyText(c));
        if (!keyed)
            abort();
    }
    // Reading the same section again changes nothing more.
    ColorScheme again = scheme;
    ApplySchemeSection(schemeLines, name, again);
    if (!(again == scheme))
        abort();

    for (const QString& n : SchemeNames(schemeLines)) {
        if (!schemeLines.contains(u'[' + n + u']'))
            abort();
    }
    for (Colour a : AllColours()) {
        const double r = ContrastRatio(scheme.value(a), scheme.value(Colour::CLR_BARSMENU_BACK));
        if (!(r >= 1.0 && r <= 21.0 + 1e-9))
            abort();
    }
    return 0;
}
