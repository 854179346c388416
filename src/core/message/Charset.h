#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

// Text in the legacy character sets of mails and documents, made Unicode.
namespace quillora::Charset {

// Decodes bytes declared to be in `charset` (a MIME name such as "windows-1251" or "CP932").
// Nothing when the name is unknown or the bytes are not valid in it, so the caller can try
// another guess instead of showing replacement characters.
std::optional<QString> decode(QByteArrayView bytes, const QByteArray& charset);

// The declared charset when it decodes the bytes cleanly; otherwise UTF-8 when the bytes are
// valid UTF-8, else Windows-1252 (which maps every byte), so no letter is ever lost.
QString decodeBestEffort(QByteArrayView bytes, const QByteArray& declared);

} // namespace quillora::Charset
