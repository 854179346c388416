// GUI tests share one QApplication, offscreen (set per test by CMake).
#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "gui/ScriptedDialogs.h"
#include "gui/app/ProgramIcon.h"
#include "gui/app/ThemeIcons.h"

namespace {
// Every test starts with scripted dialogs: no test can wait on a modal window.
class FreshDialogs : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { scriptDialogs(); }
};
} // namespace

int main(int argc, char** argv) {
    // ctest's test discovery runs this program too, without the per-test environment.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quillora"));
    QApplication::setApplicationDisplayName(QStringLiteral("Quillora"));
    quillora::gui::useIconTheme();
    // Icon pictures are drawn into a cache of this run, not the user's.
    QTemporaryDir iconCache;
    quillora::gui::setThemeIconCacheFolder(iconCache.path());
    ::testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new FreshDialogs);
    return RUN_ALL_TESTS();
}
