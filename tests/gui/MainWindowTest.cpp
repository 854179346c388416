#include "core/app/Folders.h"
#include "core/app/Provisioning.h"
#include "core/app/TextFile.h"
#include "core/app/bError.h"
#include "gui/app/Session.h"
#include "gui/app/WindowHelpers.h"
#include "gui/editor/frmMain.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace quillora;
using namespace quillora::gui;

namespace {

class MainWindowTest : public testing::Test {
protected:
    void SetUp() override {
        Session& s = session();
        s = Session{};
        s.folders = Folders::derive(dir.filePath("app"), dir.filePath("docs"));
        QDir().mkpath(s.folders.appPath);
        Provisioning::ensureDataFolders(s.folders, QUILLORA_SOURCE_DIR "/data/defaults", "it_IT");
        bError::InitError(s.folders);
    }
    void TearDown() override { bError::setLogPath(QString()); }

    QStringList log() const {
        QStringList lines;
        TextFile::readLines(session().folders.logFile(), lines);
        return lines;
    }
    QStringList placementLines() const {
        QStringList lines;
        TextFile::readLines(session().folders.placementFile(), lines);
        return lines;
    }
    static void saveShot(QWidget& w, const QString& name) {
        const QString folder = QStringLiteral(QUILLORA_BINARY_DIR "/screenshots");
        QDir().mkpath(folder);
        w.grab().save(folder + "/" + name);
    }

    QTemporaryDir dir;
};

TEST_F(MainWindowTest, LoadsWithTitlePlacementAndLoggedPhases) {
    frmMain w;
    w.Form_Load(QString());
    w.show();
    QApplication::processEvents();
    EXPECT_EQ(w.windowTitle(), "Quillora - [NuovoFile.mssx]");
    // The shipped placement is 16500 x 11250 twips.
    const double tpp = twipsPerPixel(&w);
    EXPECT_NEAR(w.width(), 16500 / tpp, 2);
    EXPECT_NEAR(w.height(), 11250 / tpp, 2);
    const QStringList lines = log();
    EXPECT_TRUE(lines.contains("### CaricaNomiCampi ###"));
    EXPECT_TRUE(lines.contains("### LeggiIMP ###"));
    EXPECT_TRUE(lines.contains("### Command ###"));
    EXPECT_TRUE(lines.filter("-- Command -- File: ").isEmpty());
    saveShot(w, "main-window.png");
    w.close();
}

TEST_F(MainWindowTest, ClosingGoesThroughChiudiEditor) {
    Session& s = session();
    s.pathElaboration = GetPercorsoTemporaneo(s.folders.pathFileImp);
    ASSERT_TRUE(QFileInfo(s.pathElaboration).isDir());
    {
        frmMain w;
        w.Form_Load("/tmp/one file.mssx");
        w.show();
        w.move(40, 50);
        QApplication::processEvents();
        w.close();
        EXPECT_TRUE(w.isVisible()) << "the window system never closes the window by itself";
    }
    EXPECT_FALSE(QFileInfo::exists(s.pathElaboration));
    const QStringList lines = log();
    EXPECT_TRUE(lines.contains("-- Command -- File: /tmp/one file.mssx"));
    ASSERT_GE(lines.size(), 2);
    EXPECT_EQ(lines[lines.size() - 2], QString(70, '-'));
    EXPECT_TRUE(lines.last().startsWith("Fine applicazione...: "));
    EXPECT_TRUE(QFileInfo(s.folders.layoutFile()).size() > 0);
    const QStringList placement = placementLines();
    ASSERT_EQ(placement.size(), 6);
    EXPECT_EQ(placement[0], "[Form frmMain]");
    EXPECT_EQ(placement[5], "mnWindowState.: 0");
}

TEST_F(MainWindowTest, MaximisedCloseWritesLastNormalPlacementWithState2) {
    frmMain w;
    w.Form_Load(QString());
    w.show();
    QApplication::processEvents();
    const QStringList before = placementLines();
    w.showMaximized();
    QApplication::processEvents();
    w.close();
    const QStringList after = placementLines();
    ASSERT_EQ(after.size(), 6);
    EXPECT_EQ(after[5], "mnWindowState.: 2");
    EXPECT_EQ(after[3], before[3]) << "the width is the normal one, not the maximised one";
    EXPECT_EQ(after[4], before[4]);
}

TEST(WindowHelpers, PlacementOffEveryScreenComesBack) {
    const QRect far(-40000, -40000, 800, 600);
    const QRect back = pullOntoScreen(far);
    EXPECT_TRUE(QGuiApplication::primaryScreen()->availableGeometry().intersects(back));
    const QRect visible(10, 10, 300, 200);
    EXPECT_EQ(pullOntoScreen(visible), visible);
}

} // namespace
