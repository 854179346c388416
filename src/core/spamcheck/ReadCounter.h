#pragma once

#include <QString>

// The read counter and the editor's design-time attributes, as the test e-mail carries them.
// Every replacement is case-sensitive and replaces each occurrence.
namespace quillora::ReadCounter {

inline constexpr const char16_t* kMarker = u"<READCOUNTER>";

// The hidden image that stands for the marker, pointing at the counter page of `host`
// ("https://www.example.com": "/readcount.asp" and the query keys are appended).
QString counterImage(const QString& host);

// Removes every marker; with the counter asked for, puts one before the closing body tag
// written "</BODY>", "</body>" or "</Body>" (other spellings get none).
QString InserisciTag_READCOUNTER(QString html, bool counter);

// Removes the design-time attribute in its six written forms, leaving the blank before it.
QString EliminaTag_DESIGNTIMESP(QString html);

// With the counter asked for, every marker becomes the counter image; otherwise unchanged.
QString SostituisciTag_READCOUNTER(QString html, bool counter, const QString& host);

} // namespace quillora::ReadCounter
