// A snippet file or an address file of any content: read without crashing, nothing written
// outside the folder, and what is read writes back and reads back the same.
#include "core/tools/SnippetStore.h"
#include "core/tools/SocialLinks.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>

using namespace quillora;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static QTemporaryDir dir;
    const QString folder = dir.path() + QStringLiteral("/Memory/");
    QDir().mkpath(folder);
    {
        QFile f(folder + QStringLiteral("00000001.mem"));
        if (!f.open(QIODevice::WriteOnly))
            abort();
        f.write(reinterpret_cast<const char*>(data), qint64(size));
    }
    QFile::copy(folder + QStringLiteral("00000001.mem"), folder + QStringLiteral("Counter.mem"));
    const SnippetStore store(folder);
    const qint16 counter = store.GetMemoryCounter();
    if (counter < 0)
        abort();
    if (store.list().size() != 1)
        abort();
    if (const auto s = store.read(QStringLiteral("00000001.mem"))) {
        if (s->title.contains(u'\r') || s->title.contains(u'\n'))
            abort();
        // Stored again and read back: the same title and text.
        if (!store.InsertMemory(QStringLiteral("00000002.mem"), s->title, s->text))
            abort();
        const auto back = store.read(QStringLiteral("00000002.mem"));
        if (!back || back->title != s->title || back->text != s->text)
            abort();
        (void)SnippetStore::dropHtml(s->text);
    }
    const QStringList addresses =
        SocialLinks::readAddresses(folder + QStringLiteral("00000001.mem"));
    if (addresses.size() > SocialLinks::kNetworks)
        abort();
    QFile::remove(folder + QStringLiteral("00000002.mem"));
    QFile::remove(folder + QStringLiteral("Counter.mem"));
    if (QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size() != 1)
        abort();
    return 0;
}
