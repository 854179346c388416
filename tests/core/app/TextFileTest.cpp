#include "core/app/TextFile.h"
#include "core/TestFiles.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace quillora;
using TextFile::Encoding;

namespace {

QByteArray bytesOf(std::initializer_list<int> values) {
    QByteArray b;
    for (int v : values)
        b.append(char(v));
    return b;
}

struct DecodeCase {
    const char* name;
    QByteArray bytes;
    QString text;
    Encoding encoding;
};

void PrintTo(const DecodeCase& c, std::ostream* os) {
    *os << c.name;
}

class DecodeTest : public testing::TestWithParam<DecodeCase> {};

TEST_P(DecodeTest, DetectsEncodingAndText) {
    const auto& c = GetParam();
    const auto d = TextFile::decode(c.bytes);
    ASSERT_TRUE(d.ok());
    EXPECT_EQ(d.encoding, c.encoding);
    EXPECT_EQ(d.text, c.text);
}

INSTANTIATE_TEST_SUITE_P(
    Encodings, DecodeTest,
    testing::Values(
        DecodeCase{"utf16le_bom", bytesOf({0xFF, 0xFE, 'A', 0, 0xE9, 0, 0x3D, 0xD8, 0x00, 0xDE}),
                   QString::fromUtf8("Aé\xF0\x9F\x98\x80"), Encoding::Utf16LE},
        DecodeCase{"utf16be_bom", bytesOf({0xFE, 0xFF, 0, 'A', 0x20, 0xAC}),
                   QString::fromUtf8("A€"), Encoding::Utf16BE},
        DecodeCase{"utf8_bom",
                   bytesOf({0xEF, 0xBB, 0xBF, 'E', 's', 'p', 'a', 0xC3, 0xB1, 'o', 'l'}),
                   QString::fromUtf8("Español"), Encoding::Utf8},
        DecodeCase{"utf8_plain", QByteArray("Espa\xC3\xB1ol"), QString::fromUtf8("Español"),
                   Encoding::Utf8},
        // Not valid UTF-8: the system code page. 0x80 is the euro sign there, not a C1 control.
        DecodeCase{"cp1252", bytesOf({'P', 'r', 'e', 'z', 'z', 'o', ' ', 0x80, 0xE0, 0x93, 0x94}),
                   QString::fromUtf8("Prezzo €à“”"), Encoding::Windows1252},
        DecodeCase{"empty", QByteArray(), QString(), Encoding::Windows1252},
        DecodeCase{"bom_only", bytesOf({0xFF, 0xFE}), QString(), Encoding::Utf16LE}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(TextFile, OddUtf16ByteCountIsReportedNotRepaired) {
    const auto d = TextFile::decode(bytesOf({0xFF, 0xFE, 'A', 0, 'B'}));
    EXPECT_EQ(d.error, TextFile::ReadError::OddUtf16Bytes);
    EXPECT_TRUE(d.text.isEmpty());
}

TEST(TextFile, SplitsAtEveryKindOfLineEnd) {
    EXPECT_EQ(TextFile::splitLines(u"a\r\nb\nc\rd"), QStringList({"a", "b", "c", "d"}));
    EXPECT_EQ(TextFile::splitLines(u"a\r\n\r\nb\r\n"), QStringList({"a", "", "b"}));
    EXPECT_EQ(TextFile::splitLines(u"\n\r"), QStringList({"", ""}));
    EXPECT_TRUE(TextFile::splitLines(u"").isEmpty());
}

TEST(TextFile, WritesUtf16LeWithBomAndCrLfAfterEveryLine) {
    QTemporaryDir dir;
    const QString path = dir.filePath("out.txt");
    ASSERT_TRUE(TextFile::writeLines(path, {"Ab", QString::fromUtf8("é")}));
    EXPECT_EQ(readBytes(path),
              bytesOf({0xFF, 0xFE, 'A', 0, 'b', 0, '\r', 0, '\n', 0, 0xE9, 0, '\r', 0, '\n', 0}));
}

TEST(TextFile, AppendAddsBomOnlyToANewFile) {
    QTemporaryDir dir;
    const QString path = dir.filePath("log.txt");
    ASSERT_TRUE(TextFile::appendLines(path, {"one"}));
    ASSERT_TRUE(TextFile::appendLines(path, {"two"}));
    EXPECT_EQ(readBytes(path).count(bytesOf({0xFF, 0xFE})), 1);
    QStringList lines;
    ASSERT_TRUE(TextFile::readLines(path, lines).ok());
    EXPECT_EQ(lines, QStringList({"one", "two"}));
}

TEST(TextFile, ReadReportsMissingFoldersAndLimits) {
    QTemporaryDir dir;
    EXPECT_EQ(TextFile::read(dir.filePath("nope")).error, TextFile::ReadError::Missing);
    EXPECT_EQ(TextFile::read(dir.path()).error, TextFile::ReadError::Missing);
    const QString path = dir.filePath("big");
    ASSERT_TRUE(TextFile::writeLines(path, {QString(100, 'x')}));
    EXPECT_EQ(TextFile::read(path, 50).error, TextFile::ReadError::TooLarge);
    EXPECT_TRUE(TextFile::read(path, 1000).ok());
}

} // namespace
