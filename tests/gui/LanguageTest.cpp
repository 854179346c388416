#include "core/app/LanguageKeys.h"
#include "core/app/bLANG.h"
#include "core/editor/CommandTable.h"
#include "gui/app/LanguageApplier.h"
#include "gui/app/frmInfoSu.h"
#include "gui/app/frmSplash.h"
#include "gui/message/frmAllegati.h"

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QProgressBar>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>

#include "gui/MainWindowFixture.h"

// Readable failures: gtest would print a QString as its bytes.
static void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

using namespace quillora;
using namespace quillora::gui;
using bLANG::TargetKind;

namespace {

const QString kShipped = QStringLiteral(QUILLORA_SOURCE_DIR "/data/LANG_Quillora.lng");

// What the shipped file says, read through the core loader: by full key, and the caption each
// command ends up with (a merge field is captioned by two lines; the later one wins).
struct FileTexts {
    QHash<QString, QString> byKey;
    QHash<QString, QString> command;

    QString operator[](const QString& key) const {
        EXPECT_TRUE(byKey.contains(key)) << "no text for " << key.toStdString();
        return byKey.value(key);
    }
};

FileTexts fileTexts(const QString& language) {
    FileTexts out;
    bLANG::LoadLanguages(kShipped, language, [&](const QString& key, const QString& text) {
        out.byKey.insert(key, text);
        const bLANG::Target& t = bLANG::findKey(key)->target;
        if (t.kind == TargetKind::ToolButton && QLatin1String(t.window) == u"frmMain")
            out.command.insert(QString::fromLatin1(t.id), text);
        else if (t.kind == TargetKind::MergeFieldCaption)
            out.command.insert(QString::fromLatin1(t.command), text);
    });
    return out;
}

QString mainKey(const char* pattern, const QString& id) {
    return "frmMain." + QString::fromLatin1(pattern).arg(id);
}

// The accelerator letters of a menu's entries; "&&" is a literal ampersand.
QStringList accelerators(const QList<QAction*>& actions) {
    QStringList out;
    for (const QAction* a : actions) {
        const QString text = a->text();
        for (qsizetype i = 0; i + 1 < text.size(); ++i) {
            if (text[i] != u'&')
                continue;
            if (text[i + 1] != u'&')
                out << text.mid(i + 1, 1).toLower();
            ++i;
        }
    }
    return out;
}

// The main window as it is built, before it loads or shows anything.
class LanguageApplierTest : public MainWindowTest {
protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        window = std::make_unique<frmMain>();
    }
    QAction* command(const QString& id) { return window->bars().action(id); }
};

class EveryLanguage : public LanguageApplierTest,
                      public testing::WithParamInterface<const char*> {};

