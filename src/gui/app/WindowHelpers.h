#pragma once

#include <QRect>
#include <QString>

class QWidget;

// The small window helpers of the frame, mapped onto Qt.
namespace quillora::gui {

void FormOnTop(QWidget* window);
void Navigate(QWidget* owner, const QString& target);
// Qt does not replay a right click into a later context menu: nothing to clear.
inline void SvuotaCacheMouse() {}

// Twips per pixel from the screen's logical resolution (15 at 96 DPI).
double twipsPerPixel(const QWidget* window);

// A rectangle that lies outside every screen is moved onto the primary screen.
QRect pullOntoScreen(const QRect& rect);

// The one error report box of the program, shown through the session's dialogs.
void ShowErrorReport(const QString& routine, int line, const QString& description,
                     QWidget* parent = nullptr);

} // namespace quillora::gui
