#include "core/app/TextFile.h"
#include "core/app/bError.h"
#include "gui/app/Session.h"
#include "gui/app/bMain.h"
#include "gui/app/frmSplash.h"
#include "gui/editor/frmMain.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "gui/TestSession.h"

using namespace quillora;
using namespace quillora::gui;

namespace {

// No failure ends the program: without its accounts database the editor still starts, says
// why once, and the commands that need accounts say so when they are used.
TEST(Startup, AnAccountsDatabaseThatCannotBeOpenedDoesNotStopTheEditor) {
    QTemporaryDir dir;
    const Folders folders = freshSession(dir).folders;
    QFile::remove(folders.accountDatabase());
    ASSERT_TRUE(QDir().mkpath(folders.accountDatabase())); // a folder where the file should be

    frmSplash splash;
    std::unique_ptr<frmMain> window = bMain::Form_Activate(splash, folders, QString());
    ASSERT_NE(window, nullptr);
    QSignalSpy loaded(window.get(), &frmMain::documentLoaded);
    ASSERT_TRUE(loaded.count() > 0 || loaded.wait(20000));

    ASSERT_EQ(scripted().errorReports.size(), 1);
    EXPECT_EQ(scripted().errorReports[0].title, "Attention, application error");
    EXPECT_TRUE(scripted().errorReports[0].text.contains("Routine: frmSplash.Form_Activate()"));
    EXPECT_FALSE(session().accountsError.isEmpty());
    QStringList log;
    TextFile::readLines(folders.logFile(), log);
    EXPECT_TRUE(log.filter("Function: Form_Activate >> Passo: 5 >> 0: ").size() == 1)
        << log.join('\n').toStdString();
    EXPECT_TRUE(log.contains("### Command ###"));

    for (const char* id : {"cmdCheckSpam", "cmdSubRem_1"}) {
        window->Dks_CommandClick(QString::fromLatin1(id));
        ASSERT_FALSE(scripted().boxes.isEmpty()) << id;
        EXPECT_EQ(scripted().boxes.last().instruction, session().texts.get("AccountNonDisponibili"))
            << id;
        EXPECT_EQ(scripted().boxes.last().content, session().accountsError) << id;
    }
    window->ChiudiEDITOR();
    bError::setLogPath(QString());
}

} // namespace
