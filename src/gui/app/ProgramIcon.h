#pragma once

#include <QIcon>
#include <QPixmap>

// The program's own icon, drawn for 16, 32, 48 and 128 pixels.
namespace quillora::gui {

QIcon programIcon();
// Makes the bars' icons come from the breeze theme when the desktop names none (a session
// without a desktop, offscreen), with breeze as the fallback for names a theme lacks.
void useIconTheme();
// The nearest drawn size, scaled smoothly when no drawing has exactly this size.
QPixmap programPixmap(int size);

} // namespace quillora::gui
