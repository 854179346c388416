#include "gui/app/ThemeIcons.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QPixmapCache>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace quillora::gui;

namespace {

// A theme of one drawn icon, with soft edges and see-through parts, so a picture that lost
// anything on its way through the cache would show it.
class ThemeIconsTest : public testing::Test {
protected:
    void SetUp() override {
        m_paths = QIcon::themeSearchPaths();
        m_theme = QIcon::themeName();
        m_cache = themeIconCacheFolder();
        writeTheme("drawn", R"(<circle cx="7" cy="8" r="6.3" fill="#3daee9" fill-opacity="0.6"/>)"
                            R"(<path d="M2 13 L14 3" stroke="#232629" stroke-width="1.3"/>)");
        QIcon::setThemeSearchPaths({themes.path()});
        QIcon::setThemeName(QStringLiteral("drawn"));
        setThemeIconCacheFolder(cache.path());
        QPixmapCache::clear();
    }
    void TearDown() override {
        QIcon::setThemeSearchPaths(m_paths);
        QIcon::setThemeName(m_theme);
        setThemeIconCacheFolder(m_cache);
        QPixmapCache::clear();
    }
    // A theme of one scalable icon, "shape", drawn by `drawing`.
    void writeTheme(const QString& name, const QByteArray& drawing) {
        ASSERT_TRUE(QDir().mkpath(themes.filePath(name + "/scalable")));
        write(themes.filePath(name + "/index.theme"),
              "[Icon Theme]\nName=" + name.toUtf8() +
                  "\nDirectories=scalable\n\n"
                  "[scalable]\nSize=16\nMinSize=8\nMaxSize=256\nType=Scalable\n");
        write(themes.filePath(name + "/scalable/shape.svg"),
              R"(<svg xmlns="http://www.w3.org/2000/svg" width="16" height="16">)" + drawing +
                  "</svg>");
    }
    static void write(const QString& path, const QByteArray& bytes) {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
    static QImage image(const QPixmap& pm) {
        return pm.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    }
    // The cached picture files of the theme, relative to the cache folder.
    QStringList cached() const {
        QStringList files;
        const QDir root(cache.path());
        for (const QString& theme : root.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            for (const QString& icon :
                 QDir(root.filePath(theme)).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
                for (const QString& file :
                     QDir(root.filePath(theme + u'/' + icon)).entryList(QDir::Files))
                    files << icon + u'/' + file;
            }
        }
        return files;
    }

    QTemporaryDir themes, cache;
    QStringList m_paths;
    QString m_theme, m_cache;
};

TEST_F(ThemeIconsTest, PicturesAreTheThemesFreshAndReadBack) {
    const QIcon theme = QIcon::fromTheme(QStringLiteral("shape"));
    ASSERT_FALSE(theme.isNull());
    for (int round = 0; round < 2; ++round) {
        // The second round's icon reads the pictures back from the files the first one wrote.
        const QIcon icon = themeIcon(QStringLiteral("shape"));
        EXPECT_EQ(icon.name(), QStringLiteral("shape"));
        EXPECT_FALSE(icon.isNull());
        for (const int side : {16, 22, 48}) {
            for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Disabled, QIcon::Selected}) {
                for (const QIcon::State state : {QIcon::Off, QIcon::On}) {
                    const QSize size(side, side);
                    EXPECT_EQ(image(icon.pixmap(size, 1.0, mode, state)),
                              image(theme.pixmap(size, 1.0, mode, state)))
                        << "round " << round << ", " << side << " px, mode " << int(mode)
                        << ", state " << int(state);
                }
            }
        }
    }
    // Only normal pictures are kept; the other modes are made from them.
    EXPECT_EQ(cached(), QStringList({"shape/16x16.argb", "shape/22x22.argb", "shape/48x48.argb"}));

    // What the cache holds is what is shown, without drawing again: the kept pixels (the end of
    // the file) are made red.
    const QString folder = QDir(cache.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).value(0);
    const QString file = cache.filePath(folder + QStringLiteral("/shape/22x22.argb"));
    {
        QFile kept(file);
        ASSERT_TRUE(kept.open(QIODevice::ReadWrite));
        const QByteArray red = QByteArray::fromRawData("\x00\x00\xff\xff", 4).repeated(22 * 22);
        ASSERT_TRUE(kept.seek(kept.size() - red.size()));
        ASSERT_EQ(kept.write(red), red.size());
    }
    QPixmapCache::clear();
    EXPECT_EQ(image(themeIcon(QStringLiteral("shape")).pixmap(QSize(22, 22), 1.0)).pixel(3, 3),
              QColor(Qt::red).rgb());

