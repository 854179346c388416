#include "gui/app/Pictures.h"

#include <QFile>
#include <QGuiApplication>
#include <QPixmap>

#include <FreeImage.h>

#include <cstring>

namespace quillora::gui {

QImage decodePng(const QString& file) {
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly))
        return QImage();
    QByteArray bytes = in.readAll();
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

QIcon qtGlyphIcon(QStyle::StandardPixmap sp, Qt::LayoutDirection direction) {
    if (direction == Qt::RightToLeft)
        return QIcon();
    QStringList files;
    switch (sp) {
    case QStyle::SP_ToolBarHorizontalExtensionButton:
        files = {QStringLiteral("toolbar-ext-h-8"), QStringLiteral("toolbar-ext-h-16"),
                 QStringLiteral("toolbar-ext-h-32")};
        break;
    case QStyle::SP_ToolBarVerticalExtensionButton:
        files = {QStringLiteral("toolbar-ext-v-5"), QStringLiteral("toolbar-ext-v-10"),
                 QStringLiteral("toolbar-ext-v-20")};
        break;
    case QStyle::SP_LineEditClearButton:
        // A program that follows the desktop gets the icon theme's.
        if (QGuiApplication::desktopSettingsAware())
            return QIcon();
        files = {QStringLiteral("cleartext-16")};
        break;
    default:
        return QIcon();
    }
    QIcon icon;
    for (const QString& file : files) {
        const QImage picture = decodePng(
            QStringLiteral(":/qt-project.org/styles/commonstyle/images/%1.png").arg(file));
        // Another Qt may keep other pictures: its own reader finds them.
        if (picture.isNull())
            return QIcon();
        icon.addPixmap(QPixmap::fromImage(picture));
    }
    return icon;
}

} // namespace quillora::gui
