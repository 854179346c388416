#pragma once

#include "core/message/MessageDocument.h"
#include "core/message/MessageFile.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <functional>
#include <memory>

class QLockFile;

// Recovery copies: while a message has unsaved changes the editor keeps a complete message file
// of it in PATH_FILEIMP + "Recovery/", never over the user's own file. Each running editor owns
// one slot, named after its process and guarded by a lock file; a copy whose lock has no living
// owner was left by a run that crashed or was killed, and is offered at the next start.
namespace quillora::Recovery {

// PATH_FILEIMP + "Recovery/".
QString folder(const QString& pathFileImp);

// What a slot remembers besides the message itself.
struct Copy {
    QString id;           // the slot's name (file stem)
    QString messageFile;  // <folder>/<id>.mssx
    QString originalPath; // the message's own file; empty for a message never saved
    QString titleName;    // "[name.mssx]" as the window showed it, without the unsaved mark
    QDateTime written;    // when the copy was last written
};

// The slot of the running editor. Takes its lock on construction; the lock is let go (and the
// lock file removed) when the writer is destroyed, so a copy outlives a clean exit only if it
// was not removed first.
class Writer {
public:
    explicit Writer(const QString& pathFileImp);
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    // False when the folder or the lock could not be made: copies are then not written.
    bool isValid() const;
    const QString& id() const { return m_id; }
    QString messageFile() const;

    // Writes the document as a complete message file (atomically), then its description.
    // baseFolder resolves relative references in the body, as a save would. A copy still
    // waiting to be written in the background is dropped, and one being written is waited for:
    // what this call writes is what stays.
    MessageFile::SaveResult write(const MessageDocument& doc, const QString& baseFolder);

    // The same, on the writer's own thread: the caller only pays for copying the document
    // (packing a message with its pictures takes long enough to be felt when it is done on
    // every page switch). Copies asked for while one is being written are merged: only the
    // newest is written next. `done` runs on that thread, after the copy is on disk or failed.
    using Done = std::function<void(const MessageFile::SaveResult&)>;
    void post(MessageDocument doc, QString baseFolder, Done done = {});
    // Returns once no copy is waiting or being written.
    void waitIdle();

    // Removes the copy (after a save, a clean close, or a new message). A copy waiting to be
    // written is dropped first, and one being written is waited for, so none comes back.
    void remove();
    bool hasCopy() const;

private:
    MessageFile::SaveResult writeCopy(const MessageDocument& doc, const QString& baseFolder);
    void writeInBackground();

    QString m_folder;
    QString m_id;
    std::unique_ptr<QLockFile> m_lock;
    struct Background;
    std::unique_ptr<Background> m_background;
};

// A copy left by an editor that is gone, held so that no other editor offers it at the same
// time. Destroying the claim lets it go, leaving the copy for a later start.
class Claim {
public:
    Claim(Copy copy, std::unique_ptr<QLockFile> lock);
    ~Claim();
    Claim(Claim&&) noexcept;
    Claim& operator=(Claim&&) noexcept;

    const Copy& copy() const { return m_copy; }
    // Deletes the copy and its description; the claim is then empty.
    void discard();

private:
    Copy m_copy;
    std::unique_ptr<QLockFile> m_lock;
};

// The copies in the folder whose writer is no longer running, newest first, each claimed.
// Copies of editors still running are left alone.
std::vector<Claim> claimOrphans(const QString& pathFileImp);

// Reads a slot's description file (for the tests and the claim): empty fields when missing.
Copy describe(const QString& folder, const QString& id);

} // namespace quillora::Recovery
