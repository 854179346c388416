#pragma once

#include <QString>
#include <QStringList>

// The editor's own preferences that the product family's files do not carry: how often a
// recovery copy is written and the recently used messages. "key: value" lines in
// PATH_FILEIMP + "Opzioni.dll", written as every settings file of the program is.
namespace quillora {

struct EditorSettings {
    static constexpr int kDefaultAutoSaveSeconds = 60;
    static constexpr int kMaxAutoSaveSeconds = 24 * 60 * 60;
    static constexpr int kMaxRecent = 10;
    static constexpr qint64 kMaxFileBytes = 256 * 1024;

    // Seconds without an edit before a recovery copy is written; 0 turns it off.
    int autoSaveSeconds = kDefaultAutoSaveSeconds;
    // Recently opened or saved messages, the latest first, at most kMaxRecent.
    QStringList recent;

    static QString fileIn(const QString& pathFileImp) {
        return pathFileImp + QStringLiteral("Opzioni.dll");
    }

    // Unknown keys and bad values are ignored (the default stays); later lines win, except
    // that recent files accumulate in file order.
    static EditorSettings parse(const QStringList& lines);
    // A missing, unreadable or oversized file gives the defaults.
    static EditorSettings read(const QString& path);
    QStringList lines() const;
    bool write(const QString& path) const;

    // Puts a message at the top of the recent list (once: the same file under another
    // spelling of its path counts as the same) and drops what falls off the end.
    void addRecent(const QString& file);
    void removeRecent(const QString& file);
    // Drops the entries whose file no longer exists; returns how many went.
    int removeMissingRecent();

    bool operator==(const EditorSettings&) const = default;
};

} // namespace quillora