TEST_P(EveryLanguage, PutsTheFileTextsOnTheMainWindow) {
    const QString language = QString::fromUtf8(GetParam());
    const FileTexts file = fileTexts(language);
    const QString title = window->windowTitle();
    Texts texts;
    const bLANG::LoadResult r = applyLanguage(window.get(), texts, kShipped, language);
    ASSERT_GT(r.CurrentLanguageIndex, 0);

    for (QAction* a : window->bars().actions()) {
        ASSERT_TRUE(file.command.contains(a->objectName())) << a->objectName().toStdString();
        EXPECT_EQ(a->text(), file.command.value(a->objectName())) << a->objectName().toStdString();
    }
    for (QMenu* m : window->findChildren<QMenu*>()) {
        if (m->title().isEmpty()) // a context menu shows no title
            continue;
        EXPECT_EQ(m->title(),
                  file[mainKey(R"(Dks.Commands.GetPopupMenu("%1").Caption)", m->objectName())]);
    }
    // A menu on a toolbar is a button showing the menu's title.
    for (QToolButton* b : window->findChildren<QToolButton*>()) {
        if (b->menu()) {
            EXPECT_EQ(b->text(), editor::highlightText(b->menu()->title()));
        }
    }
    for (QToolBar* bar : window->findChildren<QToolBar*>(Qt::FindDirectChildrenOnly)) {
        EXPECT_EQ(bar->windowTitle(),
                  file[mainKey(R"(Dks.CommandBars("%1").NameLocal)", bar->objectName())]);
    }
    for (QDockWidget* dock : window->findChildren<QDockWidget*>()) {
        EXPECT_EQ(dock->windowTitle(),
                  file[mainKey(R"(Dks.DockWindows("%1").Caption)", dock->objectName())]);
    }
    QTabWidget* tabs = window->tabs();
    ASSERT_EQ(tabs->count(), 3);
    for (int i = 0; i < tabs->count(); ++i) {
        EXPECT_EQ(tabs->tabText(i), file[mainKey("Tbs.Item(%1).Caption", QString::number(i))]);
        EXPECT_EQ(tabs->tabToolTip(i), file[mainKey("Tbs.Item(%1).ToolTip", QString::number(i))]);
    }
    EXPECT_EQ(window->findChild<QLabel*>("lblOggetto")->text(),
              file[R"(frmMain.Dks.Commands.GetEdit("txtOggetto").Label)"]);
    EXPECT_EQ(window->findChild<QLabel*>("stcHelp")->text(),
              file[R"(frmMain.Dks.Commands.GetStatic("stcHelp").Text)"]);
    EXPECT_EQ(window->windowTitle(), title) << "the title routine owns the main window's title";

    frmAllegati* pane = window->attachments();
    EXPECT_EQ(pane->command("cmdAllegatiNew")->text(),
              file[R"(frmAllegati.Dks.Commands.GetToolButton("cmdAllegatiNew").Caption)"]);
    EXPECT_EQ(pane->command("cmdAllegatiDel")->toolTip(),
              file[R"(frmAllegati.Dks.Commands.GetToolButton("cmdAllegatiDel").TooltipText)"]);
    EXPECT_EQ(pane->LIST()->headerItem()->text(2), file["frmAllegati.LIST.TextMatrix(0, 2)"]);
    QSignalSpy help(pane, &frmAllegati::helpText);
    QMouseEvent move(QEvent::MouseMove, QPointF(4, 4), QPointF(4, 4), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QApplication::sendEvent(pane->LIST()->viewport(), &move);
    ASSERT_EQ(help.count(), 1);
    EXPECT_EQ(help.first().first().toString(), file["bVAR.alleg1"]);

    // Message texts by name, other windows' texts by full key, for whoever needs them later.
    EXPECT_EQ(texts.get("MessSalva1"), file["bVAR.MessSalva1"]);
    EXPECT_EQ(texts.get("xxxCampo4"), file["bVAR.xxxCampo4"]);
    EXPECT_EQ(texts.get("frmPropBody.Caption"), file["frmPropBody.Caption"]);
    EXPECT_EQ(texts.get("frmMessage.cmdYes.Caption"), file["frmMessage.cmdYes.Caption"]);
}

TEST_P(EveryLanguage, AcceleratorsAreUniqueInEveryMenu) {
    const QString language = QString::fromUtf8(GetParam());
    Texts texts;
    applyLanguage(window.get(), texts, kShipped, language);
    QList<std::pair<QString, QList<QAction*>>> menus{{"menu bar", window->menuBar()->actions()}};
    for (QMenu* m : window->findChildren<QMenu*>())
        menus.append({m->objectName(), m->actions()});
    for (const auto& [name, actions] : menus) {
        const QStringList keys = accelerators(actions);
        EXPECT_EQ(QSet<QString>(keys.begin(), keys.end()).size(), keys.size())
            << language.toStdString() << ", " << name.toStdString() << ": "
            << keys.join(' ').toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Shipped, EveryLanguage, testing::Values("Italiano", "English", "Español"),
                         [](const auto& info) { return std::to_string(info.index); });

TEST_F(LanguageApplierTest, FieldNamesReplaceOnlyTheNamedFields) {
    const FileTexts file = fileTexts("Italiano");
    Texts texts;
    applyLanguage(window.get(), texts, kShipped, "Italiano");
    bImpostazioni::FieldNames names;
    names[0] = "Cliente";
    names[2] = "R&D";
    applyFieldNames(window.get(), texts, names);
    EXPECT_EQ(command("cmdVarCampo1")->text(), "Cliente");
    EXPECT_EQ(command("cmdVarCampo2")->text(), file["bVAR.xxxCampo2"]);
    EXPECT_EQ(command("cmdVarCampo3")->text(), "R&&D") << "shown as typed, not as an accelerator";
    EXPECT_EQ(command("cmdVarCampo9")->text(), file["bVAR.xxxCampo9"]);
}

TEST_F(LanguageApplierTest, FieldWithoutNameOrLanguageCaptionKeepsItsCaption) {
    const QString builtIn = command("cmdVarCampo5")->text();
    bImpostazioni::FieldNames names;
    names[0] = "Cliente";
    applyFieldNames(window.get(), Texts::builtIn("English"), names);
    EXPECT_EQ(command("cmdVarCampo1")->text(), "Cliente");
    EXPECT_EQ(command("cmdVarCampo5")->text(), builtIn);
}

TEST_F(LanguageApplierTest, MissingFileKeepsBuiltInCaptionsAndTexts) {
    QHash<QAction*, QString> before;
    for (QAction* a : window->findChildren<QAction*>())
        before.insert(a, a->text());
    const QString tab = window->tabs()->tabText(0);
    Texts texts = Texts::builtIn("English");
    const bLANG::LoadResult r =
        applyLanguage(window.get(), texts, dir.filePath("missing.lng"), "English");
    EXPECT_FALSE(r.read);
    for (QAction* a : window->findChildren<QAction*>())
        EXPECT_EQ(a->text(), before.value(a)) << a->objectName().toStdString();
    EXPECT_EQ(window->tabs()->tabText(0), tab);
    EXPECT_EQ(texts.get("MessSalva1"), Texts::builtIn("English").get("MessSalva1"));
}

TEST_F(LanguageApplierTest, OtherWindowsGetTheirTextsNowOrWhenMade) {
    const QString language = QString::fromUtf8("Español");
    const FileTexts file = fileTexts(language);
    frmSplash splash; // a top-level window that exists while the language loads
    Texts texts;
    applyLanguage(window.get(), texts, kShipped, language);
    EXPECT_EQ(splash.findChild<QLabel*>("lblVersionLabel")->text(),
              file["frmSplash.lblVersionLabel.Caption"]);

    frmInfoSu about; // made afterwards
    applyWindowTexts(&about, texts);
    EXPECT_EQ(about.windowTitle(), file["frmInfoSu.Caption"]);
    EXPECT_EQ(about.findChild<QLabel*>("lblHint")->text(), file["frmInfoSu.lblHint.Caption"]);
    EXPECT_EQ(about.findChild<QLabel*>("lblSubtitle")->text(),
              file["frmInfoSu.lblSubtitle.Caption"]);
}

TEST_F(LanguageApplierTest, ProgressDrivesABarToTheEnd) {
    QProgressBar bar;
    bar.setRange(0, 100);
    bar.setValue(50);
    Texts texts;
    applyLanguage(window.get(), texts, kShipped, "English", progressOn(&bar));
    EXPECT_EQ(bar.minimum(), 0);
    EXPECT_EQ(bar.maximum(), int(QFileInfo(kShipped).size()));
    EXPECT_EQ(bar.value(), bar.maximum());
}

} // namespace
