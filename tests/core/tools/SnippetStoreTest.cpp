#include "core/tools/SnippetStore.h"
#include "core/app/TextFile.h"

#include "core/TestFiles.h"

#include <QTemporaryDir>
#include <algorithm>

using quillora::SnippetStore;

namespace {

QByteArray utf16(const QString& text) {
    return quillora::TextFile::encodeUtf16LE(text);
}

QStringList names(const SnippetStore& store) {
    QStringList out;
    for (const auto& row : store.list())
        out << row.fileName;
    out.sort();
    return out;
}

struct SnippetStoreTest : ::testing::Test {
    QTemporaryDir dir;
    QString folder() const { return dir.path() + QStringLiteral("/Memory/"); }
    void SetUp() override { ASSERT_TRUE(QDir().mkpath(folder())); }
};

} // namespace

TEST_F(SnippetStoreTest, EmptyFolderListsNothingAndCountsZero) {
    SnippetStore store(folder());
    EXPECT_TRUE(store.list().empty());
    EXPECT_EQ(store.GetMemoryCounter(), 0);
    // A folder that is not there is an empty store too.
    EXPECT_TRUE(SnippetStore(dir.path() + QStringLiteral("/none/")).list().empty());
}

TEST_F(SnippetStoreTest, CounterFileInAnyCaseIsNeverASnippet) {
    writeBytes(folder() + QStringLiteral("Counter.mem"), utf16(QStringLiteral("3\r\n")));
    writeBytes(folder() + QStringLiteral("COUNTER.MEM"), utf16(QStringLiteral("3\r\n")));
    writeBytes(folder() + QStringLiteral("Notes.MEM"), utf16(QStringLiteral("Notes\r\nbody")));
    writeBytes(folder() + QStringLiteral("other.txt"), utf16(QStringLiteral("x\r\ny")));
    SnippetStore store(folder());
    const auto rows = store.list();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].fileName, QStringLiteral("Notes.MEM"));
    EXPECT_EQ(rows[0].title, QStringLiteral("Notes"));
}

TEST_F(SnippetStoreTest, FirstSnippetWritesExactBytesAndCounter) {
    SnippetStore store(folder());
    const QString text = QStringLiteral("Hello\r\nWorld <b>&</b>");
    EXPECT_EQ(store.add(QStringLiteral("Greeting"), text), QStringLiteral("00000001.mem"));
    EXPECT_EQ(readBytes(folder() + QStringLiteral("00000001.mem")),
              utf16(QStringLiteral("Greeting\r\n") + text));
    EXPECT_EQ(readBytes(folder() + QStringLiteral("Counter.mem")), utf16(QStringLiteral("1\r\n")));
    const auto back = store.read(QStringLiteral("00000001.mem"));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->title, QStringLiteral("Greeting"));
    EXPECT_EQ(back->text, text);
}

TEST_F(SnippetStoreTest, DeletingNeverLowersTheCounter) {
    SnippetStore store(folder());
    for (int i = 1; i <= 3; ++i)
        store.add(QStringLiteral("S%1").arg(i), QStringLiteral("t"));
    EXPECT_TRUE(store.remove(QStringLiteral("00000002.mem")));
    EXPECT_EQ(store.add(QStringLiteral("S4"), QString()), QStringLiteral("00000004.mem"));
    EXPECT_EQ(names(store),
              (QStringList{QStringLiteral("00000001.mem"), QStringLiteral("00000003.mem"),
                           QStringLiteral("00000004.mem")}));
    // Deleting a file that is already gone still succeeds.
    EXPECT_TRUE(store.remove(QStringLiteral("00000002.mem")));
}

struct CounterCase {
    const char* stored; // nullptr: no counter file
    const char* next;   // the file the next snippet gets
    const char* counterAfter;
};

class SnippetCounterTest : public SnippetStoreTest,
                           public ::testing::WithParamInterface<CounterCase> {};

