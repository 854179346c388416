#include "gui/app/ProgramIcon.h"

#include "gui/app/Pictures.h"

#include <QPixmap>

// The resource file sits in a static library: nothing would pull its object file into the
// executable without this reference.
static void initAppIcons() {
    Q_INIT_RESOURCE(app_icons);
}

namespace quillora::gui {

QIcon programIcon() {
    static const QIcon icon = [] {
        initAppIcons();
        QIcon i;
        for (int size : {16, 32, 48, 128}) {
            const QImage picture = decodePng(QStringLiteral(":/icons/quillora-%1.png").arg(size));
            if (!picture.isNull())
                i.addPixmap(QPixmap::fromImage(picture));
        }
        return i;
    }();
    return icon;
}

void useIconTheme() {
    // Without a desktop session there is no icon theme (nor, offscreen, a search path).
    if (!QIcon::themeSearchPaths().contains(QStringLiteral("/usr/share/icons")))
        QIcon::setThemeSearchPaths(QIcon::themeSearchPaths() << QStringLiteral("/usr/share/icons"));
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("breeze"));
    QIcon::setFallbackThemeName(QStringLiteral("breeze"));
}

QPixmap programPixmap(int size) {
    return programIcon().pixmap(QSize(size, size));
}

} // namespace quillora::gui
