#include "core/message/BackgroundSound.h"

#include "core/app/bFunctions.h"

namespace quillora::BackgroundSound {

qint16 loopCount(const QString& typed) {
    return bFunctions::ValInteger(typed).value_or(0);
}

QString loopAttribute(const Choice& c) {
    return c.infinite ? QStringLiteral("infinite") : QString::number(c.loops);
}

QString insertionHtml(const Choice& c) {
    return QStringLiteral("&nbsp;<bgsound balance=0 src=\"") + c.file +
           QStringLiteral("\" volume=0 loop=") + loopAttribute(c) + u'>';
}

} // namespace quillora::BackgroundSound
