#include "core/TestFiles.h"
#include "core/app/bFunctions.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace quillora::bFunctions;

namespace {

TEST(Colours, HtmlToRgbPutsRedInTheLowestByte) {
    EXPECT_EQ(HTMLtoRGB("#FF8000"), 33023);
    EXPECT_EQ(HTMLtoRGB("#ff8000"), 33023);
    EXPECT_EQ(HTMLtoRGB("FF8000"), 33023);
    EXPECT_EQ(HTMLtoRGB("#0000FF"), 0xFF0000);
    EXPECT_EQ(HTMLtoRGB("#GGHHII"), 0);
    EXPECT_EQ(HTMLtoRGB(""), 0);
}

TEST(Colours, RgbToHtmlIsUpperCaseAndDropsTheTopByte) {
    EXPECT_EQ(RGBtoHTML(33023), "#FF8000");
    EXPECT_EQ(RGBtoHTML(0), "#000000");
    EXPECT_EQ(RGBtoHTML(0x7F0A0B0C), "#0C0B0A");
    EXPECT_EQ(RGBtoHTML(16777216 + 33023), "#FF8000");
    for (int v : {0, 1, 255, 65280, 0xABCDEF, 16777215})
        EXPECT_EQ(HTMLtoRGB(RGBtoHTML(v)), v);
}

TEST(Nvl, EmptyNullTextAndOtherValues) {
    EXPECT_EQ(NVL(QVariant(), "fb").toString(), "fb");
    EXPECT_EQ(NVL(QVariant(QString()), "fb").toString(), "fb");
    EXPECT_EQ(NVL(QString("  x "), "fb").toString(), "x");
    EXPECT_EQ(NVL(QString("   "), "fb").toString(), ""); // all blanks: empty, not the fallback
    EXPECT_EQ(NVL(42, "fb").toInt(), 42);
}

TEST(Val, LeadingNumberLikeTheOldConversion) {
    EXPECT_EQ(Val(u"1200"), 1200);
    EXPECT_EQ(Val(u" 12 00 px"), 1200);
    EXPECT_EQ(Val(u"-3.5abc"), -3.5);
    EXPECT_EQ(Val(u"1e3"), 1000);
    EXPECT_EQ(Val(u"2D2"), 200);
    EXPECT_EQ(Val(u"&HFF"), 255);
    EXPECT_EQ(Val(u"&O17"), 15);
    EXPECT_EQ(Val(u"abc"), 0);
    EXPECT_EQ(Val(u""), 0);
    EXPECT_EQ(Val(u"."), 0);
    EXPECT_EQ(*ValInteger(u"2.5"), 2);
    EXPECT_EQ(*ValInteger(u"3.5"), 4);
    EXPECT_FALSE(ValInteger(u"40000").has_value());
    EXPECT_FALSE(ValSingle(u"1e39").has_value());
}

TEST(Helpers, FileExistIsTrueOnlyForFiles) {
    QTemporaryDir dir;
    EXPECT_FALSE(FileExist(dir.path()));
    EXPECT_FALSE(FileExist(dir.filePath("none")));
    EXPECT_FALSE(FileExist(""));
    writeBytes(dir.filePath("a"));
    EXPECT_TRUE(FileExist(dir.filePath("a")));
}

TEST(Helpers, ComputerName) {
    EXPECT_EQ(GetNamePC("  MY-PC##  "), "my-pc");
    EXPECT_EQ(GetNamePC("###"), "PcNoName");
    EXPECT_EQ(GetNamePC(""), "PcNoName");
    EXPECT_FALSE(GetNamePC().isEmpty());
}

} // namespace
