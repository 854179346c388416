#pragma once

#include <QString>

namespace quillora::Version {

// Major, ".", and the minor number as its last two digits: 4.5 shows as 4.05.
QString text(int major, int minor);

// This build's version, as the About and splash windows show it.
QString program();

} // namespace quillora::Version
