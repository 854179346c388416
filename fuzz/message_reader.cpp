// Any file given to the reader: no crash, nothing written outside the restore folder, and the
// same objects whether they are restored or only listed.
#include "core/message/MessageFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>

using namespace quillora;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static QTemporaryDir dir;
    const QString input = dir.filePath(QStringLiteral("in.mssx"));
    const QString restore = dir.filePath(QStringLiteral("restore/"));
    {
        QFile f(input);
        if (!f.open(QIODevice::WriteOnly))
            abort();
        f.write(reinterpret_cast<const char*>(data), qint64(size));
    }
    const MessageFile::ReadResult r = MessageFile::read(input, restore);
    if (r.ok()) {
        // Restoring guesses where objects end; listing looks every end up. Both must find the
        // same objects, and every restored one at its listed size.
        const MessageFile::ReadResult listed = MessageFile::read(input, QString());
        if (!listed.ok() || listed.content.objects.size() != r.content.objects.size())
            abort();
        for (qsizetype i = 0; i < r.content.objects.size(); ++i) {
            const auto& o = r.content.objects[i];
            if (!o.restoredPath.isEmpty() && !o.restoredPath.startsWith(restore))
                abort();
            const auto& l = listed.content.objects[i];
            if (o.storedPath != l.storedPath || o.name != l.name)
                abort();
            if (!o.restoredPath.isEmpty() && o.size != l.size)
                abort();
        }
    }
    // The working folder holds the input and the restore folder; the restore folder only files.
    const QStringList top =
        QDir(dir.path())
            .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QString& e : top) {
        if (e != QLatin1String("in.mssx") && e != QLatin1String("restore"))
            abort();
    }
    if (!QDir(restore).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden).isEmpty())
        abort();
    QDir(restore).removeRecursively();
    return 0;
}
