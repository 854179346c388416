#include "gui/app/WindowHelpers.h"

#include "core/app/bError.h"
#include "gui/app/Dialogs.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QUrl>
#include <QWidget>

namespace quillora::gui {

void FormOnTop(QWidget* window) {
    window->setWindowFlag(Qt::WindowStaysOnTopHint, true);
    window->show();
}

void Navigate(QWidget*, const QString& target) {
    const QUrl url =
        QFileInfo::exists(target) ? QUrl::fromLocalFile(target) : QUrl::fromUserInput(target);
    QDesktopServices::openUrl(url);
}

double twipsPerPixel(const QWidget* window) {
    const QScreen* screen =
        window && window->screen() ? window->screen() : QGuiApplication::primaryScreen();
    const double dpi = screen ? screen->logicalDotsPerInch() : 96.0;
    return 1440.0 / (dpi > 0 ? dpi : 96.0);
}

QRect pullOntoScreen(const QRect& rect) {
    for (const QScreen* s : QGuiApplication::screens()) {
        if (s->availableGeometry().intersects(rect))
            return rect;
    }
    const QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary)
        return rect;
    const QRect area = primary->availableGeometry();
    QRect r = rect;
    r.setSize(r.size().boundedTo(area.size()));
    r.moveTopLeft(area.topLeft() +
                  QPoint((area.width() - r.width()) / 2, (area.height() - r.height()) / 2));
    return r;
}

void ShowErrorReport(const QString& routine, int line, const QString& description,
                     QWidget* parent) {
    const QString text =
        bError::ErrorReportText(QApplication::applicationDisplayName(), routine, line, description);
    dialogs().errorReport(parent, QString::fromLatin1(bError::kErrorReportTitle), text);
}

} // namespace quillora::gui
