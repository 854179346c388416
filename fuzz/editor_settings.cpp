// The editor's own settings file: any content gives a usable interval and a recent list of at
// most ten distinct absolute paths, and what is written for it is read back the same.
#include "FuzzText.h"
#include "core/app/EditorSettings.h"

#include <cstdlib>

using namespace quillora;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::optional<QStringList> lines = fuzzLines(data, size);
    if (!lines)
        return 0;
    const EditorSettings s = EditorSettings::parse(*lines);
    if (s.autoSaveSeconds < 0 || s.autoSaveSeconds > EditorSettings::kMaxAutoSaveSeconds)
        abort();
    QStringList distinct = s.recent;
    if (s.recent.size() > EditorSettings::kMaxRecent || distinct.removeDuplicates() != 0)
        abort();
    for (const QString& f : s.recent) {
        if (!f.startsWith(u'/'))
            abort();
    }
    if (!(EditorSettings::parse(s.lines()) == s))
        abort();
    return 0;
}
