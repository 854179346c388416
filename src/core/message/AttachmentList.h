#pragma once

#include <QLocale>
#include <QString>

// The rules of the attachments list; the pane shows these rows.
namespace quillora::AttachmentList {

struct Row {
    QString name; // "File": after the last separator
    QString size; // "Size"
    QString path; // "Temporary Path": what the message file stores
};

// The size column: bytes divided by 1028 (the list has always used 1028), two decimals, a
// leading zero, digit grouping, then " Kb".
QString sizeText(qint64 bytes, const QLocale& locale = QLocale());

// One row for a file; a file that cannot be read shows a size of 0.
Row rowFor(const QString& path, const QLocale& locale = QLocale());

// The remove command is offered only while there is a row to remove.
inline bool canRemove(int dataRows) {
    return dataRows > 0;
}

} // namespace quillora::AttachmentList
