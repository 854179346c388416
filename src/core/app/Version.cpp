#include "core/app/Version.h"

namespace quillora::Version {

QString text(int major, int minor) {
    return QString::number(major) + u'.' + (QStringLiteral("00") + QString::number(minor)).right(2);
}

QString program() {
    return text(QUILLORA_VERSION_MAJOR, QUILLORA_VERSION_MINOR);
}

} // namespace quillora::Version
