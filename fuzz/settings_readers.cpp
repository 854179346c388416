// The placement and field-name readers take any file without crashing, and only
// recognised keys change anything.
#include "FuzzText.h"
#include "core/app/TextFile.h"
#include "core/app/bImpostazioni.h"

#include <cmath>
#include <cstdlib>

using namespace quillora;
using namespace quillora::bImpostazioni;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::optional<QStringList> read = fuzzLines(data, size);
    if (!read)
        return 0;
    const QStringList& lines = *read;

    WindowPlacement p{1, 2, 3, 4, 0};
    ApplyPlacementLines(lines, p);
    for (float v : {p.left, p.top, p.width, p.height}) {
        if (!std::isfinite(v))
            abort();
    }
    if (!lines.join(QString()).contains(QStringLiteral(".: ")) &&
        !(p == WindowPlacement{1, 2, 3, 4, 0}))
        abort();
    // What we write for any placement we read is read back without error.
    WindowPlacement again{};
    ApplyPlacementLines(PlacementLines(p), again);
    if (std::fabs(again.left - p.left) > std::fabs(p.left) * 1e-6f + 1e-6f)
        abort();

    FieldNames names;
    ApplyFieldNameLines(lines, names);
    for (const QString& n : names) {
        if (n != n.trimmed())
            abort();
    }
    return 0;
}