    // A damaged file is drawn again, and kept whole again.
    const QImage drawn = image(theme.pixmap(QSize(22, 22), 1.0));
    for (const qint64 length : {qint64(0), qint64(10), qint64(22 * 22 * 2)}) {
        ASSERT_TRUE(QFile::resize(file, length));
        QPixmapCache::clear();
        EXPECT_EQ(image(themeIcon(QStringLiteral("shape")).pixmap(QSize(22, 22), 1.0)), drawn)
            << length << " bytes";
        QPixmapCache::clear();
        EXPECT_EQ(image(themeIcon(QStringLiteral("shape")).pixmap(QSize(22, 22), 1.0)), drawn)
            << "read back after " << length << " bytes";
        EXPECT_GT(QFileInfo(file).size(), 22 * 22 * 4);
    }
}

// A dark scheme switches to a dark theme: icons made before show the new theme's pictures.
TEST_F(ThemeIconsTest, AnIconFollowsTheThemeInUse) {
    writeTheme("dark", R"(<rect x="2" y="2" width="12" height="12" fill="#eff0f1"/>)");
    const QIcon icon = themeIcon(QStringLiteral("shape"));
    const QImage light = image(icon.pixmap(QSize(16, 16), 1.0));
    QIcon::setThemeName(QStringLiteral("dark"));
    const QImage dark = image(icon.pixmap(QSize(16, 16), 1.0));
    EXPECT_NE(dark, light);
    EXPECT_EQ(dark, image(QIcon::fromTheme(QStringLiteral("shape")).pixmap(QSize(16, 16), 1.0)));
}

// A theme that changed on disk (an update) gets a cache of its own.
TEST_F(ThemeIconsTest, AnUpdatedThemeIsDrawnAfresh) {
    themeIcon(QStringLiteral("shape")).pixmap(QSize(16, 16), 1.0);
    QFile index(themes.filePath("drawn/index.theme"));
    ASSERT_TRUE(index.open(QIODevice::ReadWrite));
    ASSERT_TRUE(index.setFileTime(index.fileTime(QFileDevice::FileModificationTime).addSecs(60),
                                  QFileDevice::FileModificationTime));
    index.close();
    setThemeIconCacheFolder(cache.path()); // the dates are read again from here on
    QPixmapCache::clear();
    themeIcon(QStringLiteral("shape")).pixmap(QSize(16, 16), 1.0);
    EXPECT_EQ(QDir(cache.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 2);
}

TEST_F(ThemeIconsTest, NamesTheThemeLacksGiveNullIconsAndNoFiles) {
    for (const QString& name : {QStringLiteral("no-such-icon"), QStringLiteral("../shape"),
                                QStringLiteral("scalable/shape")}) {
        const QIcon icon = themeIcon(name);
        EXPECT_EQ(icon.isNull(), QIcon::fromTheme(name).isNull()) << name.toStdString();
        EXPECT_EQ(icon.pixmap(QSize(16, 16), 1.0).isNull(),
                  QIcon::fromTheme(name).pixmap(QSize(16, 16), 1.0).isNull());
    }
    EXPECT_TRUE(themeIcon(QStringLiteral("no-such-icon")).isNull());
    EXPECT_TRUE(cached().isEmpty());
}

// Whether the theme has a name is looked up once, and kept: later starts do not read the theme.
TEST_F(ThemeIconsTest, WhatTheThemeHasIsKept) {
    EXPECT_FALSE(themeIcon(QStringLiteral("shape")).isNull()); // never drawn
    EXPECT_TRUE(themeIcon(QStringLiteral("later")).isNull());
    // The theme changes without a new date: what was kept still holds.
    ASSERT_TRUE(QFile::rename(themes.filePath("drawn/scalable/shape.svg"),
                              themes.filePath("drawn/scalable/later.svg")));
    QIcon::setThemeSearchPaths({themes.path()}); // Qt forgets what it read of the theme
    ASSERT_TRUE(QIcon::fromTheme(QStringLiteral("shape")).isNull());
    ASSERT_FALSE(QIcon::fromTheme(QStringLiteral("later")).isNull());
    EXPECT_FALSE(themeIcon(QStringLiteral("shape")).isNull());
    EXPECT_TRUE(themeIcon(QStringLiteral("later")).isNull());
    // Without a cache, the theme is asked.
    setThemeIconCacheFolder(QString());
    EXPECT_TRUE(themeIcon(QStringLiteral("shape")).isNull());
    EXPECT_FALSE(themeIcon(QStringLiteral("later")).isNull());
}

TEST_F(ThemeIconsTest, WithoutACacheFolderThePicturesAreStillRight) {
    setThemeIconCacheFolder(QString());
    EXPECT_EQ(image(themeIcon(QStringLiteral("shape")).pixmap(QSize(16, 16), 1.0)),
              image(QIcon::fromTheme(QStringLiteral("shape")).pixmap(QSize(16, 16), 1.0)));
    EXPECT_TRUE(cached().isEmpty());
}

} // namespace
