#include "core/app/FileFilter.h"

#include <QStringList>

namespace quillora::FileFilter {

namespace {

QString patternsOf(QStringView text) {
    QStringList parts;
    for (QStringView p : text.split(u';')) {
        for (QStringView word : p.split(u' ', Qt::SkipEmptyParts))
            parts << word.toString();
    }
    return parts.isEmpty() ? QStringLiteral("*") : parts.join(u' ');
}

QString entry(QStringView description, QStringView pattern) {
    // A last description without its pattern keeps the patterns it names itself.
    if (pattern.trimmed().isEmpty() && description.trimmed().endsWith(u')') &&
        description.contains(u'('))
        return description.trimmed().toString();
    const QString patterns = patternsOf(pattern);
    QString desc = description.trimmed().toString();
    // "Tutti i file(*.*)" with "*.*" would otherwise read "Tutti i file(*.*) (*.*)".
    if (desc.endsWith(u')')) {
        const qsizetype open = desc.lastIndexOf(u'(');
        if (open >= 0 &&
            patternsOf(QStringView(desc).sliced(open + 1, desc.size() - open - 2)) == patterns)
            desc = desc.left(open).trimmed();
    }
    if (desc.isEmpty())
        desc = patterns;
    return desc + QStringLiteral(" (") + patterns + u')';
}

} // namespace

QString qtFilter(QStringView filter) {
    if (!filter.contains(u'|'))
        return filter.trimmed().toString();
    QList<QStringView> parts = filter.split(u'|');
    if (!parts.isEmpty() && parts.last().trimmed().isEmpty())
        parts.removeLast();
    QStringList entries;
    for (qsizetype i = 0; i < parts.size(); i += 2) {
        const QStringView pattern = i + 1 < parts.size() ? parts[i + 1] : QStringView();
        if (parts[i].trimmed().isEmpty() && pattern.trimmed().isEmpty())
            continue;
        entries << entry(parts[i], pattern);
    }
    return entries.join(QStringLiteral(";;"));
}

} // namespace quillora::FileFilter
