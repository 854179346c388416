#include "core/TestFiles.h"
#include "core/app/TextFile.h"
#include "core/app/bError.h"
#include "core/app/bImpostazioni.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace quillora;
using bImpostazioni::WindowPlacement;

// Found by argument lookup, so a failed comparison shows the five fields, not bytes.
namespace quillora::bImpostazioni {
void PrintTo(const WindowPlacement& p, std::ostream* os) {
    *os << '{' << p.left << ", " << p.top << ", " << p.width << ", " << p.height << ", " << p.state
        << '}';
}
} // namespace quillora::bImpostazioni

namespace {

class PlacementTest : public testing::Test {
protected:
    QString path() const { return dir.filePath("frmQuillora.dll"); }
    WindowPlacement read(WindowPlacement start = {}) const {
        bImpostazioni::LeggiIMP(path(), start);
        return start;
    }
    QTemporaryDir dir;
};

TEST_F(PlacementTest, WritesTheSixLinesExactly) {
    ASSERT_TRUE(bImpostazioni::ScriviIMP(path(), {1200, 900, 16500, 11250, 0}));
    const QString expected = "[Form frmMain]\r\nmnLeft........: 1200\r\nmnTop.........: 900\r\n"
                             "mnWidth.......: 16500\r\nmnHeight......: 11250\r\n"
                             "mnWindowState.: 0\r\n";
    EXPECT_EQ(readBytes(path()), TextFile::encodeUtf16LE(expected));
}

struct PlacementCase {
    const char* name;
    QStringList lines;
    WindowPlacement start;
    WindowPlacement read;
};

void PrintTo(const PlacementCase& c, std::ostream* os) {
    *os << c.name;
}

class PlacementRead : public PlacementTest, public testing::WithParamInterface<PlacementCase> {};

TEST_P(PlacementRead, AppliesTheLinesItRecognises) {
    ASSERT_TRUE(TextFile::writeLines(path(), GetParam().lines));
    EXPECT_EQ(read(GetParam().start), GetParam().read);
}

INSTANTIATE_TEST_SUITE_P(
    Files, PlacementRead,
    testing::Values(PlacementCase{"any_order_without_section_line",
                                  {"mnWindowState.: 2", "mnHeight......: 400", "mnTop.........: 30",
                                   "mnWidth.......: 500", "mnLeft........: 1200"},
                                  {},
                                  {1200, 30, 500, 400, 2}},
                    PlacementCase{"short_and_unknown_keys_ignored_later_duplicate_wins",
                                  {"[Form frmMain]", "mnLeft: 1200", "mnColour......: 3",
                                   "mnTop.........: 10", "mnTop.........: 20"},
                                  {7, 8, 9, 10, 0},
                                  {7, 20, 9, 10, 0}},
                    // 1.5 rounds half to even: 2.
                    PlacementCase{"lenient_numbers",
                                  {"mnLeft........:   1200twips ", "mnTop.........: abc",
                                   "mnWidth.......: 1 5 0 0", "mnHeight......: 2.5e3",
                                   "mnWindowState.: 1.5"},
                                  {1, 1, 1, 1, 0},
                                  {1200, 0, 1500, 2500, 2}},
                    PlacementCase{"values_that_do_not_fit_keep_the_previous_ones",
                                  {"mnLeft........: 1e300", "mnWindowState.: 70000"},
                                  {5, 6, 7, 8, 2},
                                  {5, 6, 7, 8, 2}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(PlacementTest, GarbageNeverCrashesAndKeepsDefaults) {
    const WindowPlacement defaults{11, 22, 33, 44, 0};
    QByteArray binary(4096, '\0');
    QRandomGenerator rng(20261114); // the same bytes on every run
    for (char& c : binary)
        c = char(rng.bounded(256));
    binary[0] = 'x'; // no byte-order mark by accident
    writeBytes(path(), binary);
    EXPECT_EQ(read(defaults), defaults);

    writeBytes(path(), QByteArray(10 * 1024 * 1024, '7')); // one 10 MB line of digits, no key
    EXPECT_EQ(read(defaults), defaults);

    writeBytes(path(), "mnLeft........: " + QByteArray(10 * 1024 * 1024, '9'));
    EXPECT_EQ(read(defaults), defaults) << "an overlong number must not become infinity";

    writeBytes(path(), QByteArray("\xFF\xFEm\0n\0L", 7)); // UTF-16 cut in the middle of a code unit
    EXPECT_EQ(read(defaults), defaults);
    QFile::remove(path());
    EXPECT_EQ(read(defaults), defaults);
}

TEST(PlacementOnClose, MaximisedKeepsLastNormalPlacementMinimisedWritesNormal) {
    WindowPlacement p{100, 200, 300, 400, 0};
    bImpostazioni::RememberPlacement(p, bImpostazioni::kWindowMaximised, 0, 0, 1920, 1080);
    p.state = bImpostazioni::kWindowMaximised;
    EXPECT_EQ(bImpostazioni::PlacementLines(p)[1], "mnLeft........: 100");
    EXPECT_EQ(bImpostazioni::PlacementLines(p)[3], "mnWidth.......: 300");
    EXPECT_EQ(bImpostazioni::PlacementLines(p)[5], "mnWindowState.: 2");

    bImpostazioni::RememberPlacement(p, bImpostazioni::kWindowMinimised, -32000, -32000, 160, 20);
    p.state = bImpostazioni::kWindowMinimised;
    EXPECT_EQ(bImpostazioni::PlacementLines(p)[1], "mnLeft........: 100");
    EXPECT_EQ(bImpostazioni::PlacementLines(p)[5], "mnWindowState.: 0");

    bImpostazioni::RememberPlacement(p, bImpostazioni::kWindowNormal, 10, 20, 30, 40);
    EXPECT_EQ(bImpostazioni::PlacementLines(p)[1], "mnLeft........: 10");
}

class FieldNamesTest : public testing::Test {
protected:
    void SetUp() override { bError::setLogPath(dir.filePath("log.xt2")); }
    void TearDown() override { bError::setLogPath(QString()); }
    QStringList log() const {
        QStringList lines;
        TextFile::readLines(dir.filePath("log.xt2"), lines);
        return lines;
    }
    QString path() const { return dir.filePath("FieldName.dll"); }
    QTemporaryDir dir;
};

TEST_F(FieldNamesTest, NineTrimmedLinesEmptyOnesKeepTheOldName) {
    ASSERT_TRUE(TextFile::writeLines(
        path(), {"  Cliente ", "", "Zona", "4", "5", "6", "7", "8", "\tNove\t", "ten is ignored"}));
    bImpostazioni::FieldNames names;
    names[1] = "kept";
    bImpostazioni::CaricaNomiCampi(path(), names);
    EXPECT_EQ(names[0], "Cliente");
    EXPECT_EQ(names[1], "kept");
    EXPECT_EQ(names[2], "Zona");
    EXPECT_EQ(names[8], "Nove");
    EXPECT_TRUE(log().isEmpty());
}

TEST_F(FieldNamesTest, ThreeLinesSetThreeNamesAndLogOneStepLine) {
    ASSERT_TRUE(TextFile::writeLines(path(), {"Uno", "Due", "Tre"}));
    bImpostazioni::FieldNames names;
    bImpostazioni::CaricaNomiCampi(path(), names);
    EXPECT_EQ(names[0], "Uno");
    EXPECT_EQ(names[2], "Tre");
    EXPECT_TRUE(names[3].isEmpty());
    const QStringList lines = log();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].startsWith("Function: CaricaNomiCampi >> Passo: 0 >> "));
}

TEST_F(FieldNamesTest, MissingOrBrokenFileKeepsNamesAndLogs) {
    bImpostazioni::FieldNames names;
    names.fill("default");
    bImpostazioni::CaricaNomiCampi(path(), names);
    writeBytes(path(), QByteArray("\xFF\xFEU\0n\0o", 7));
    bImpostazioni::CaricaNomiCampi(path(), names);
    for (const QString& n : names)
        EXPECT_EQ(n, "default");
    EXPECT_EQ(log().filter("CaricaNomiCampi").size(), 2);
}

} // namespace
