#include "gui/editor/frmMain.h"
#include "core/app/Links.h"
#include "core/editor/CommandTable.h"
#include "gui/app/ProgramIcon.h"
#include "gui/editor/PreviewPane.h"
#include "gui/editor/SourceView.h"
#include "gui/message/frmAllegati.h"

#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QRegularExpression>
#include <QTabWidget>
#include <QToolBar>
#include <QTreeWidget>
#include <Qsci/qscilexerhtml.h>

#include "gui/MainWindowFixture.h"

using namespace quillora;
using namespace quillora::gui;

namespace {

class frmMainTest : public MainWindowTest {
protected:
    QString writeFile(const QString& name, qsizetype bytes) {
        const QString path = dir.filePath(name);
        QFile f(path);
        f.open(QIODevice::WriteOnly);
        f.write(QByteArray(bytes, 'x'));
        return path;
    }
};

TEST_F(frmMainTest, StartLogsThePhasesInOrder) {
    frmMain& w = start();
    EXPECT_EQ(w.windowTitle(), "Quillora - [NuovoFile.mssx]");
    EXPECT_EQ(w.windowIcon().availableSizes(), programIcon().availableSizes());
    EXPECT_FALSE(w.windowIcon().availableSizes().isEmpty());
    const QStringList lines = log();
    const QStringList phases = {"### Colori e Icone Tab ###",
                                "### xxxLANGUAGExxx ###",
                                "### CaricaNomiCampi ###",
                                "### LeggiIMP ###",
                                "### CaricaFont ###",
                                "### CaricaSize ###",
                                "### ColoraEditCode ###",
                                "### NuovoMessaggio ###",
                                "### DockAllegati ###",
                                "### DockAllegati 2 ###",
                                "### Visualizzo finestre Dock ###",
                                "### Command ###"};
    qsizetype at = -1;
    for (const QString& p : phases) {
        const qsizetype next = lines.indexOf(p);
        EXPECT_GT(next, at) << p.toStdString();
        at = next;
    }
    EXPECT_TRUE(lines.filter("-- Command -- File: ").isEmpty());
    EXPECT_TRUE(html().contains("<style>"));
    EXPECT_FALSE(w.DaSalvare());
}

// Tab from the subject crosses the bars, then the pages' strip, then the panes.
TEST_F(frmMainTest, TheKeyboardOrderRunsFromTheBarsToThePagesToThePanes) {
    frmMain& w = start();
    QStringList order;
    for (QWidget* x = w.findChild<QLineEdit*>("txtOggetto"); order.size() < 500;
         x = x->nextInFocusChain()) {
        if (x == &w)
            break;
        if (x->isVisibleTo(&w) && (x->focusPolicy() & Qt::TabFocus))
            order << x->objectName();
    }
    const qsizetype subject = order.indexOf("txtOggetto");
    const qsizetype font = order.indexOf("cmbFontName");
    const qsizetype tabs = order.indexOf("Tbs");
    const qsizetype attachments = order.indexOf("LIST");
    EXPECT_EQ(subject, 0) << order.join(' ').toStdString();
    EXPECT_GT(font, subject) << order.join(' ').toStdString();
    EXPECT_GT(tabs, font) << order.join(' ').toStdString();
    EXPECT_GT(attachments, tabs) << order.join(' ').toStdString();
}

TEST_F(frmMainTest, CommandLineFileIsOpened) {
    MessageDocument d;
    d.subject = "From the command line";
    d.body = "<html><body><p>hello there</p></body></html>";
    const QString path = dir.filePath("cl.mssx");
    ASSERT_TRUE(MessageFile::SalvaMessaggio(d, path).ok());
    frmMain& w = start("\"" + path + "\"");
    EXPECT_TRUE(log().contains("-- Command -- File: " + path));
    EXPECT_EQ(w.windowTitle(), "Quillora - [cl.mssx]");
    EXPECT_TRUE(html().contains("hello there"));
    EXPECT_EQ(w.bars().subject->text(), "From the command line");
}

TEST_F(frmMainTest, BoldSnippetsAndMergeTokensLandAtTheCaret) {
    frmMain& w = start();
    setBody("<html><body><div id=\"t\">one two</div></body></html>");
    w.visualPage()->selectContents("#t");
    w.Dks_CommandClick("cmdBold");
    EXPECT_TRUE(html().contains("<b>one two</b>")) << html().toStdString();

    for (const auto& c : editor::commands()) {
        if (c.action != editor::Action::Snippet &&
            QLatin1String(c.id) != QLatin1String("cmdVarNom"))
            continue;
        const QString snippet = QString::fromUtf8(c.text);
        // The reference shows how the page serialises the snippet; the caret sits in the empty
        // block after it.
        setBody("<html><body><div id=\"ref\">" + snippet +
                "</div><div id=\"t\">&#8203;</div>"
                "</body></html>");
        w.visualPage()->placeCaret("#t", 1);
        w.Dks_CommandClick(QString::fromLatin1(c.id));
        const QString page = html();
        // Inline content goes into the caret's block; block content right after that block.
        const QRegularExpression t("<div id=\"ref\">(.*?)</div><div id=\"t\">\u200B(.*?)</div>"
                                   "(.*?)</body>",
                                   QRegularExpression::DotMatchesEverythingOption);
        const auto m = t.match(page);
        ASSERT_TRUE(m.hasMatch()) << c.id << " " << page.toStdString();
        EXPECT_TRUE(m.captured(2).isEmpty() || m.captured(3).isEmpty()) << c.id;
        EXPECT_EQ(m.captured(2) + m.captured(3), m.captured(1))
            << c.id << " " << page.toStdString();
        EXPECT_TRUE(w.DaSalvare()) << c.id;
    }
}

// Most sessions never open the source page: it is made when first shown, with the body the
// visual page holds, the colours of its scheme file, and its edits counted as any other.
TEST_F(frmMainTest, TheSourcePageIsMadeWhenFirstShown) {
    {
        QFile scheme(quillora::gui::session().folders.pathFileImp + "SyntaxEdit.dll");
        ASSERT_TRUE(scheme.open(QIODevice::WriteOnly | QIODevice::Truncate));
        scheme.write("[HTML]\r\nPaper.......: #102030\r\nTag.........: #A0B0C0\r\n");
    }
    frmMain& w = start();
    EXPECT_EQ(w.findChild<SourceView*>(), nullptr);
    setBody("<html><head></head><body><p>Made late</p></body></html>");
    w.tabs()->setCurrentIndex(frmMain::PageSource);
    auto* code = w.findChild<SourceView*>();
    ASSERT_NE(code, nullptr);
    EXPECT_EQ(code, w.sourcePage());
    EXPECT_TRUE(code->isVisible());
    EXPECT_TRUE(code->text().contains("<p>Made late</p>"));
    EXPECT_EQ(code->lexer()->defaultPaper(), QColor("#102030"));
    EXPECT_EQ(code->lexer()->color(QsciLexerHTML::Tag), QColor("#A0B0C0"));
    EXPECT_FALSE(w.DaSalvare());
    code->SendScintilla(QsciScintilla::SCI_DOCUMENTEND);
    QTest::keyClicks(code->viewport(), "<!-- typed -->");
    EXPECT_TRUE(w.DaSalvare());
    QSignalSpy rebuilt(w.visualPage(), &VisualSurface::documentComplete);
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    ASSERT_TRUE(rebuilt.count() > 0 || rebuilt.wait(20000));
    EXPECT_TRUE(html().contains("<!-- typed -->"));
}

TEST_F(frmMainTest, PagesKeepTheTextAcrossSwitches) {
    frmMain& w = start();
    setBody("<html><head></head><body><p>Visual text</p></body></html>");
    w.tabs()->setCurrentIndex(frmMain::PageSource);
    EXPECT_TRUE(w.sourcePage()->text().contains("<p>Visual text</p>"));
    // Edit the source; the visual page is rebuilt from it.
    QString source = w.sourcePage()->text();
    source.replace("Visual text", "Edited in source");
    w.sourcePage()->setText(source);
    EXPECT_TRUE(w.DaSalvare());
    QSignalSpy rebuilt(w.visualPage(), &VisualSurface::documentComplete);
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    ASSERT_TRUE(rebuilt.count() > 0 || rebuilt.wait(20000));
    EXPECT_TRUE(html().contains("Edited in source"));

    // Preview and back to the source: the source is exactly as it was.
    w.tabs()->setCurrentIndex(frmMain::PageSource);
    w.sourcePage()->setText("<html><body><p  class=x>odd   spacing</p></body></html>");
    const QString exact = w.sourcePage()->text();
    w.tabs()->setCurrentIndex(frmMain::PagePreview);
    w.tabs()->setCurrentIndex(frmMain::PageSource);
    EXPECT_EQ(w.sourcePage()->text(), exact);
    // Formatting is for the visual page only.
    EXPECT_FALSE(w.bars().toolbar("TbTesto")->isEnabled());
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    EXPECT_TRUE(w.bars().toolbar("TbTesto")->isEnabled());
}

// A trip through the source page that changes nothing leaves the visual page as it was, its
// undo history included; a page loaded behind the window's back is taken from the source again.
TEST_F(frmMainTest, UnchangedSourceKeepsTheVisualPageAndItsUndo) {
    frmMain& w = start();
    setBody("<html><body><div id=\"t\">one two</div></body></html>");
    w.visualPage()->selectContents("#t");
    w.Dks_CommandClick("cmdBold");
    ASSERT_TRUE(waitFor([&] { return html().contains("<b>one two</b>"); }));
    const quint64 loads = w.visualPage()->loadCount();
    w.tabs()->setCurrentIndex(frmMain::PageSource);
    EXPECT_TRUE(w.sourcePage()->text().contains("<b>one two</b>"));
    EXPECT_EQ(w.sourcePage()->wrapMode(), QsciScintilla::WrapWord);
    // Tags, text, comments and scripts alike in the one fixed-pitch font.
    const QString fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
    for (int style : {QsciLexerHTML::Default, QsciLexerHTML::Tag, QsciLexerHTML::HTMLComment,
                      QsciLexerHTML::JavaScriptComment, QsciLexerHTML::CDATA})
        EXPECT_EQ(w.sourcePage()->lexer()->font(style).family(), fixed) << style;
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    EXPECT_EQ(w.visualPage()->loadCount(), loads);
    EXPECT_TRUE(w.visualPage()->isReady());
    // Hidden, the source page lays out nothing in the background; shown from the preview, which
    // brings no new text, it wraps its lines again.
    EXPECT_EQ(w.sourcePage()->wrapMode(), QsciScintilla::WrapNone);
    w.tabs()->setCurrentIndex(frmMain::PagePreview);
    w.tabs()->setCurrentIndex(frmMain::PageSource);
    EXPECT_EQ(w.sourcePage()->wrapMode(), QsciScintilla::WrapWord);
    EXPECT_TRUE(w.sourcePage()->text().contains("<b>one two</b>"));
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    w.Dks_CommandClick("cmdUndo");
    EXPECT_TRUE(waitFor([&] { return !html().contains("<b>"); })) << html().toStdString();

    w.tabs()->setCurrentIndex(frmMain::PageSource);
    const QString source = w.sourcePage()->text();
    setBody("<html><body><p>loaded by someone else</p></body></html>");
    QSignalSpy rebuilt(w.visualPage(), &VisualSurface::documentComplete);
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    ASSERT_TRUE(rebuilt.count() > 0 || rebuilt.wait(20000));
    EXPECT_FALSE(html().contains("someone else"));
    EXPECT_TRUE(html().contains("one two"));
    EXPECT_EQ(w.sourcePage()->text(), source);
}

// What an edit on the source page did not touch stays in the page as it was: the same nodes
// (marked here with a script value a new node would not have), the caret in them and the body.
// A changed text is new inside the cell that holds it, a changed body colour is set on the body
// that is there, and an added paragraph is the only new element. (Two changes far apart under
// one parent renew what lies between them: still only part of the page.)
TEST_F(frmMainTest, AnEditedSourceReplacesOnlyWhatChanged) {
    frmMain& w = start();
    const auto editSource = [&](const std::function<void(QString&)>& edit) {
        w.tabs()->setCurrentIndex(frmMain::PageSource);
        QString source = w.sourcePage()->text();
        edit(source);
        w.sourcePage()->setText(source);
        w.tabs()->setCurrentIndex(frmMain::PageVisual);
        return waitFor([&] { return w.visualPage()->isReady(); });
    };
    const QString kept = "[document.body, a, c1, c2, c2.firstChild, z, window.n]"
                         ".map(n => !n ? 'none' : n.kept ? 'kept' : 'new').join(' ')";
    ASSERT_TRUE(editSource([](QString& s) {
        s = "<html><head><title>T</title></head><body bgcolor=\"#ffffff\">"
            "<p id=\"a\">first</p><table><tbody><tr><td id=\"c1\">one</td>"
            "<td id=\"c2\">two</td></tr></tbody></table><p id=\"z\">last</p></body></html>";
    }));
    ASSERT_TRUE(evaluate(w.visualPage(), "for (const n of [document.body, a, c1, c2, "
                                         "c2.firstChild, z]) n.kept = true;"
                                         "getSelection().collapse(z.firstChild, 2); true")
                    .toBool());

    ASSERT_TRUE(editSource([](QString& s) {
        s.replace(">two<", ">TWO!<");
        s.replace("#ffffff", "#eeeeee");
    }));
    EXPECT_EQ(evaluate(w.visualPage(), kept).toString(), "kept kept kept kept new kept none");
    EXPECT_TRUE(evaluate(w.visualPage(), "getSelection().anchorNode === z.firstChild && "
                                         "getSelection().anchorOffset === 2")
                    .toBool());
    EXPECT_TRUE(html().contains("<body bgcolor=\"#eeeeee\">")) << html().toStdString();
    EXPECT_TRUE(html().contains("<td id=\"c2\">TWO!</td>")) << html().toStdString();

    ASSERT_TRUE(
        editSource([](QString& s) { s.replace("first</p>", "first</p><p id=\"n\">new</p>"); }));
    EXPECT_EQ(evaluate(w.visualPage(), kept).toString(), "kept kept kept kept new kept new");
    EXPECT_TRUE(html().contains("<p id=\"a\">first</p><p id=\"n\">new</p><table>"))
        << html().toStdString();
}

// An edited body comes back to the visual page without a reload: the page keeps its address,
// the edit shows, the old body's undo steps never come back, and new edits undo as usual. An
// edited head is loaded afresh.
TEST_F(frmMainTest, EditedSourceReturnsToTheVisualPageInPlace) {
    frmMain& w = start();
    w.tabs()->setCurrentIndex(frmMain::PageSource);
    w.sourcePage()->setText("<!DOCTYPE html><html><head><title>Kept</title></head>"
                            "<body><p id=\"a\">old words</p></body></html>");
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    ASSERT_TRUE(waitFor([&] { return w.visualPage()->isReady(); }));
    ASSERT_EQ(w.visualPage()->page()->title(), "Kept");
    w.visualPage()->selectContents("#a");
    w.Dks_CommandClick("cmdBold");
    ASSERT_TRUE(waitFor([&] { return html().contains("<b>old words</b>"); }));
    const QUrl address = w.visualPage()->page()->url();
    const quint64 loads = w.visualPage()->loadCount();

    w.tabs()->setCurrentIndex(frmMain::PageSource);
    QString source = w.sourcePage()->text();
    ASSERT_TRUE(source.contains("old words</font></b>")) << source.toStdString();
    source.replace(QRegularExpression("<p id=\"a\">.*</p>"),
                   "<p id=\"a\">new words <i id=\"n\">here</i></p>");
    w.sourcePage()->setText(source);
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    ASSERT_TRUE(waitFor([&] { return w.visualPage()->isReady(); }));
    EXPECT_GT(w.visualPage()->loadCount(), loads);
    EXPECT_EQ(w.visualPage()->page()->url(), address) << "the page was reloaded";
    EXPECT_EQ(w.visualPage()->page()->title(), "Kept");
    const QString edited = html();
    EXPECT_TRUE(edited.contains("new words <i id=\"n\">here</i>")) << edited.toStdString();
    EXPECT_FALSE(edited.contains("old words"));
    EXPECT_TRUE(edited.startsWith("<!DOCTYPE html>")) << edited.toStdString();
    // The page file other code reads holds the new body too.
    QFile file(address.toLocalFile());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(QString::fromUtf8(file.readAll()).contains("new words"));

    w.Dks_CommandClick("cmdUndo");
    QTest::qWait(300);
    EXPECT_EQ(html(), edited) << "an undo step of the old body came back";
    w.visualPage()->selectContents("#n");
    w.Dks_CommandClick("cmdUnderline");
    ASSERT_TRUE(waitFor([&] { return html().contains("<u>here</u>"); })) << html().toStdString();
    w.Dks_CommandClick("cmdUndo");
    EXPECT_TRUE(waitFor([&] { return html() == edited; })) << html().toStdString();

    w.tabs()->setCurrentIndex(frmMain::PageSource);
    source = w.sourcePage()->text();
    source.replace("<title>Kept</title>", "<title>Changed</title>");
    w.sourcePage()->setText(source);
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    ASSERT_TRUE(waitFor([&] { return w.visualPage()->isReady(); }));
    EXPECT_NE(w.visualPage()->page()->url(), address);
    EXPECT_EQ(w.visualPage()->page()->title(), "Changed");
    EXPECT_TRUE(html().contains("new words"));
    saveShot(w, "frmMain-edited-source-in-place");
}

TEST_F(frmMainTest, TypingMarksTheTitleOnceAndEditCommandsFollowTheirRule) {
    frmMain& w = start();
    setBody("<html><body><p id=\"p\">text</p></body></html>");
    for (const char* id : {"cmdCopia", "cmdSelezionaTutto"}) {
        w.Dks_CommandClick(id);
        EXPECT_FALSE(w.DaSalvare()) << id;
    }
    w.activateWindow();
    w.visualPage()->setFocus();
    w.visualPage()->placeCaret("#p", 4);
    ASSERT_TRUE(waitFor([&] { return w.visualPage()->state().lastTag == "<P>"; }));
    // The engine drops input that arrives before the reloaded page's first frame: repeat the
    // first key until the page reports it.
    for (int i = 0; i < 10 && !w.DaSalvare(); ++i) {
        QTest::keyClick(w.visualPage()->focusProxy(), Qt::Key_A);
        waitFor([&] { return w.DaSalvare(); }, 1000);
    }
    ASSERT_TRUE(w.DaSalvare());
    QTest::keyClicks(w.visualPage()->focusProxy(), "bc");
    EXPECT_EQ(w.windowTitle(), "Quillora - [NuovoFile.mssx*]");
    EXPECT_EQ(w.windowTitle().count('*'), 1);
    EXPECT_TRUE(waitFor([&] { return html().contains(QRegularExpression("texta+bc")); }))
        << html().toStdString();

    for (const char* id : {"cmdUndo", "cmdRedo", "cmdTaglia", "cmdIncolla"}) {
        newMessage();
        ASSERT_FALSE(w.DaSalvare());
        w.Dks_CommandClick(id);
        EXPECT_TRUE(w.DaSalvare()) << id;
    }
    // On the preview the edit commands do nothing at all.
    newMessage();
    w.tabs()->setCurrentIndex(frmMain::PagePreview);
    w.Dks_CommandClick("cmdIncolla");
    EXPECT_FALSE(w.DaSalvare());
}

TEST_F(frmMainTest, DoubleClickOnAnImageOffersToEditItsFile) {
    frmMain& w = start();
    session().pathElaboration = dir.path() + "/message/";
    setBody("<html><body><p id=\"w\"><img src=\"images/pic.jpg\"></p><p id=\"t\">x</p>"
            "</body></html>");
    w.visualPage()->selectContents("#w");
    ASSERT_TRUE(waitFor([&] { return w.visualPage()->state().lastTag == "<IMG>"; }));
    answer = kIdYes;
    emit w.visualPage()->imageDoubleClicked();
    EXPECT_EQ(lastRequest.key, "Modifica immagine");
    EXPECT_EQ(scripted().opened, QStringList({dir.path() + "/message/images/pic.jpg"}));

    // Not on an image: nothing is asked.
    questions = 0;
    w.visualPage()->placeCaret("#t", 0);
    ASSERT_TRUE(waitFor([&] { return w.visualPage()->state().lastTag == "<P>"; }));
    emit w.visualPage()->imageDoubleClicked();
    EXPECT_EQ(questions, 0);
}

// Every load of the visual page sets the font of what is typed at its insertion point, and
// changes nothing else: the message is not marked changed by it.
TEST_F(frmMainTest, TextTypedIntoALoadedPageIsVerdanaSizeTwo) {
    frmMain& w = start();
    setBody("<html><body><p>Hello</p></body></html>");
    const QString before = html();
    ASSERT_TRUE(waitFor([&] { return w.visualPage()->state().fontName.contains("Verdana"); }));
    EXPECT_EQ(html(), before);
    EXPECT_FALSE(w.DaSalvare());
    w.activateWindow();
    w.visualPage()->setFocus();
    // The engine drops input that arrives before the page's first frame: repeat the key until
    // the page reports it.
    for (int i = 0; i < 10 && !w.DaSalvare(); ++i) {
        QTest::keyClick(w.visualPage()->focusProxy(), Qt::Key_X);
        waitFor([&] { return w.DaSalvare(); }, 1000);
    }
    EXPECT_TRUE(waitFor([&] {
        return html().contains(QRegularExpression("<font face=\"Verdana\" size=\"2\">x+</font>"));
    })) << html().toStdString();
}

// Printing goes to the printer the user sets up, and prints the page as it stands.
TEST_F(frmMainTest, PrintWritesThePageToTheChosenPrinter) {
    frmMain& w = start();
    setBody("<html><body><p>Spring offers</p></body></html>");
    scripted().printToPdf = dir.filePath("printed.pdf");
    QSignalSpy finished(w.visualPage(), &QWebEngineView::printFinished);
    w.Dks_CommandClick("cmdStampa");
    ASSERT_TRUE(finished.wait(30000));
    EXPECT_TRUE(finished.at(0).at(0).toBool());
    QFile pdf(scripted().printToPdf);
    ASSERT_TRUE(pdf.open(QIODevice::ReadOnly));
    EXPECT_TRUE(pdf.read(5) == "%PDF-");
    EXPECT_FALSE(w.DaSalvare());

    // Cancelled: nothing is printed.
    scripted().printToPdf.clear();
    w.Dks_CommandClick("cmdStampa");
    EXPECT_FALSE(finished.wait(1000));
}

TEST_F(frmMainTest, HelpOpensTheLanguageGuideOrSaysThereIsNone) {
    frmMain& w = start();
    session().links = Links::parse({"site.English: https://en.example/"});
    session().currentLanguage = "English";
    w.Dks_CommandClick("cmdHelp");
    EXPECT_EQ(scripted().opened, QStringList{"https://en.example/video-tutorial.asp"});
    EXPECT_TRUE(scripted().boxes.isEmpty());

    session().currentLanguage = "Italiano"; // no site for it in the links file
    w.Dks_CommandClick("cmdHelp");
    EXPECT_EQ(scripted().opened.size(), 1);
    ASSERT_EQ(scripted().boxes.size(), 1);
    EXPECT_EQ(scripted().boxes[0].instruction, w.texts().get("GuidaNonDisponibile"));
    EXPECT_FALSE(w.texts().get("GuidaNonDisponibile").isEmpty());
}

TEST_F(frmMainTest, PriorityTogglesExcludeEachOther) {
    frmMain& w = start();
    w.bars().action("cmdPriBassa")->trigger();
    w.bars().action("cmdPriAlta")->trigger();
    EXPECT_TRUE(w.bars().action("cmdPriAlta")->isChecked());
    EXPECT_FALSE(w.bars().action("cmdPriBassa")->isChecked());
    EXPECT_EQ(w.document().priorityCode(), "HI");
    EXPECT_TRUE(w.DaSalvare());
}

TEST_F(frmMainTest, UnknownCommandDoesNothing) {
    frmMain& w = start();
    w.Dks_CommandClick("cmdNothingLikeThis");
    EXPECT_TRUE(lastRequest.content.isEmpty());
}

TEST_F(frmMainTest, SaveAndReopenKeepBodyImageAndAttachments) {
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    frmMain& w = start();
    QDir().mkpath(dir.filePath("news/img"));
    QFile::copy(kCorpus + "colorlib-legacy-12/images/prod-1.jpg",
                dir.filePath("news/img/prod.jpg"));
    setBody("<html><body><p>Offer</p><img src=\"" + dir.filePath("news/img/prod.jpg") +
            "\"></body></html>");
    chosenFile = writeFile("price list.pdf", 1028);
    w.attachments()->Dks_CommandClick("cmdAllegatiNew");
    EXPECT_TRUE(w.DaSalvare());
    auto* grid = w.attachments()->findChild<QTreeWidget*>();
    ASSERT_TRUE(grid);
    ASSERT_EQ(grid->topLevelItemCount(), 1);
    EXPECT_EQ(grid->topLevelItem(0)->text(1), "1.00 Kb");
    chosenFile = writeFile("terms.txt", 10);
    w.attachments()->Dks_CommandClick("cmdAllegatiNew");
    w.bars().subject->setText("Spring");

    chosenFile = dir.filePath("news/spring.mssx");
    w.Dks_CommandClick("cmdSalvaAs");
    EXPECT_FALSE(w.DaSalvare());
    EXPECT_EQ(w.windowTitle(), "Quillora - [spring.mssx]");
    ASSERT_TRUE(QFileInfo::exists(chosenFile));
    EXPECT_TRUE(log().filter("RiSalva():").isEmpty());
    w.Dks_CommandClick("cmdSalva");
    EXPECT_TRUE(log().contains("RiSalva(): " + chosenFile));

    w.NuovoMessaggio();
    ASSERT_TRUE(w.ApriMessaggio(chosenFile));
    QSignalSpy loaded(&w, &frmMain::documentLoaded);
    ASSERT_TRUE(loaded.wait(20000));
    const QString restore = w.document().restoreFolder;
    EXPECT_TRUE(html().contains("<p>Offer</p>"));
    EXPECT_TRUE(html().contains(restore + "prod.jpg"));
    EXPECT_TRUE(QFileInfo::exists(restore + "prod.jpg"));
    EXPECT_EQ(w.attachments()->paths(),
              QStringList({restore + "price list.pdf", restore + "terms.txt"}));
    EXPECT_EQ(w.bars().subject->text(), "Spring");

    grid->setCurrentItem(grid->topLevelItem(1));
    w.attachments()->Dks_CommandClick("cmdAllegatiDel");
    grid->setCurrentItem(grid->topLevelItem(0));
    w.attachments()->Dks_CommandClick("cmdAllegatiDel");
    EXPECT_FALSE(w.attachments()->findChild<QAction*>("cmdAllegatiDel")->isEnabled());
    QLocale::setDefault(QLocale::system());
}

// A working folder the visual page cannot write to (a full disk, a read-only folder): the body
// goes to the source page, the failure is reported, and nothing typed afterwards is lost.
TEST_F(frmMainTest, ABodyThePageCannotTakeIsNeverLost) {
    frmMain& w = start();
    const QString pageFile = w.visualPage()->documentUrl().toLocalFile();
    const QString folder = QFileInfo(pageFile).absolutePath();
    ASSERT_TRUE(QFileInfo(pageFile).isFile());
    // Read-only stops a normal user; root writes anyway, so the page's file also becomes a
    // folder, which nobody can write as a file.
    ASSERT_TRUE(QFile::remove(pageFile));
    ASSERT_TRUE(QDir().mkdir(pageFile));
    ASSERT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    struct Restore {
        QString folder;
        ~Restore() {
            QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
    } restore{folder};

    QSignalSpy loaded(&w, &frmMain::documentLoaded);
    w.Dks_CommandClick("cmdNewMess");
    ASSERT_TRUE(loaded.count() > 0 || loaded.wait(20000));
    ASSERT_EQ(scripted().errorReports.size(), 1);
    EXPECT_TRUE(scripted().errorReports[0].text.contains("Routine: frmMain.NuovoMessaggio()"));
    EXPECT_TRUE(w.DaSalvare()) << "a body the page did not take counts as changed";
    EXPECT_EQ(w.tabs()->currentIndex(), int(frmMain::PageSource));

    // Typed on the source page, where the body now is; the visual page still refuses it.
    w.sourcePage()->setFocus();
    w.sourcePage()->SendScintilla(QsciScintilla::SCI_DOCUMENTEND);
    QTest::keyClicks(w.sourcePage()->viewport(), "lost-and-found");
    EXPECT_TRUE(w.sourcePage()->text().contains("lost-and-found"));
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    EXPECT_EQ(w.tabs()->currentIndex(), int(frmMain::PageSource));
    ASSERT_EQ(scripted().errorReports.size(), 2);
    EXPECT_TRUE(scripted().errorReports[1].text.contains("Routine: frmMain.Tbs_SelectedChanged()"));

    answer = kIdYes;
    chosenFile = dir.filePath("kept.mssx");
    w.close();
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(lastRequest.key, "id_cmdSalvaMess");
    const auto saved = MessageFile::read(chosenFile);
    ASSERT_TRUE(saved.ok()) << saved.error.toStdString();
    EXPECT_TRUE(saved.content.body.contains("lost-and-found"));
}

// A command that fails is reported under the dispatcher's name and the next one runs.
TEST_F(frmMainTest, AFailingCommandIsReportedAndTheNextOneRuns) {
    frmMain& w = start();
    delete w.bars().action("cmdPriBassa");
    w.Dks_CommandClick("cmdPriAlta");
    ASSERT_EQ(scripted().errorReports.size(), 1);
    const ScriptedDialogs::ErrorReport& r = scripted().errorReports[0];
    EXPECT_EQ(r.title, "Attention, application error");
    EXPECT_TRUE(r.text.startsWith("App: Quillora\r\n\r\nRoutine: frmMain.Dks_CommandClick()"))
        << r.text.toStdString();
    EXPECT_TRUE(r.text.contains("cmdPriBassa"));
    w.CheckToolbarStatus(); // tolerates the missing command
    w.Dks_CommandClick("cmdStatusTbMain");
    EXPECT_TRUE(w.bars().toolbar("TbMain")->isHidden());
    EXPECT_EQ(scripted().errorReports.size(), 1);
}

TEST_F(frmMainTest, ClosingAsksOnlyWithChangesAndRemovesTheWorkingFolder) {
    MessageDocument d;
    d.body = "<html><body><p>x</p></body></html>";
    const QString path = dir.filePath("c.mssx");
    ASSERT_TRUE(MessageFile::SalvaMessaggio(d, path).ok());
    {
        frmMain& w = start(path);
        const QString restore = w.document().restoreFolder;
        ASSERT_TRUE(QFileInfo(restore).isDir());
        w.close();
        EXPECT_EQ(questions, 0);
        EXPECT_FALSE(QFileInfo::exists(restore));
        EXPECT_TRUE(log().last().startsWith("Fine applicazione...: "));
    }
    {
        frmMain& w = start(path);
        const QString restore = w.document().restoreFolder;
        w.bars().action("cmdPriAlta")->trigger();
        answer = kIdNo;
        w.close();
        EXPECT_EQ(questions, 1);
        EXPECT_EQ(lastRequest.key, "id_cmdSalvaMess");
        EXPECT_FALSE(QFileInfo::exists(restore));
        EXPECT_EQ(MessageFile::read(path).content.priority, "NR") << "No saves nothing";
    }
    {
        frmMain& w = start(path);
        w.bars().action("cmdPriAlta")->trigger();
        answer = kIdYes;
        w.close();
        EXPECT_EQ(questions, 2);
        EXPECT_EQ(MessageFile::read(path).content.priority, "HI") << "Yes saves to the file";
    }
}

TEST_F(frmMainTest, MaximisedCloseThenRestartOpensMaximisedOverTheNormalPlacement) {
    {
        frmMain& w = start();
        w.showNormal();
        w.setGeometry(100, 80, 900, 640);
        QApplication::processEvents();
        w.showMaximized();
        QApplication::processEvents();
        w.close();
    }
    QStringList lines;
    TextFile::readLines(session().folders.placementFile(), lines);
    ASSERT_EQ(lines.size(), 6);
    EXPECT_EQ(lines[5], "mnWindowState.: 2");
    EXPECT_EQ(lines[3], "mnWidth.......: 13500"); // 900 px at 96 dpi
    session().placement = {};
    frmMain& again = start();
    EXPECT_TRUE(again.isMaximized());
    EXPECT_EQ(session().placement.width, 13500);
}

TEST_F(frmMainTest, MessageScriptsNeverRun) {
    MessageDocument d;
    d.body = "<html><body><p id=\"p\">static</p><script>document.getElementById('p')"
             ".textContent = 'script ran';</script></body></html>";
    const QString path = dir.filePath("s.mssx");
    ASSERT_TRUE(MessageFile::SalvaMessaggio(d, path).ok());
    frmMain& w = start(path);
    EXPECT_TRUE(html().contains("<p id=\"p\">static</p>")) << html().toStdString();
    w.tabs()->setCurrentIndex(frmMain::PagePreview);
    QSignalSpy preview(w.previewPage(), &VisualSurface::documentComplete);
    ASSERT_TRUE(preview.count() > 0 || preview.wait(20000));
    const auto shown = w.previewPage()->documentHTML();
    ASSERT_TRUE(shown.has_value());
    EXPECT_TRUE(shown->contains("<p id=\"p\">static</p>")) << shown->toStdString();
}

TEST_F(frmMainTest, ARealNewsletterShowsEveryPictureOnEveryPage) {
    const QString path = saveCorpusMessage("colorlib-16", "Colorlib 16", "colorlib.mssx");
    ASSERT_FALSE(HasFailure());
    // Sized before it is shown, so the page is laid out once, at the size of the pictures taken.
    windowSize = QSize(1280, 860);
    frmMain& w = start(path);
    EXPECT_EQ(w.previewPane()->findChild<VisualSurface*>(), nullptr)
        << "the preview's page is made when the preview is first shown";
    EXPECT_EQ(w.previewPane()->findChild<QToolBar*>(), nullptr) << "and so is its bar";
    // Every picture of the newsletter (six; its seventh file is a background) comes from the
    // restored copies, in both pages.
    EXPECT_EQ(loadedPictures(w.visualPage()), 6);
    saveShot(w, "main-visual.png");
    w.tabs()->setCurrentIndex(frmMain::PageSource);
    EXPECT_TRUE(w.sourcePage()->isVisible());
    // The background named in CSS and VML points at its restored copy too.
    EXPECT_FALSE(w.sourcePage()->text().contains("images/bg_1.jpg"));
    EXPECT_TRUE(w.sourcePage()->text().contains("/bg_1.jpg"));
    saveShot(w, "main-source.png");
    QSignalSpy preview(w.previewPage(), &VisualSurface::documentComplete);
    w.tabs()->setCurrentIndex(frmMain::PagePreview);
    ASSERT_TRUE(preview.count() > 0 || preview.wait(20000));
    EXPECT_EQ(loadedPictures(w.previewPage()), 6);
    saveShot(w, "main-preview.png");
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
}

} // namespace
