#include "gui/app/ProgramIcon.h"

#include <QFile>
#include <QImage>
#include <QPixmap>

#include <FreeImage.h>

#include <cstring>

// The resource file sits in a static library: nothing would pull its object file into the
// executable without this reference.
static void initAppIcons() {
    Q_INIT_RESOURCE(app_icons);
}

namespace quillora::gui {

namespace {

// The pictures are decoded here rather than by QIcon::addFile: to find a decoder, Qt first
// loads every picture plugin it has, which on a desktop with many of them costs a start far
// more than the pictures.
QImage decodePng(const QString& resource) {
    QFile file(resource);
    if (!file.open(QIODevice::ReadOnly))
        return QImage();
    QByteArray bytes = file.readAll();
    FIMEMORY* memory =
        FreeImage_OpenMemory(reinterpret_cast<BYTE*>(bytes.data()), DWORD(bytes.size()));
    FIBITMAP* decoded = FreeImage_LoadFromMemory(FIF_PNG, memory, 0);
    FreeImage_CloseMemory(memory);
    if (!decoded)
        return QImage();
    FIBITMAP* bgra = FreeImage_ConvertTo32Bits(decoded);
    FreeImage_Unload(decoded);
    if (!bgra)
        return QImage();
    const int width = int(FreeImage_GetWidth(bgra));
    const int height = int(FreeImage_GetHeight(bgra));
    // Both keep a pixel as blue, green, red, alpha bytes; FreeImage's lines go bottom up.
    static_assert(FI_RGBA_BLUE == 0 && FI_RGBA_GREEN == 1 && FI_RGBA_RED == 2 &&
                  FI_RGBA_ALPHA == 3);
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height && !image.isNull(); ++y)
        std::memcpy(image.scanLine(y), FreeImage_GetScanLine(bgra, height - 1 - y),
                    size_t(width) * 4);
    FreeImage_Unload(bgra);
    return image;
}

} // namespace

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
