// GUI tests share one QApplication, offscreen (set per test by CMake).
#include <QApplication>
#include <QIcon>
#include <gtest/gtest.h>

#include "gui/ScriptedDialogs.h"

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
    // Without a desktop session there is no icon theme (nor, offscreen, a search path).
    if (!QIcon::themeSearchPaths().contains(QStringLiteral("/usr/share/icons")))
        QIcon::setThemeSearchPaths(QIcon::themeSearchPaths() << QStringLiteral("/usr/share/icons"));
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("breeze"));
    ::testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new FreshDialogs);
    return RUN_ALL_TESTS();
}
