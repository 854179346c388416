#pragma once

#include "core/message/MessageDocument.h"
#include "core/message/References.h"

#include <QFile>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

// The message file: subject, priority, attachments, body and, from version 4 on, a Base64
// copy of every local file the message needs. UTF-16LE with a byte-order mark, CR LF.
namespace quillora::MessageFile {

inline constexpr const char* kTags[] = {"[<INI-SUBJ>]", "[<END-SUBJ>]", "[<INI-PRIO>]",
                                        "[<END-PRIO>]", "[<INI-ALLG>]", "[<END-ALLG>]",
                                        "[<INI-MESS>]", "[<END-MESS>]"};
inline constexpr const char* kObjectSection = "[<INI-OBJECT>]";

// Progress of long work, in bytes of embedded files.
using Progress = std::function<void(qint64 done, qint64 total)>;

struct SaveOptions {
    // Folder that relative body references resolve against (with its trailing separator).
    // Empty: the folder of the file being written.
    QString baseFolder;
    References::PathStyle style = References::native();
    Progress progress;
};

struct SaveResult {
    QString path;        // the file written
    QString description; // why it failed; empty on success
    bool ok() const { return description.isEmpty(); }
};

// The path a message is saved under: ".mssx" unless the extension already is (any case).
QString withMessageExtension(const QString& path);

// The objects a save embeds: every attachment (duplicates kept), then each distinct local file
// of the body in document order.
QStringList objectList(const MessageDocument& doc, const QString& baseFolder,
                       References::PathStyle style = References::native());

// Writes the document under `path` with the message extension, then marks it saved.
// The file is replaced only once it is complete: a failure leaves the previous file as it was.
SaveResult SalvaMessaggio(MessageDocument& doc, const QString& path,
                          const SaveOptions& options = {});

// The same layout under exactly `path`, leaving the document's name and state alone.
SaveResult SalvaMessaggioPerCheckSpam(const MessageDocument& doc, const QString& path,
                                      const SaveOptions& options = {});

// An object of a version 4 file.
struct StoredObject {
    QString storedPath;   // as written after "[<INI-FILE:"
    QString name;         // restored file name; empty when refused
    qint64 size = 0;      // decoded size in bytes
    QString restoredPath; // where it was written, when restored
};

// What a message file holds, read without touching the document.
struct Content {
    QString subject;
    QString priority;
    QStringList storedAttachments; // the attachment lines as stored
    QString body;
    int version = 3;
    QList<StoredObject> objects;
    QStringList warnings; // objects refused or not restored, in the user's terms
};

struct ReadResult {
    Content content;
    QString error; // empty on success
    bool ok() const { return error.isEmpty(); }
};

// Reads a message file. With a restore folder, the objects are decoded into it (each name
// written from its first byte, a longer earlier file not shortened); without, they are only
// listed with their sizes.
ReadResult read(const QString& path, const QString& restoreFolder = QString(),
                const Progress& progress = {});

// True when the file exists and holds the eight tags.
bool ControllaFormatoFileMessaggio(const QString& path);
// True when the file holds the object section.
bool ControllaSeVersione4(const QString& path);

struct OpenResult {
    QString error;            // empty on success; the document is untouched on failure
    bool notAMessage = false; // the file lacks the tags (the user is told so, nothing logged)
    QStringList warnings;
    bool ok() const { return error.isEmpty(); }
};

// The reading steps of opening a file: the working folder of the previous message is removed,
// a new one made under pathFileImp, the objects restored into it and the document filled.
// Attachments of a version 4 file point at their restored copies.
OpenResult ApriMessaggio(MessageDocument& doc, const QString& path, const QString& pathFileImp,
                         const Progress& progress = {});

} // namespace quillora::MessageFile
