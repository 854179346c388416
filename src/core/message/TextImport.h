#pragma once

#include <QString>
#include <QStringView>

// A plain text as a message body: shown exactly as written, tags included.
namespace quillora::TextImport {

// A whole document whose body holds the text as plain inner text: "<", ">" and "&" become
// character references, each line break a <br>, so nothing in the text is taken as markup.
QString htmlFromText(QStringView text);

} // namespace quillora::TextImport
