#include "gui/app/Pictures.h"
#include "gui/app/ProgramIcon.h"

#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

using namespace quillora::gui;

namespace {

QImage image(const QIcon& icon, const QSize& size) {
    return icon.pixmap(size, 1.0).toImage().convertToFormat(QImage::Format_ARGB32);
}

// The largest difference of two pictures of the same size in any channel, or -1 for other sizes.
int largestDifference(const QImage& a, const QImage& b) {
    if (a.size() != b.size())
        return -1;
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            largest =
                std::max({largest, std::abs(qAlpha(p) - qAlpha(q)), std::abs(qRed(p) - qRed(q)),
                          std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
        }
    }
    return largest;
}

// Pictures read without Qt's readers are the pictures Qt reads.
TEST(Pictures, TheProgramIconHoldsEveryPictureAsDrawn) {
    const QIcon icon = programIcon();
    ASSERT_EQ(icon.availableSizes(), QList<QSize>({{16, 16}, {32, 32}, {48, 48}, {128, 128}}));
    for (const QSize& size : icon.availableSizes()) {
        const QImage drawn(QStringLiteral(":/icons/quillora-%1.png").arg(size.width()));
        ASSERT_FALSE(drawn.isNull()) << size.width();
        EXPECT_EQ(image(icon, size), drawn.convertToFormat(QImage::Format_ARGB32))
            << size.width() << " px";
    }
}

class QtGlyphs : public testing::TestWithParam<QStyle::StandardPixmap> {};

TEST_P(QtGlyphs, AreQtsOwnPictures) {
    // As the program runs: without the desktop's settings, so without the icon theme's glyphs.
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
    const bool aware = QGuiApplication::desktopSettingsAware();
    QGuiApplication::setDesktopSettingsAware(false);
    const QIcon qt = fusion->standardIcon(GetParam());
    const QIcon ours = qtGlyphIcon(GetParam(), Qt::LeftToRight);
    QGuiApplication::setDesktopSettingsAware(aware);
    ASSERT_FALSE(ours.isNull());
    ASSERT_EQ(ours.availableSizes(), qt.availableSizes());
    // Qt's icon rounds a few see-through edge pixels of the clear button by one or two.
    for (const QSize& size : qt.availableSizes())
        EXPECT_LE(largestDifference(image(ours, size), image(qt, size)), 2)
            << size.width() << "x" << size.height();
}

INSTANTIATE_TEST_SUITE_P(Pictures, QtGlyphs,
                         testing::Values(QStyle::SP_ToolBarHorizontalExtensionButton,
                                         QStyle::SP_ToolBarVerticalExtensionButton,
                                         QStyle::SP_LineEditClearButton));

TEST(Pictures, WhatIsNotAReadablePngIsNull) {
    EXPECT_TRUE(qtGlyphIcon(QStyle::SP_ToolBarHorizontalExtensionButton, Qt::RightToLeft).isNull());
    EXPECT_TRUE(qtGlyphIcon(QStyle::SP_DialogOkButton, Qt::LeftToRight).isNull());

    QTemporaryDir dir;
    EXPECT_TRUE(decodePng(dir.filePath(QStringLiteral("missing.png"))).isNull());
    QFile png(QStringLiteral(":/icons/quillora-16.png"));
    ASSERT_TRUE(png.open(QIODevice::ReadOnly));
    const QByteArray bytes = png.readAll();
    for (const QByteArray& bad : {QByteArray("not a picture"), bytes.left(bytes.size() / 2)}) {
        const QString path = dir.filePath(QStringLiteral("bad.png"));
        QFile out(path);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        out.write(bad);
        out.close();
        EXPECT_TRUE(decodePng(path).isNull()) << bad.size() << " bytes";
    }
}

} // namespace
