#pragma once

#include <QString>
#include <QtGlobal>

// The message's background sound: one BGSOUND element of the body.
namespace quillora::BackgroundSound {

// What the sound dialog hands back.
struct Choice {
    QString file; // full path; empty when no file was chosen
    bool infinite = false;
    qint16 loops = 0; // plays, when not infinite
};

// The loop count as typed: its numeric value, non-numbers (and numbers out of range) 0.
qint16 loopCount(const QString& typed);

// The "loop" attribute: "infinite" or the count in decimal.
QString loopAttribute(const Choice& c);

// The text inserted at the caret when the body has no sound yet, leading "&nbsp;" included.
QString insertionHtml(const Choice& c);

} // namespace quillora::BackgroundSound
