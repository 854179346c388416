#include "core/TestFiles.h"
#include "core/app/Folders.h"
#include "core/app/TextFile.h"
#include "core/app/bError.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace quillora;

namespace {

class LogTest : public testing::Test {
protected:
    void SetUp() override {
        folders = Folders::derive(dir.filePath("app"), dir.filePath("docs"));
        QDir().mkpath(folders.pathFileImp);
    }
    void TearDown() override { bError::setLogPath(QString()); }

    QStringList logLines() const {
        QStringList lines;
        TextFile::readLines(folders.logFile(), lines);
        return lines;
    }

    QTemporaryDir dir;
    Folders folders;
};

TEST_F(LogTest, HeaderHasValuesInColumn23AndStartsWithBom) {
    bError::InitError(folders);
    const QByteArray bytes = readBytes(folders.logFile());
    ASSERT_GE(bytes.size(), 2);
    EXPECT_EQ(uchar(bytes[0]), 0xFF);
    EXPECT_EQ(uchar(bytes[1]), 0xFE);

    const QStringList lines = logLines();
    ASSERT_EQ(lines.size(), 8);
    EXPECT_TRUE(lines[0].startsWith("Inizio applicazione.: "));
    EXPECT_EQ(lines[1], QString(70, '-'));
    EXPECT_EQ(lines[2], "### IMPOSTAZIONI - Quillora ###");
    EXPECT_EQ(lines[3], "APP_PATH............: " + folders.appPath);
    EXPECT_EQ(lines[4], "APP_MEMORY..........: " + folders.appMemory);
    EXPECT_EQ(lines[5], "APP_TEMPLATE........: " + folders.appTemplate);
    EXPECT_EQ(lines[6], "APP_DATA_ALLUSER....: " + folders.appDataAllUser);
    EXPECT_EQ(lines[7], "PATH_FILEIMP........: " + folders.pathFileImp);
    for (int i : {0, 3, 4, 5, 6, 7})
        EXPECT_EQ(lines[i].indexOf(": "), 20) << lines[i].toStdString();
    EXPECT_TRUE(bytes.endsWith(QByteArray("\r\0\n\0", 4)));
}

TEST_F(LogTest, SecondRunLeavesOnlyItsOwnLines) {
    bError::InitError(folders);
    bError::wrtErrFree("first run only");
    bError::EndError();
    bError::InitError(folders);
    bError::wrtErrFree("second run");
    const QStringList lines = logLines();
    EXPECT_FALSE(lines.contains("first run only"));
    EXPECT_EQ(lines.filter("Inizio applicazione").size(), 1);
    EXPECT_EQ(lines.last(), "second run");
    EXPECT_EQ(readBytes(folders.logFile()).count(QByteArray("\xFF\xFE", 2)), 1);
}

TEST_F(LogTest, StepLinesAndClosingLines) {
    bError::InitError(folders);
    bError::wrtErr("Form_Load", "0", 53, "File not found");
    bError::wrtErr("Sub Main", "3", 5, "two\r\nlines");
    bError::EndError();
    const QStringList lines = logLines();
    ASSERT_GE(lines.size(), 4);
    EXPECT_EQ(lines[8], "Function: Form_Load >> Passo: 0 >> 53: File not found");
    // A description with a line break is written as it is.
    EXPECT_EQ(lines[9], "Function: Sub Main >> Passo: 3 >> 5: two");
    EXPECT_EQ(lines[10], "lines");
    EXPECT_EQ(lines[11], QString(70, '-'));
    EXPECT_TRUE(lines[12].startsWith("Fine applicazione...: "));
    EXPECT_GT(lines[12].size(), 22);
}

TEST_F(LogTest, MissingDataFolderIsIgnored) {
    QDir(folders.pathFileImp).removeRecursively();
    bError::InitError(folders);
    bError::wrtErrFree("nothing happens");
    bError::EndError();
    EXPECT_FALSE(QFile::exists(folders.logFile()));
    // The appending writers must not create the folder's file when the folder is gone.
    EXPECT_FALSE(QDir(folders.pathFileImp).exists());
}

TEST(ErrorReport, ExactText) {
    EXPECT_EQ(bError::ErrorReportText("Quillora", "frmMain.SalvaMessaggio()", 0, "Disk full"),
              "App: Quillora\r\n\r\nRoutine: frmMain.SalvaMessaggio()\r\n\r\nLine: 0\r\n\r\n"
              "Description: Disk full");
}

TEST(MyTime, TwoDigitFieldsAndHundredths) {
    static const QRegularExpression shape("^\\d\\d\\.\\d\\d\\.\\d\\d,\\d\\d$");
    for (int i = 0; i < 50; ++i)
        EXPECT_TRUE(shape.match(bError::MyTime()).hasMatch()) << bError::MyTime().toStdString();
}

} // namespace
