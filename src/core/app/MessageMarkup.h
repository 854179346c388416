#pragma once

#include <QList>
#include <QString>
#include <QStringView>

// The message boxes take their three texts as small markup documents with fixed fonts. The
// strings built here are the boxes' input format; the window parses them back to draw them.
namespace quillora::bMessage {

// Icon numbers understood by the message boxes.
enum Icon : int {
    kIconNone = 0,
    kIconInformation = 1,
    kIconWarning = 2,
    kIconError = 3,
    kIconQuestion = 4,
    kIconShield = 5,
    kIconProgram = 6, // the program's own icon
};

// Main instruction and content: "&", then "<", then ">" become character references.
QString escapeText(QString text);
// Window title and footer: only "<" and ">"; an "&" stays as it is.
QString escapeTitle(QString text);

QString instructionMarkup(const QString& text);
// Every CR LF pair becomes "<LineBreak/>".
QString contentMarkup(const QString& text);
QString footerMarkup(const QString& text);

// A run of text with an optional link target. Line breaks are "\n".
struct TextRun {
    QString text;
    QString link;
    bool operator==(const TextRun&) const = default;
};

struct TextBlock {
    double pointSize = 0; // 0 when the markup names none
    QString fontFamily;
    bool bold = false;
    QList<TextRun> runs;

    QString plainText() const;
};

// Reads one TextBlock document. Never fails: an unknown element is skipped, an unterminated
// tag and an "&" that starts no known reference are taken as text, so a footer written with a
// bare "&" still shows it.
TextBlock parseTextBlock(QStringView markup);

// The title as the window shows it: the references escapeTitle made are read back.
QString titleText(const QString& escapedTitle);

// "Modifica immagine": the file to open for an image source, or empty when there is nothing to
// open (no source, or a web address). "file://" is dropped; a path that is not absolute is
// relative to the message's working folder and gets this system's separators.
QString imageFileToEdit(const QString& src, const QString& workingFolder);

} // namespace quillora::bMessage
