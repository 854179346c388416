// Any picture file given to the slicer: no crash, and nothing written outside its work folder.
#include "core/tools/ImageSlicer.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>
#include <cstring>

using namespace quillora;

namespace {

// The loader is chosen by extension: name the file after what its first bytes look like, so the
// seeds reach their own decoder, and anything else goes to the JPEG one.
const char* extensionFor(const uint8_t* data, size_t size) {
    if (size >= 4 && std::memcmp(data, "\x89PNG", 4) == 0)
        return "png";
    if (size >= 3 && std::memcmp(data, "GIF", 3) == 0)
        return "gif";
    return "jpg";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static QTemporaryDir dir;
    const QString input = dir.filePath(QStringLiteral("in.") + extensionFor(data, size));
    const QString work = dir.filePath(QStringLiteral("work/"));
    {
        QFile f(input);
        if (!f.open(QIODevice::WriteOnly))
            abort();
        f.write(reinterpret_cast<const char*>(data), qint64(size));
    }
    const tools::SliceResult r = tools::sliceImage(input, 600, 100, work);
    if (!r.ok() && r.error.isEmpty())
        abort(); // a failure always says why
    const QStringList top =
        QDir(dir.path())
            .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QString& e : top) {
        if (e != QFileInfo(input).fileName() && e != QLatin1String("work"))
            abort();
    }
    const QStringList written =
        QDir(work).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    if (r.ok()) {
        // Exactly the slices and the page.
        if (written.size() != qsizetype(r.slices.size()) + 1 || r.scaledWidth != 600)
            abort();
        for (const tools::Slice& s : r.slices) {
            if (!s.file.startsWith(work) || !QFile::exists(s.file))
                abort();
        }
    } else if (!written.isEmpty()) {
        abort(); // a failed conversion leaves nothing behind
    }
    QDir(work).removeRecursively();
    QFile::remove(input);
    return 0;
}
