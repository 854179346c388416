// The links reader takes any file without crashing, and keeps only addresses that are safe to
// hand to the web browser and the mail program.
#include "core/app/Links.h"
#include "core/app/TextFile.h"

#include <QUrl>
#include <cstdlib>

using namespace quillora;

namespace {

bool safeText(const QString& s) {
    for (QChar c : s) {
        if (c.isSpace() || c.category() == QChar::Other_Control)
            return false;
    }
    return true;
}

void checkWeb(const QString& value) {
    if (value.isEmpty())
        return;
    const QString scheme = QUrl(value).scheme().toLower();
    if (!safeText(value) || (scheme != u"http" && scheme != u"https"))
        abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArrayView bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const TextFile::Decoded d = TextFile::decode(bytes);
    if (!d.ok())
        return 0;
    const Links links = Links::parse(TextFile::splitLines(d.text));

    for (const QString& site : links.sites)
        checkWeb(site);
    checkWeb(links.readCounter);
    if (!links.support.isEmpty() && (!safeText(links.support) || links.support.count(u'@') != 1 ||
                                     links.support.contains(u'?')))
        abort();
    if (!links.siteFor(u"Deutsch").isEmpty() || !links.siteFor(u"italiano").isEmpty())
        abort();
    // What the reader keeps, written back as lines, reads back the same.
    if (!(Links::parse(links.lines()) == links))
        abort();
    return 0;
}
