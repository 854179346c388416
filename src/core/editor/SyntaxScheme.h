#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

// The source page's colours, "SyntaxEdit.dll": a "[HTML]" section of "Name....: #RRGGBB" lines.
namespace quillora::editor {

struct SyntaxScheme {
    QMap<QString, QString> colours; // name -> "#RRGGBB"
    QString colour(const QString& name, const QString& fallback) const {
        return colours.value(name, fallback);
    }
};

// Reads the lines of a scheme; unknown sections, malformed lines and bad colours are skipped,
// a name given twice keeps the later colour.
SyntaxScheme parseSyntaxScheme(const QStringList& lines);
SyntaxScheme loadSyntaxScheme(const QString& file);

} // namespace quillora::editor
