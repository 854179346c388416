#include "core/message/AttachmentList.h"

#include "core/message/MessageDocument.h"

#include <QFileInfo>

namespace quillora::AttachmentList {

QString sizeText(qint64 bytes, const QLocale& locale) {
    QLocale l = locale;
    l.setNumberOptions(l.numberOptions() & ~QLocale::OmitGroupSeparator);
    return l.toString(double(bytes) / 1028.0, 'f', 2) + QStringLiteral(" Kb");
}

Row rowFor(const QString& path, const QLocale& locale) {
    const QFileInfo info(path);
    return {fileNamePart(path), sizeText(info.isFile() ? info.size() : 0, locale), path};
}

} // namespace quillora::AttachmentList
