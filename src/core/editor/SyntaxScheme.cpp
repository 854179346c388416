#include "core/editor/SyntaxScheme.h"

#include "core/app/TextFile.h"

#include <QRegularExpression>

namespace quillora::editor {

SyntaxScheme parseSyntaxScheme(const QStringList& lines) {
    static const QRegularExpression colour(QStringLiteral("^#[0-9A-Fa-f]{6}$"));
    SyntaxScheme scheme;
    bool inHtml = false;
    for (const QString& raw : lines) {
        const QString line = raw.trimmed();
        if (line.startsWith(u'[')) {
            inHtml = line.compare(QLatin1String("[HTML]"), Qt::CaseInsensitive) == 0;
            continue;
        }
        const qsizetype colon = line.indexOf(u':');
        if (!inHtml || colon <= 0)
            continue;
        QString name = line.left(colon);
        while (name.endsWith(u'.'))
            name.chop(1);
        const QString value = line.mid(colon + 1).trimmed();
        if (!name.isEmpty() && colour.match(value).hasMatch())
            scheme.colours.insert(name.trimmed(), value.toUpper());
    }
    return scheme;
}

SyntaxScheme loadSyntaxScheme(const QString& file) {
    QStringList lines;
    TextFile::readLines(file, lines, 1024 * 1024);
    return parseSyntaxScheme(lines);
}

} // namespace quillora::editor
