#pragma once

#include <QString>
#include <QStringView>
#include <optional>
#include <vector>

// The snippet memory: one file per snippet in the "Memory" folder, and a counter file that
// hands out their numbers. The folder is the only index; nothing is cached here.
//
// A snippet file is UTF-16LE with a byte-order mark: the title, CR LF, then the text exactly as
// typed (no line end added). "Counter.mem" holds the number of the last snippet made, one line.
// The number is a signed 16-bit value that only grows; one past 32767 wraps to 0, so the
// snippet after 32767 is 00000000.mem and numbering starts again (old files get overwritten).
namespace quillora {

struct SnippetRow {
    QString fileName; // "00000012.mem"
    QString title;    // empty when the file cannot be read
};

class SnippetStore {
public:
    // `folder` ends with a separator, as APP_MEMORY does.
    explicit SnippetStore(QString folder);

    const QString& folder() const { return m_folder; }

    // CaricaMemory's rows: every "*.mem" file (any letter case) except the counter file, in the
    // order the file system lists them.
    std::vector<SnippetRow> list() const;

    // A file of the snippet list: ".mem" at the end, not the counter (letter case ignored).
    static bool isSnippetFile(QStringView fileName);
    // "00000042.mem" for 42.
    static QString fileNameFor(qint16 number);

    // 0 when the counter file is missing, unreadable or does not hold a number in 0..32767.
    qint16 GetMemoryCounter() const;
    bool SetMemoryCounter(qint16 value) const;

    // InsMemory's storage half: the counter is advanced and written first, then the file.
    // Returns the new file name; the file may still be missing when it could not be written.
    QString add(const QString& title, const QString& text) const;
    // InsertMemory / ModifyMemory: creates or overwrites the file with title, CR LF, text.
    bool InsertMemory(const QString& fileName, const QString& title, const QString& text) const;
    bool ModifyMemory(const QString& fileName, const QString& title, const QString& text) const {
        return InsertMemory(fileName, title, text);
    }
    // True when the file is gone afterwards (already missing counts).
    bool remove(const QString& fileName) const;

    // The first line of the file; empty when it cannot be read.
    QString GetMemoryTitle(const QString& fileName) const;
    // Title and text of a snippet; nullopt when the file cannot be read.
    struct Snippet {
        QString title;
        QString text;
    };
    std::optional<Snippet> read(const QString& fileName) const;

    // What a dropped snippet puts into the page: every CR LF becomes "<BR>"; nothing is
    // escaped, so markup in a snippet takes effect.
    static QString dropHtml(const QString& text);
    // Text from a text box or a file with its line ends as CR LF, the way a snippet keeps them.
    static QString typedText(QString text);

    // A file name the store accepts: eight digits and ".mem", or at least a plain name with no
    // path in it, so a caller's value can never reach outside the folder.
    static bool isSafeName(QStringView fileName);

private:
    QString pathOf(const QString& fileName) const { return m_folder + fileName; }

    QString m_folder;
};

} // namespace quillora
