#pragma once

#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>

// Turns a word-processor document or a saved mail into an HTML file with its pictures beside
// it. Documents go through LibreOffice, Outlook files through msgconvert, mails through the
// MIME parser; the caller names the source, the output file and the converter options.
namespace quillora::DocumentConverter {

enum class SourceType { Unknown, WordDocument, Mail, OutlookMail, Text, HtmlPage };

// By the file's extension, case ignored.
SourceType typeOf(const QString& path);

// The options and output names of the two imports that run the converter.
inline constexpr const char* kWordOptions = "-cHTML -tc3 -DPI75";
inline constexpr const char* kMailOptions = "-c HTML -body ";
inline constexpr const char* kWordOutput = "WORD.HTML";
inline constexpr const char* kMailOutput = "OUTLOOK.HTML";

// The Debian packages that bring the outside programs.
inline constexpr const char* kOfficePackage = "libreoffice-writer-nogui";
inline constexpr const char* kOutlookPackage = "libemail-outlook-message-perl";

struct Settings {
    QString soffice = QStringLiteral("soffice");       // a name on PATH or a full path
    QString msgconvert = QStringLiteral("msgconvert"); // likewise
    int timeoutMs = 120000;                            // per outside program
    // LibreOffice's own profile, kept apart from any office the user has open. Empty: a
    // folder beside the output (a cold start every time).
    QString profileFolder;
    const std::atomic_bool* cancel = nullptr; // set from another thread to stop
    std::function<void(const QString&)> step; // "soffice", "msgconvert", "mail": what runs now
};

enum class Failure {
    None,
    UnknownType, // not a document or a mail by its extension
    BadOptions,  // an option string this adapter does not know
    Unreadable,  // the source cannot be read
    ToolMissing, // the outside program is not installed
    ToolFailed,  // it ran and gave no output
    TimedOut,    // it ran past the time limit and was stopped
    Cancelled,
    NoContent,   // the mail holds nothing to show
    CannotWrite, // the output folder cannot take the files
};

struct Result {
    Failure failure = Failure::None;
    QString tool;            // the outside program concerned
    QString package;         // the Debian package that brings it
    QString detail;          // what the program or the system said
    QString output;          // the HTML file written
    QString subject;         // of a mail
    QStringList pictures;    // files the body shows, beside the output
    QStringList attachments; // files of a mail that are no part of its body
    qint64 toolMs = 0;       // time spent inside outside programs
    bool ok() const { return failure == Failure::None; }
};

// Converti: source, output path, option string; writes the output file and the files beside it.
Result Converti(const QString& source, const QString& output, const QString& options,
                const Settings& settings = {});

// One line in English for logs and the command line.
QString describe(const Result& result);

// The rebuild of a converted mail, on its text: the lines before the document proper (up to a
// line starting with "<!DOCTYPE" or "<html ") are the header block, placed where <HEAD> was;
// the generator META, empty STYLE and </HEAD> go; a two-line "#msg_body {" rule with a 1px
// border gets a 0px one. Lines end with CR LF.
QString rebuildMailHtml(QStringView converted);

// Reads the converted mail, rebuilds it and writes it back as UTF-16. False when it cannot.
bool RicostruisciOutlook(const QString& path, QString* error = nullptr);

// Any of the importable files as a body: documents and mails through Converti into
// `workFolder` (under "WORD.HTML" or "OUTLOOK.HTML"), a text as literal text, an HTML page as
// it is. The body's relative references resolve against `baseFolder`.
struct Imported {
    Result result; // the failure, the pictures and the attachments
    SourceType type = SourceType::Unknown;
    QString html;
    QString baseFolder;
    bool ok() const { return result.ok(); }
};
Imported importFile(const QString& source, const QString& workFolder,
                    const Settings& settings = {});

} // namespace quillora::DocumentConverter
