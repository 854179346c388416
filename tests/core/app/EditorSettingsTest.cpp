#include "core/app/EditorSettings.h"
#include "core/TestFiles.h"
#include "core/app/TextFile.h"

#include <QTemporaryDir>

using namespace quillora;

struct AutoSaveCase {
    const char* line;
    int seconds;
};

class AutoSaveLine : public ::testing::TestWithParam<AutoSaveCase> {};

TEST_P(AutoSaveLine, IsReadOrLeavesTheDefault) {
    EXPECT_EQ(EditorSettings::parse({QString::fromUtf8(GetParam().line)}).autoSaveSeconds,
              GetParam().seconds);
}

INSTANTIATE_TEST_SUITE_P(Lines, AutoSaveLine,
                         ::testing::Values(AutoSaveCase{"AutoSaveSeconds: 30", 30},
                                           AutoSaveCase{"AutoSaveSeconds:0", 0},
                                           AutoSaveCase{"  AutoSaveSeconds :  120 ", 120},
                                           AutoSaveCase{"AutoSaveSeconds: -5", 60},
                                           AutoSaveCase{"AutoSaveSeconds: soon", 60},
                                           AutoSaveCase{"AutoSaveSeconds: 999999999", 60},
                                           AutoSaveCase{"autosaveseconds: 30", 60},
                                           AutoSaveCase{"AutoSaveSeconds 30", 60}));

TEST(EditorSettings, RecentMessagesSurviveAWriteAndARead) {
    QTemporaryDir dir;
    EditorSettings s;
    s.autoSaveSeconds = 15;
    s.addRecent(dir.filePath("a.mssx"));
    s.addRecent(dir.filePath("dir with: colon/b.mssx"));
    const QString file = EditorSettings::fileIn(dir.path() + u'/');
    ASSERT_TRUE(s.write(file));
    EXPECT_TRUE(readBytes(file).startsWith("\xff\xfe")); // like every settings file
    EXPECT_EQ(EditorSettings::read(file), s);
    EXPECT_EQ(s.recent.first(), dir.filePath("dir with: colon/b.mssx"));
}

TEST(EditorSettings, TheRecentListKeepsTheLatestTenOnceEach) {
    EditorSettings s;
    for (int i = 0; i < 12; ++i)
        s.addRecent(QStringLiteral("/news/%1.mssx").arg(i));
    s.addRecent(QStringLiteral("/news/../news/5.mssx")); // the same file, spelt otherwise
    ASSERT_EQ(s.recent.size(), EditorSettings::kMaxRecent);
    EXPECT_EQ(s.recent.first(), QStringLiteral("/news/5.mssx"));
    EXPECT_EQ(s.recent.count(QStringLiteral("/news/5.mssx")), 1);
    EXPECT_EQ(s.recent.last(), QStringLiteral("/news/2.mssx")); // moving 5 up dropped nothing
    EXPECT_FALSE(s.recent.contains(QStringLiteral("/news/1.mssx")));
    // A name that could not be written back line by line is never kept.
    s.addRecent(QStringLiteral("/news/a\nb.mssx"));
    EXPECT_EQ(s.recent.first(), QStringLiteral("/news/5.mssx"));
    EXPECT_TRUE(
        EditorSettings::parse({QStringLiteral("Recent: /news/\x01x.mssx")}).recent.isEmpty());
    // Relative names are made absolute, even one that looks like a built-in resource.
    EXPECT_EQ(EditorSettings::parse({QStringLiteral("Recent: :x.mssx")}).recent,
              QStringList{QDir::currentPath() + QStringLiteral("/:x.mssx")});
    s.removeRecent(QStringLiteral("/news//5.mssx"));
    EXPECT_FALSE(s.recent.contains(QStringLiteral("/news/5.mssx")));
}

TEST(EditorSettings, MissingMessagesCanBeDroppedFromTheList) {
    QTemporaryDir dir;
    writeBytes(dir.filePath("here.mssx"));
    EditorSettings s =
        EditorSettings::parse({QStringLiteral("Recent: ") + dir.filePath("gone.mssx"),
                               QStringLiteral("Recent: ") + dir.filePath("here.mssx"),
                               QStringLiteral("Recent: ") + dir.path()}); // a folder is no message
    ASSERT_EQ(s.recent.size(), 3);
    EXPECT_EQ(s.removeMissingRecent(), 2);
    EXPECT_EQ(s.recent, QStringList{dir.filePath("here.mssx")});
}

TEST(EditorSettings, AnOversizedOrMissingFileGivesTheDefaults) {
    QTemporaryDir dir;
    EXPECT_EQ(EditorSettings::read(dir.filePath("none.dll")), EditorSettings{});
    const QString big = dir.filePath("big.dll");
    writeBytes(big, QByteArray("Recent: /a.mssx\r\n").repeated(20000));
    EXPECT_EQ(EditorSettings::read(big), EditorSettings{});
}
