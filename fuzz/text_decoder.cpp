// Any bytes decode to some text or a clear error; what we write reads back unchanged.
#include "FuzzText.h"
#include "core/app/TextFile.h"

#include <cstdlib>

using namespace quillora;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::optional<QStringList> read = fuzzLines(data, size);
    if (!read)
        return 0;
    const QStringList& lines = *read;
    for (const QString& line : lines) {
        if (line.contains(u'\r') || line.contains(u'\n'))
            abort();
    }
    // Writing and reading again keeps every line.
    const QByteArray again = TextFile::encodeUtf16LE(TextFile::joinLines(lines));
    const TextFile::Decoded back = TextFile::decode(again);
    if (!back.ok() || TextFile::splitLines(back.text) != lines)
        abort();
    return 0;
}
