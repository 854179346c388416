#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

// A saved mail (.eml) as a message body: its HTML part (or its text part as HTML), with every
// inline "cid:" picture it shows pointed at a file of its own, and its other parts as files.
namespace quillora::MailImport {

struct Resource {
    QString fileName; // safe, unique within the mail, never a hidden name
    QByteArray bytes;
    QString mimeType;
};

struct Mail {
    QString subject;
    QString html; // a whole document; its cid: references name the pictures' files
    std::vector<Resource> pictures;    // inline pictures the body shows, in part order
    std::vector<Resource> attachments; // files and attached messages (".eml")
    enum class BodyFrom { Html, EncapsulatedRtf, Text, Nothing } bodyFrom = BodyFrom::Nothing;
};

// Parses the mail. Transfer encodings are decoded (an unknown name such as "7-bit" or "8bits"
// is taken as no encoding), text is converted from its declared charset (or a clean guess)
// to Unicode. Nothing when the bytes hold no mail part at all.
std::optional<Mail> parse(QByteArrayView eml);

// A file name that stays inside any folder it is joined to, from a name found in a mail (which
// may be empty or a path); `fallbackStem` + an extension for `mimeType` when it is unusable.
QString safeName(const QString& proposed, const QString& fallbackStem, const QString& mimeType);

// Writes the pictures into `folder` and the attachments into `folder` + "attachments/".
// Returns the full paths written, or the reason it could not write.
struct Written {
    QStringList pictures;
    QStringList attachments;
    QString error;
    bool ok() const { return error.isEmpty(); }
};
Written writeFiles(const Mail& mail, const QString& folder);

} // namespace quillora::MailImport
