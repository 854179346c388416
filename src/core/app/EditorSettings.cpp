#include "core/app/EditorSettings.h"

#include "core/app/TextFile.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

namespace quillora {

namespace {

constexpr QStringView kAutoSaveKey = u"AutoSaveSeconds";
constexpr QStringView kRecentKey = u"Recent";

// A line per entry: a name with a line break, a NUL or another control character cannot be
// written back as it was read, and is no name a message file of ours has.
bool storable(QStringView file) {
    return !file.isEmpty() && std::none_of(file.begin(), file.end(), [](QChar c) {
        return c.category() == QChar::Other_Control;
    });
}

// Absolute by hand: QFileInfo would take a name that starts with ":" for a built-in resource.
QString normalised(const QString& file) {
    return QDir::cleanPath(file.startsWith(u'/') ? file : QDir::currentPath() + u'/' + file);
}

} // namespace

EditorSettings EditorSettings::parse(const QStringList& lines) {
    EditorSettings s;
    for (const QString& line : lines) {
        const qsizetype colon = line.indexOf(u':');
        if (colon <= 0)
            continue;
        const QStringView key = QStringView(line).left(colon).trimmed();
        // A file name may end in blanks: only the blanks after the colon go.
        QString value = line.mid(colon + 1);
        while (!value.isEmpty() && value.front().isSpace())
            value.remove(0, 1);
        if (key == kAutoSaveKey) {
            bool ok = false;
            const int seconds = value.trimmed().toInt(&ok);
            if (ok && seconds >= 0 && seconds <= kMaxAutoSaveSeconds)
                s.autoSaveSeconds = seconds;
        } else if (key == kRecentKey && storable(value) && s.recent.size() < kMaxRecent &&
                   !s.recent.contains(normalised(value))) {
            s.recent << normalised(value);
        }
    }
    return s;
}

EditorSettings EditorSettings::read(const QString& path) {
    QStringList lines;
    if (!TextFile::readLines(path, lines, kMaxFileBytes).ok())
        return {};
    return parse(lines);
}

QStringList EditorSettings::lines() const {
    QStringList out{kAutoSaveKey.toString() + QStringLiteral(": ") +
                    QString::number(autoSaveSeconds)};
    for (const QString& f : recent)
        out << kRecentKey.toString() + QStringLiteral(": ") + f;
    return out;
}

bool EditorSettings::write(const QString& path) const {
    return TextFile::writeLines(path, lines());
}

void EditorSettings::addRecent(const QString& file) {
    if (!storable(file))
        return;
    const QString f = normalised(file);
    recent.removeAll(f);
    recent.prepend(f);
    while (recent.size() > kMaxRecent)
        recent.removeLast();
}

void EditorSettings::removeRecent(const QString& file) {
    recent.removeAll(normalised(file));
}

int EditorSettings::removeMissingRecent() {
    return int(recent.removeIf([](const QString& f) { return !QFileInfo(f).isFile(); }));
}

} // namespace quillora
