#include "core/app/EditorSettings.h"

#include "core/app/TextFile.h"

#include <QDir>
#include <QFileInfo>

namespace quillora {

namespace {

constexpr QStringView kAutoSaveKey = u"AutoSaveSeconds";
constexpr QStringView kRecentKey = u"Recent";

QString normalised(const QString& file) {
    return QDir::cleanPath(QFileInfo(file).absoluteFilePath());
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
        } else if (key == kRecentKey && !value.isEmpty() && s.recent.size() < kMaxRecent &&
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
