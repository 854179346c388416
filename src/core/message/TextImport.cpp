#include "core/message/TextImport.h"

#include "core/app/TextFile.h"

namespace quillora::TextImport {

QString htmlFromText(QStringView text) {
    QStringList lines;
    for (const QString& line : TextFile::splitLines(text))
        lines << line.toHtmlEscaped();
    return QStringLiteral("<!DOCTYPE html>\r\n<html>\r\n<head>\r\n"
                          "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">"
                          "\r\n</head>\r\n<body>") +
           lines.join(QStringLiteral("<br>\r\n")) + QStringLiteral("</body>\r\n</html>\r\n");
}

} // namespace quillora::TextImport
