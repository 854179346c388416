// Any bytes as a language file: no crash, only keys of the program's table are applied, and
// the progress stays within the file's size and ends at it.
#include "FuzzText.h"
#include "core/app/LanguageKeys.h"
#include "core/app/TextFile.h"
#include "core/app/bLANG.h"

#include <cstdlib>

using namespace quillora;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::optional<QStringList> read = fuzzLines(data, size);
    if (!read)
        return 0;
    const QStringList& lines = *read;

    // The first line's name as the language, so that fuzzed headers can be selected too.
    const QString first = lines.value(0);
    for (const QString& language : {QStringLiteral("English"), first.mid(8)}) {
        int calls = 0;
        qint64 before = 0;
        qint64 last = -1;
        const bLANG::LoadResult r = bLANG::LoadLanguageLines(
            lines, qint64(size), language,
            [&](const QString& key, const QString&) {
                if (!bLANG::findKey(key))
                    abort();
                ++calls;
            },
            [&](qint64 at, qint64 max) {
                if (max != qint64(size) || at < before || at > max)
                    abort();
                before = last = at;
            });
        if (r.CurrentLanguageIndex < 0 || r.CurrentLanguageIndex > r.LanguageCount)
            abort();
        if (calls != r.applied || (r.CurrentLanguageIndex == 0 && calls != 0))
            abort();
        if (last != qint64(size))
            abort();
    }
    return 0;
}
