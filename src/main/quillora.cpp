// The editor's entry: one optional message file on the command line.
#include "core/app/Folders.h"
#include "core/app/ProgramFolders.h"
#include "gui/app/Dialogs.h"
#include "gui/app/MessageOwner.h"
#include "gui/app/ProgramIcon.h"
#include "gui/app/ScriptedAnswers.h"
#include "gui/app/bMain.h"

#include <QApplication>
#include <QTextStream>

int main(int argc, char** argv) {
    // The windows take their colours from the product family's scheme files, not from the
    // desktop's theme (which would repaint the bars of a dark scheme in the desktop's colours).
    QApplication::setDesktopSettingsAware(false);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quillora"));
    QApplication::setApplicationDisplayName(QStringLiteral("Quillora"));
    QApplication::setApplicationVersion(QStringLiteral("%1.%2")
                                            .arg(QUILLORA_VERSION_MAJOR)
                                            .arg(QUILLORA_VERSION_MINOR, 2, 10, QLatin1Char('0')));
    quillora::gui::useIconTheme();
    quillora::gui::bMain::installSignalHandlers();
    QStringList args = QApplication::arguments();
    args.removeFirst();
    const QString file = quillora::CommandLineFileName(args);
    // A message that another editor already has open is not edited twice: that window
    // comes forward and this process ends.
    if (!file.isEmpty() && quillora::gui::MessageOwner::bringForward(file)) {
        QTextStream(stdout) << "quillora: " << file
                            << " is already open in another window, brought forward\n";
        return 0;
    }
    if (auto scripted = quillora::gui::ScriptedAnswers::fromEnvironment())
        quillora::gui::setDialogs(scripted);
    return quillora::gui::bMain::Main(app, quillora::ProgramFolders::locate(), file);
}
