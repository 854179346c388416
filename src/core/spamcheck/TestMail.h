#pragma once

#include "core/app/AccountStore.h"
#include "core/message/References.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vmime/vmime.hpp>

// The e-mail a mailing would send for the message being edited: sender account, recipient,
// reply-to, priority, attachments, inline images and read counter, composed with vmime.
// The spam check scores it; "Export as e-mail" and a test send use the same composition.
namespace quillora::TestMail {

// What the composition reads from a message file.
struct Content {
    QString subject;
    QString priority;        // "HI" high, "LW" low, anything else normal
    QStringList attachments; // full paths; each is attached under the name after its last \ or /
    QString body;            // the HTML, its lines joined with CR LF
};

struct ReadResult {
    Content content;
    QString error; // empty on success
    bool ok() const { return error.isEmpty(); }
};

// Reads a message file line by line: the subject and priority from the first two lines, the
// attachment lines up to "[<END-ALLG>]", the body lines up to "[<END-MESS>]".
ReadResult readLines(const QStringList& lines);
ReadResult readFile(const QString& path);

// A saved message (.mssx or .mss) made ready to compose: its embedded files restored into
// restoreFolder, the body's local references and the attachments pointing at the restored copies.
// Warnings name the objects that could not be restored.
ReadResult readMessageFile(const QString& path, const QString& restoreFolder,
                           QStringList* warnings = nullptr);

inline constexpr const char* kMimeOleHeader = "X-MimeOLE";
inline constexpr const char* kMimeOleValue = "Produced By Microsoft MimeOLE";
inline constexpr const char* kMailerValue = "Microsoft Office Outlook 12.0";
inline constexpr const char* kDefaultMachine = "PCLOCAL";

struct Options {
    Account sender;
    QString recipientName;
    QString recipientAddress; // empty: the sender's own address
    QString replyTo;          // empty: none
    bool readReceipt = false; // ask the recipient's program to confirm reading
    bool readCounter = false; // put the hidden counter image at the end of the body
    QString readCounterHost;  // the counter page's site ("Links.dll")
    // The client marks of a real mailing (X-MimeOLE and the mailer name). The spam check wants
    // them, so that the filter judges what recipients get; a plain export leaves them out.
    bool clientMarks = true;
    QString machineName; // the sending machine, in the Message-ID; empty gives "PCLOCAL"
    // Folder that relative references of the body resolve against (with its separator).
    QString baseFolder;
    References::PathStyle style = References::native();
};

struct Result {
    vmime::shared_ptr<vmime::message> message;
    QString error;             // empty on success
    int inlineImages = 0;      // distinct local images embedded
    QStringList missingImages; // local references to files that do not exist, left as they are
    QString html;              // the HTML part as composed
    bool ok() const { return error.isEmpty() && message; }
};

Result compose(const Content& content, const Options& options);

// The body's text as a reader sees it: no markup, scripts or styles; blocks on lines of their own.
QString plainText(const QString& html);

// The message as RFC 5322 bytes with CR LF line ends.
QByteArray toEml(const vmime::message& message);
// Writes the bytes to a temporary file beside `path` and renames it over `path` when complete.
bool writeEml(const vmime::message& message, const QString& path, QString* error = nullptr);

} // namespace quillora::TestMail
