// Any bytes as a saved mail: parsing, charset conversion and the cid: rewrite never crash, every
// file name stays inside the folder it will be written to, and no picture is left named by its
// content id. The same bytes also go through the reader of HTML wrapped in RTF.
#include "core/message/EncapsulatedRtf.h"
#include "core/message/MailImport.h"

#include <QByteArray>
#include <cstdlib>

using namespace quillora;

namespace {

void checkName(const QString& name) {
    if (name.isEmpty() || name.startsWith(u'.') || name.contains(u'/') || name.contains(u'\\') ||
        name.contains(QChar(0)))
        abort(); // a name that could leave the folder or hide in it
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    if (const std::optional<MailImport::Mail> mail = MailImport::parse(bytes)) {
        for (const MailImport::Resource& r : mail->pictures) {
            checkName(r.fileName);
            if (!mail->html.contains(r.fileName))
                abort(); // a picture nothing shows
        }
        for (const MailImport::Resource& r : mail->attachments)
            checkName(r.fileName);
    }
    (void)EncapsulatedRtf::extractHtml(bytes);
    return 0;
}
