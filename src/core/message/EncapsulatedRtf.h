#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

// Outlook keeps many HTML mails only as RTF with the HTML wrapped inside it ("\fromhtml1"):
// the tags sit in "\*\htmltag" groups, and the text between them is plain RTF text, with
// "\htmlrtf" marking the runs that exist only for RTF readers.
namespace quillora::EncapsulatedRtf {

// True when the bytes are RTF that carries HTML this way.
bool carriesHtml(QByteArrayView rtf);

// The HTML inside, decoded to Unicode (the "\ansicpg" code page for "\'hh" bytes, "\uN" for
// the rest). Nothing when the RTF does not carry HTML.
std::optional<QString> extractHtml(QByteArrayView rtf);

} // namespace quillora::EncapsulatedRtf