TEST_P(SnippetCounterTest, NextNumber) {
    const CounterCase& c = GetParam();
    if (c.stored)
        writeBytes(folder() + QStringLiteral("Counter.mem"), utf16(QString::fromUtf8(c.stored)));
    SnippetStore store(folder());
    EXPECT_EQ(store.add(QStringLiteral("t"), QStringLiteral("x")), QString::fromLatin1(c.next));
    EXPECT_TRUE(QFileInfo::exists(folder() + QString::fromLatin1(c.next)));
    EXPECT_EQ(readBytes(folder() + QStringLiteral("Counter.mem")),
              utf16(QString::fromLatin1(c.counterAfter) + QStringLiteral("\r\n")));
}

INSTANTIATE_TEST_SUITE_P(Counter, SnippetCounterTest,
                         ::testing::Values(CounterCase{nullptr, "00000001.mem", "1"},
                                           CounterCase{"41\r\n", "00000042.mem", "42"},
                                           CounterCase{"32766\r\n", "00032767.mem", "32767"},
                                           // one past the largest 16-bit value wraps to 0
                                           CounterCase{"32767\r\n", "00000000.mem", "0"},
                                           CounterCase{"garbage", "00000001.mem", "1"},
                                           CounterCase{"99999", "00000001.mem", "1"}));

TEST_F(SnippetStoreTest, UnreadableFileListsWithEmptyTitle) {
    // A cut-short UTF-16 file cannot be decoded; it still lists, untitled.
    QByteArray broken = utf16(QStringLiteral("Title\r\nText"));
    broken.chop(1);
    writeBytes(folder() + QStringLiteral("00000005.mem"), broken);
    writeBytes(folder() + QStringLiteral("00000006.mem"), utf16(QStringLiteral("\r\nno title")));
    SnippetStore store(folder());
    const auto rows = store.list();
    ASSERT_EQ(rows.size(), 2u);
    for (const auto& row : rows)
        EXPECT_TRUE(row.title.isEmpty()) << row.fileName.toStdString();
    EXPECT_FALSE(store.read(QStringLiteral("00000005.mem")));
}

TEST_F(SnippetStoreTest, ChangingKeepsTheFileName) {
    SnippetStore store(folder());
    const QString name = store.add(QStringLiteral("Old"), QStringLiteral("a"));
    ASSERT_TRUE(store.ModifyMemory(name, QStringLiteral("New"), QStringLiteral("b\r\nc")));
    EXPECT_EQ(names(store), QStringList{name});
    EXPECT_EQ(store.GetMemoryTitle(name), QStringLiteral("New"));
    EXPECT_EQ(store.read(name)->text, QStringLiteral("b\r\nc"));
}

TEST_F(SnippetStoreTest, NamesWithAPathAreRefused) {
    SnippetStore store(folder());
    writeBytes(dir.path() + QStringLiteral("/outside.mem"), utf16(QStringLiteral("x\r\ny")));
    EXPECT_FALSE(store.remove(QStringLiteral("../outside.mem")));
    EXPECT_TRUE(QFileInfo::exists(dir.path() + QStringLiteral("/outside.mem")));
    EXPECT_FALSE(store.InsertMemory(QStringLiteral("../x.mem"), QStringLiteral("t"), QString()));
    EXPECT_FALSE(store.InsertMemory(QStringLiteral("Counter.mem"), QStringLiteral("t"), QString()));
}

struct DropCase {
    const char* text;
    const char* html;
};

class SnippetDropTest : public ::testing::TestWithParam<DropCase> {};

TEST_P(SnippetDropTest, CrLfBecomesBreakAndNothingIsEscaped) {
    EXPECT_EQ(SnippetStore::dropHtml(QString::fromUtf8(GetParam().text)),
              QString::fromUtf8(GetParam().html));
}

INSTANTIATE_TEST_SUITE_P(Drop, SnippetDropTest,
                         ::testing::Values(DropCase{"Hello\r\nWorld", "Hello<BR>World"},
                                           DropCase{"a < b & \"c\"", "a < b & \"c\""},
                                           DropCase{"lone\rcr\nlf", "lone\rcr\nlf"},
                                           DropCase{"\r\n\r\n", "<BR><BR>"}));
