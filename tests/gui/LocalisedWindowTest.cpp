#include "core/app/Folders.h"
#include "core/app/Provisioning.h"
#include "core/app/TextFile.h"
#include "core/app/bError.h"
#include "core/app/bLANG.h"
#include "gui/ScriptedDialogs.h"
#include "gui/app/ColorStyle.h"
#include "gui/app/Session.h"
#include "gui/app/frmMessage.h"
#include "gui/editor/PreviewPane.h"
#include "gui/editor/frmMain.h"

#include <QAction>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

using namespace quillora;
using namespace quillora::gui;

namespace {

struct Localised {
    const char* language;
    const char* scheme;
    const char* screenshot;
};

void PrintTo(const Localised& p, std::ostream* os) {
    *os << p.language << ' ' << p.scheme; // a stable test name
}

class LocalisedWindowTest : public testing::TestWithParam<Localised> {
protected:
    void TearDown() override {
        clearProgramColorStyle();
        QIcon::setThemeName(QStringLiteral("breeze"));
        bError::setLogPath(QString());
    }
    // The program's folders with the shipped language file, the language choice and scheme.
    void prepare(const char* language, const char* scheme) {
        Session& s = session();
        s = Session{};
        scriptDialogs();
        s.folders = Folders::derive(dir.filePath("app"), dir.filePath("docs"));
        QDir().mkpath(s.folders.appPath);
        QFile::copy(QUILLORA_SOURCE_DIR "/data/LANG_Quillora.lng", s.folders.languageFile());
        ASSERT_TRUE(
            TextFile::writeLines(s.folders.languageChoiceFile(), {QString::fromUtf8(language)}));
        Provisioning::ensureDataFolders(s.folders, QUILLORA_SOURCE_DIR "/data/defaults", "en_US");
        ASSERT_TRUE(TextFile::writeLines(s.folders.pathFileImp + "colorSchema2.dll",
                                         {"[Schema]", QString::fromLatin1(scheme)}));
        bError::InitError(s.folders);
        s.currentLanguage = bLANG::SetVarCurrLanguage(s.folders.languageChoiceFile());
    }
    QTemporaryDir dir;
};

// The language file is read while the window is built; a language chosen meanwhile is still
// the one applied.
TEST_F(LocalisedWindowTest, ALanguageChosenWhileTheWindowIsBuiltIsApplied) {
    prepare("English", "Light");
    frmMain w;
    session().currentLanguage = QStringLiteral("Italiano");
    QString save;
    bLANG::LoadLanguages(session().folders.languageFile(), QStringLiteral("Italiano"),
                         [&](const QString& key, const QString& text) {
                             if (key == "frmMain.Dks.Commands.GetToolButton(\"cmdSalva\").Caption")
                                 save = text;
                         });
    ASSERT_FALSE(save.isEmpty());
    QSignalSpy loaded(&w, &frmMain::documentLoaded);
    w.Form_Load(QString());
    ASSERT_TRUE(loaded.count() > 0 || loaded.wait(20000));
    EXPECT_EQ(w.bars().action("cmdSalva")->text(), save);
}

// The whole start-up path: language choice, scheme choice, language file, then the window.
TEST_P(LocalisedWindowTest, StartsInTheChosenLanguageAndScheme) {
    const Localised& p = GetParam();
    prepare(p.language, p.scheme);
    Session& s = session();

    // What the file says for this language, read independently of the window.
    QHash<QString, QString> expected;
    bLANG::LoadLanguages(s.folders.languageFile(), s.currentLanguage,
                         [&](const QString& key, const QString& text) { expected[key] = text; });
    ASSERT_FALSE(expected.isEmpty());

    frmMain w;
    QSignalSpy loaded(&w, &frmMain::documentLoaded);
    w.Form_Load(QString());
    w.resize(1280, 820);
    w.show();
    ASSERT_TRUE(loaded.count() > 0 || loaded.wait(20000));

    const auto tool = [&](const char* id) {
        return expected.value(QStringLiteral("frmMain.Dks.Commands.GetToolButton(\"%1\").Caption")
                                  .arg(QLatin1String(id)));
    };
    for (const char* id : {"cmdSalva", "cmdBold", "cmdNewMess", "cmdTrova", "cmdPriAlta"}) {
        ASSERT_FALSE(tool(id).isEmpty()) << id;
        EXPECT_EQ(w.bars().action(id)->text(), tool(id)) << id;
    }
    const QString file = expected.value("frmMain.Dks.Commands.GetPopupMenu(\"mnuFile\").Caption");
    EXPECT_EQ(w.bars().menu("mnuFile")->title(), file);
    EXPECT_EQ(w.tabs()->tabText(0), expected.value("frmMain.Tbs.Item(0).Caption"));
    EXPECT_EQ(w.findChild<QDockWidget*>("dckAllegati")->windowTitle(),
              expected.value("frmMain.Dks.DockWindows(\"dckAllegati\").Caption"));
    EXPECT_EQ(w.windowTitle(), "Quillora - [NuovoFile.mssx]");
    // The preview's bar, made when the preview is first shown, speaks the language too.
    w.tabs()->setCurrentIndex(frmMain::PagePreview);
    auto* dark = w.previewPane()->findChild<QToolButton*>("chkDarkMode");
    ASSERT_TRUE(dark);
    EXPECT_EQ(dark->text(), Texts::builtIn(s.currentLanguage).get("prvDark"));
    w.tabs()->setCurrentIndex(frmMain::PageVisual);

    // Message boxes answer in the same language.
    QString yes;
    scripted().onAnswer = [&yes](const MessageRequest& r) {
        if (auto* b = r.box->findChild<QPushButton*>("cmdYes"))
            yes = b->text();
        return kIdNo;
    };
    gui::bMessage::ShowMessageYesNo("test", "t", "i", "c");
    EXPECT_EQ(yes, expected.value("frmMessage.cmdYes.Caption"));
    EXPECT_FALSE(yes.isEmpty());

    const QString folder = QStringLiteral(QUILLORA_BINARY_DIR "/screenshots");
    QDir().mkpath(folder);
    w.grab().save(folder + "/" + QString::fromLatin1(p.screenshot));
    w.ChiudiEDITOR();
}

INSTANTIATE_TEST_SUITE_P(Languages, LocalisedWindowTest,
                         testing::Values(Localised{"Español", "Dark", "main-espanol-dark.png"},
                                         Localised{"Italiano", "Light", "main-italiano-light.png"},
                                         Localised{"English", "Light", "main-english-light.png"}),
                         [](const auto& info) {
                             return std::string(info.param.scheme) + std::to_string(info.index);
                         });

} // namespace
