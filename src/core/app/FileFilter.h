#pragma once

#include <QString>
#include <QStringView>

namespace quillora::FileFilter {

// The program's file filters are written "description|pattern|description|pattern", with
// patterns separated by ";". Qt wants "description (pattern pattern);;...". A description
// that already ends in its own "(pattern)" is not repeated; a text without "|" is taken as it
// is, since Qt already reads "Tutti i file(*.*)".
QString qtFilter(QStringView filter);

} // namespace quillora::FileFilter
