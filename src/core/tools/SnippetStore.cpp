#include "core/tools/SnippetStore.h"

#include "core/app/TextFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace quillora {

namespace {

const QString kCounterName = QStringLiteral("Counter.mem");
// A snippet is a piece of a message; anything larger is not one of ours and is not read whole.
constexpr qint64 kMaxSnippetBytes = 64 * 1024 * 1024;

// The first line ends at CR LF, or at a lone CR or LF in a file written by hand.
std::pair<QString, QString> splitTitle(const QString& all) {
    qsizetype end = 0;
    while (end < all.size() && all[end] != u'\r' && all[end] != u'\n')
        ++end;
    QString title = all.left(end);
    qsizetype rest = end;
    if (rest < all.size() && all[rest] == u'\r')
        ++rest;
    if (rest < all.size() && all[rest] == u'\n' && (rest == end || all[rest - 1] == u'\r'))
        ++rest;
    return {title, all.mid(rest)};
}

} // namespace

SnippetStore::SnippetStore(QString folder) : m_folder(std::move(folder)) {
    if (!m_folder.isEmpty() && !m_folder.endsWith(u'/') && !m_folder.endsWith(u'\\'))
        m_folder += u'/';
}

bool SnippetStore::isSnippetFile(QStringView fileName) {
    return fileName.size() >= 4 && fileName.right(4).compare(u".mem", Qt::CaseInsensitive) == 0 &&
           fileName.compare(kCounterName, Qt::CaseInsensitive) != 0;
}

bool SnippetStore::isSafeName(QStringView fileName) {
    if (!isSnippetFile(fileName))
        return false;
    for (QChar c : fileName) {
        if (c == u'/' || c == u'\\' || c.unicode() < 0x20)
            return false;
    }
    return true;
}

QString SnippetStore::fileNameFor(qint16 number) {
    return QStringLiteral("%1.mem").arg(int(number), 8, 10, QLatin1Char('0'));
}

std::vector<SnippetRow> SnippetStore::list() const {
    std::vector<SnippetRow> rows;
    // Unsorted: the rows follow the folder as the file system lists it.
    const QStringList names =
        QDir(m_folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Unsorted);
    for (const QString& name : names) {
        if (isSnippetFile(name))
            rows.push_back({name, GetMemoryTitle(name)});
    }
    return rows;
}

qint16 SnippetStore::GetMemoryCounter() const {
    QStringList lines;
    if (!TextFile::readLines(pathOf(kCounterName), lines, 4096).ok() || lines.isEmpty())
        return 0;
    bool ok = false;
    const int value = lines.first().trimmed().toInt(&ok);
    return ok && value >= 0 && value <= 32767 ? qint16(value) : 0;
}

bool SnippetStore::SetMemoryCounter(qint16 value) const {
    return TextFile::writeLines(pathOf(kCounterName), {QString::number(value)});
}

QString SnippetStore::add(const QString& title, const QString& text) const {
    const qint16 last = GetMemoryCounter();
    // Adding one to 32767 overflows; the number keeps its initial 0 and numbering wraps.
    const qint16 next = last == 32767 ? qint16(0) : qint16(last + 1);
    SetMemoryCounter(next);
    const QString name = fileNameFor(next);
    InsertMemory(name, title, text);
    return name;
}

bool SnippetStore::InsertMemory(const QString& fileName, const QString& title,
                                const QString& text) const {
    if (!isSafeName(fileName))
        return false;
    return TextFile::writeText(pathOf(fileName), title + QStringLiteral("\r\n") + text);
}

bool SnippetStore::remove(const QString& fileName) const {
    if (!isSafeName(fileName))
        return false;
    const QString path = pathOf(fileName);
    return QFile::remove(path) || !QFileInfo::exists(path);
}

std::optional<SnippetStore::Snippet> SnippetStore::read(const QString& fileName) const {
    if (!isSafeName(fileName))
        return std::nullopt;
    const TextFile::Decoded d = TextFile::read(pathOf(fileName), kMaxSnippetBytes);
    if (!d.ok())
        return std::nullopt;
    auto [title, text] = splitTitle(d.text);
    return Snippet{title, text};
}

QString SnippetStore::GetMemoryTitle(const QString& fileName) const {
    const std::optional<Snippet> s = read(fileName);
    return s ? s->title : QString();
}

QString SnippetStore::dropHtml(const QString& text) {
    QString html = text;
    html.replace(QStringLiteral("\r\n"), QStringLiteral("<BR>"));
    return html;
}

QString SnippetStore::typedText(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(u'\n', QStringLiteral("\r\n"));
    return text;
}

} // namespace quillora
