#include "gui/app/ColorStyle.h"
#include "core/app/bFunctions.h"
#include "gui/editor/CommandBars.h"
#include "gui/editor/PreviewPane.h"
#include "gui/editor/SourceView.h"
#include "gui/editor/frmColor.h"
#include "gui/message/frmAllegati.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSplitter>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QToolBar>
#include <QToolButton>
#include <QToolTip>
#include <QTreeWidget>
#include <Qsci/qscilexer.h>

#include "gui/MainWindowFixture.h"

static void PrintTo(const QColor& c, std::ostream* os) {
    *os << c.name().toStdString();
}
static void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

using namespace quillora;
using namespace quillora::gui;
using bColorStyle::Colour;

namespace {

constexpr int kWaitMs = 20000;

// Every colour different, so that a colour in the wrong place shows.
ColorScheme distinctScheme(int seed = 0) {
    ColorScheme s;
    int i = 0;
    for (Colour c : bColorStyle::AllColours()) {
        const int k = i++ + seed;
        s.set(c,
              ((k * 13 + 5) & 0xFF) | ((k * 29 + 70) & 0xFF) << 8 | ((k * 41 + 11) & 0xFF) << 16);
    }
    return s;
}

ColorScheme shippedScheme(const QString& name) {
    QStringList lines;
    TextFile::readLines(QStringLiteral(QUILLORA_SOURCE_DIR "/data/defaults/colorSchema3.dll"),
                        lines);
    ColorScheme s;
    bColorStyle::ApplySchemeSection(lines, name, s);
    return s;
}

QColor role(const QWidget* w, QPalette::ColorRole r) {
    return w->palette().color(QPalette::Active, r);
}

// The colour actually painted at a point of a widget.
QColor pixel(QWidget* w, QPoint at) {
    return w->grab().toImage().pixelColor(at * w->devicePixelRatioF());
}

class ColorStyleTest : public testing::Test {
protected:
    void TearDown() override { clearProgramColorStyle(); }
};

// ---- The rules on our widget classes -----------------------------------------------------------

TEST_F(ColorStyleTest, ControlsTakeTheColoursOfTheirType) {
    const ColorScheme s = distinctScheme();
    auto c = [&s](Colour colour) { return schemeColour(s, colour); };
    QMainWindow window;
    window.setObjectName("frmProva");
    auto* centre = new QWidget(&window);
    window.setCentralWidget(centre);
    auto* heading = new QLabel("Subject", centre);
    heading->setObjectName("lblOggetto");
    auto* ordinary = new QLabel("Tags", centre);
    ordinary->setObjectName("lblTags");
    auto* counter = new QLabel("12", centre);
    counter->setObjectName("lblCredito");
    QPalette designed = counter->palette();
    designed.setColor(QPalette::WindowText, Qt::red);
    counter->setPalette(designed);
    auto* button = new QPushButton("OK", centre);
    auto* edit = new QLineEdit(centre);
    auto* combo = new QComboBox(centre);
    auto* check = new QCheckBox("Check", centre);
    auto* tree = new QTreeWidget(centre);
    auto* table = new QTableWidget(2, 2, centre);
    auto* list = new QListWidget(centre);
    auto* group = new QGroupBox("Group", centre);
    auto* picture = new QWidget(centre);
    picture->setObjectName("picBar");
    auto* plain = new QWidget(centre);
    plain->setObjectName("centreArea");
    auto* progress = new QProgressBar(centre);
    auto* bar = window.addToolBar("Bar");
    auto* tool = new QToolButton(bar);
    bar->addWidget(tool);
    auto* menu = new QMenu(&window);
    auto* dock = new QDockWidget("Pane", &window);
    window.addDockWidget(Qt::RightDockWidgetArea, dock);
    window.statusBar();

    colourWindow(&window, s);

    EXPECT_EQ(role(&window, QPalette::Window), c(Colour::CLR_BARSMENU_BACK));
    EXPECT_EQ(role(&window, QPalette::WindowText), c(Colour::CLR_MENU_COMMAND));
    EXPECT_EQ(role(heading, QPalette::WindowText), c(Colour::CLR_MENU_COMMAND));
    EXPECT_EQ(role(ordinary, QPalette::WindowText), c(Colour::CLR_TESTO_FINESTRA));
    EXPECT_EQ(role(counter, QPalette::WindowText), QColor(Qt::red));
    EXPECT_EQ(role(button, QPalette::Button), c(Colour::CLR_BUTTON_BACKCOLOR));
    EXPECT_EQ(role(button, QPalette::ButtonText), c(Colour::CLR_BUTTON_FORECOLOR));
    EXPECT_EQ(role(tool, QPalette::Button), c(Colour::CLR_BUTTON_BACKCOLOR));
    EXPECT_EQ(role(edit, QPalette::Base), c(Colour::CLR_SFONDO_FINESTRA));
    EXPECT_EQ(role(edit, QPalette::Text), c(Colour::CLR_TESTO_FINESTRA));
    EXPECT_EQ(role(combo, QPalette::Button), c(Colour::CLR_SFONDO_FINESTRA));
    EXPECT_EQ(role(combo, QPalette::ButtonText), c(Colour::CLR_TESTO_FINESTRA));
    EXPECT_EQ(role(check, QPalette::WindowText), c(Colour::CLR_MENU_COMMAND));
    for (QWidget* grid : std::initializer_list<QWidget*>{tree, table}) {
        EXPECT_EQ(role(grid, QPalette::Base), c(Colour::CLR_GRID_BACKCOLOR));
        EXPECT_EQ(role(grid, QPalette::Text), c(Colour::CLR_GRID_FORECOLOR));
    }
    EXPECT_EQ(role(tree, QPalette::Highlight), c(Colour::CLR_HIGHLIGHT_BORDER));
    EXPECT_EQ(role(tree, QPalette::HighlightedText), c(Colour::CLR_HIGHLIGHT_TEXT));
    EXPECT_EQ(role(list, QPalette::Base), c(Colour::CLR_SFONDO_FINESTRA));
    EXPECT_EQ(role(list, QPalette::Highlight), c(Colour::CLR_HIGHLIGHT_BORDER));
    EXPECT_EQ(role(group, QPalette::Window), c(Colour::CLR_BARSMENU_BACK));
    EXPECT_EQ(role(picture, QPalette::Window), c(Colour::CLR_BARSMENU));
    EXPECT_TRUE(picture->autoFillBackground());
    EXPECT_FALSE(plain->testAttribute(Qt::WA_SetPalette)); // a plain container just inherits
    EXPECT_EQ(role(progress, QPalette::Highlight), c(Colour::CLR_RQD_BACKCOLOR));
    EXPECT_EQ(role(progress, QPalette::Text), c(Colour::CLR_RQD_FORECOLOR));
    // Docking and command bars.
    EXPECT_EQ(role(bar, QPalette::Window), c(Colour::CLR_BARSMENU));
    EXPECT_EQ(role(bar, QPalette::WindowText), c(Colour::CLR_MENU_COMMAND));
    EXPECT_EQ(role(window.statusBar(), QPalette::Window), c(Colour::CLR_BARSMENU));
    EXPECT_EQ(role(menu, QPalette::Window), c(Colour::CLR_SFONDO_FINESTRA));
    EXPECT_EQ(role(menu, QPalette::Highlight), c(Colour::CLR_HIGHLIGHT_BORDER));
    EXPECT_EQ(role(dock, QPalette::Window), c(Colour::CLR_BARSMENU_BACK));
    EXPECT_EQ(role(dock, QPalette::WindowText), c(Colour::CLR_MENU_COMMAND));
}

TEST_F(ColorStyleTest, ColouringAgainReplacesTheSchemeInsteadOfPilingUp) {
    QMainWindow window;
    window.setStyleSheet("QLabel#lblNote { color: #123456; }");
    auto* note = new QLabel("note", &window);
    note->setObjectName("lblNote");
    auto* splitter = new QSplitter(&window);
    window.setCentralWidget(splitter);
    splitter->addWidget(note);
    auto* tree = new QTreeWidget(splitter);

    colourWindow(&window, distinctScheme(0));
    const QString once = window.styleSheet();
    const QString splitterOnce = splitter->styleSheet();
    colourWindow(&window, distinctScheme(3));
    colourWindow(&window, distinctScheme(0));
    EXPECT_EQ(window.styleSheet(), once);
    EXPECT_EQ(splitter->styleSheet(), splitterOnce);
    EXPECT_TRUE(window.styleSheet().startsWith("QLabel#lblNote { color: #123456; }"));
    EXPECT_EQ(role(tree, QPalette::Base),
              schemeColour(distinctScheme(0), Colour::CLR_GRID_BACKCOLOR));

    // The designer changes the sheet afterwards: that becomes the design the scheme goes after.
    window.setStyleSheet("QLabel#lblNote { color: #654321; }");
    colourWindow(&window, distinctScheme(0));
    EXPECT_TRUE(window.styleSheet().startsWith("QLabel#lblNote { color: #654321; }"));
    EXPECT_EQ(window.styleSheet().count("QMainWindow::separator"), 1);
    window.show();
    note->ensurePolished();
    EXPECT_EQ(role(note, QPalette::WindowText),
              schemeColour(distinctScheme(0), Colour::CLR_TESTO_FINESTRA));
    EXPECT_EQ(pixel(splitter, splitter->handle(1)->geometry().center()),
              schemeColour(distinctScheme(0), Colour::CLR_WORKSPACE));
}

// ---- The main window --------------------------------------------------------------------------

class MainWindowScheme : public MainWindowTest, public testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        windowSize = QSize(1100, 720);
        ASSERT_TRUE(TextFile::writeLines(session().folders.pathFileImp + "colorSchema2.dll",
                                         {"[Schema]", QString::fromLatin1(GetParam())}));
    }
    void TearDown() override {
        window.reset();
        clearProgramColorStyle();
        MainWindowTest::TearDown();
    }
    // What the window's colour phase does.
    void beforeShow(frmMain& w) override {
        colourWindow(&w, *programColorScheme());
        SetStyleColor(w.tabs());
    }
};

TEST_P(MainWindowScheme, EveryPartOfTheWindowTakesTheScheme) {
    const QString name = QString::fromLatin1(GetParam());
    ASSERT_EQ(gui::LeggiColorStyle(session().folders), name);
    const ColorScheme s = shippedScheme(name);
    ASSERT_EQ(*programColorScheme(), s);
    auto c = [&s](Colour colour) { return schemeColour(s, colour); };
    // The window is built under the scheme already in use: loading it sets no style again,
    // which would polish every control anew.
    const QStyle* style = QApplication::style();
    frmMain& w = start();
    EXPECT_EQ(QApplication::style(), style);

    EXPECT_EQ(role(&w, QPalette::Window), c(Colour::CLR_BARSMENU_BACK));
    EXPECT_EQ(role(&w, QPalette::WindowText), c(Colour::CLR_MENU_COMMAND));
    QToolBar* tb = w.bars().toolbar("TbMain");
    EXPECT_EQ(role(tb, QPalette::Window), c(Colour::CLR_BARSMENU));
    EXPECT_EQ(role(w.statusBar(), QPalette::Window), c(Colour::CLR_BARSMENU));
    EXPECT_EQ(role(w.menuBar(), QPalette::Window), c(Colour::CLR_BARSMENU));
    // A menu takes the scheme when it opens.
    QMenu* file = w.bars().menu("mnuFile");
    file->popup(w.mapToGlobal(QPoint(10, 10)));
    EXPECT_EQ(role(file, QPalette::Window), c(Colour::CLR_SFONDO_FINESTRA));
    EXPECT_EQ(role(file, QPalette::Text), c(Colour::CLR_MENU_COMMAND));
    file->hide();

    auto* subject = w.findChild<QLabel*>("lblOggetto");
    ASSERT_TRUE(subject);
    EXPECT_EQ(role(subject, QPalette::WindowText), c(Colour::CLR_MENU_COMMAND));
    EXPECT_EQ(role(w.bars().subject, QPalette::Base), c(Colour::CLR_SFONDO_FINESTRA));
    EXPECT_EQ(role(w.bars().fontName, QPalette::ButtonText), c(Colour::CLR_TESTO_FINESTRA));
    auto* tableButton = w.findChild<QToolButton*>("popTableButton");
    ASSERT_TRUE(tableButton);
    EXPECT_EQ(role(tableButton, QPalette::Button), c(Colour::CLR_BUTTON_BACKCOLOR));
    EXPECT_EQ(role(tableButton, QPalette::ButtonText), c(Colour::CLR_BUTTON_FORECOLOR));

    QTreeWidget* grid = w.attachments()->LIST();
    EXPECT_EQ(role(grid, QPalette::Base), c(Colour::CLR_GRID_BACKCOLOR));
    EXPECT_EQ(role(grid, QPalette::Text), c(Colour::CLR_GRID_FORECOLOR));
    EXPECT_EQ(role(grid, QPalette::Highlight), c(Colour::CLR_HIGHLIGHT_BORDER));

    auto* dock = w.findChild<QDockWidget*>("dckAllegati");
    ASSERT_TRUE(dock);
    EXPECT_EQ(role(dock, QPalette::Window), c(Colour::CLR_BARSMENU_BACK));
    // The title bar is painted in the pane-title colour.
    EXPECT_EQ(pixel(dock, QPoint(dock->width() * 3 / 5, 2)), c(Colour::CLR_MENU_HEAD));
    // The separator beside the panes is the program style's, in the workspace colour, and the
    // window needs no style sheet for it.
    EXPECT_TRUE(w.styleSheet().isEmpty());
    const QRect pane = dock->geometry();
    EXPECT_EQ(pixel(&w, QPoint(pane.left() - 2, pane.center().y())),
              c(bColorStyle::DockColour(bColorStyle::DockPart::Workspace)));

    // The tab strip: the selected tab carries the accent on the edge it shares with the page.
    QTabBar* tabs = w.tabs()->tabBar();
    const QRect selected = tabs->tabRect(tabs->currentIndex());
    const bColorStyle::TabStripColours look = bColorStyle::TabStripFor(name);
    EXPECT_EQ(pixel(tabs, QPoint(selected.center().x(), selected.top())), c(look.accent));
    EXPECT_EQ(pixel(tabs, QPoint(selected.center().x(), selected.bottom() - 2)),
              c(look.selectedBack));
    const QRect other = tabs->tabRect(tabs->currentIndex() + 1);
    EXPECT_EQ(pixel(tabs, QPoint(other.center().x(), other.bottom() - 2)), c(look.strip));
    // The strip runs on past the last tab.
    EXPECT_EQ(pixel(w.tabs(), QPoint(w.tabs()->width() - 4, tabs->geometry().center().y())),
              c(look.strip));

    EXPECT_EQ(QToolTip::palette().color(QPalette::ToolTipBase), c(Colour::CLR_MENU_HEAD));
    EXPECT_EQ(QToolTip::palette().color(QPalette::ToolTipText), c(Colour::CLR_MENU_COMMAND));

    // The source page keeps the colours of its own scheme file.
    EXPECT_EQ(w.sourcePage()->lexer()->defaultPaper(), QColor("#FFFFFF"));
    // The preview's bar, made when the preview is first shown, takes the scheme as the
    // window's own bars did.
    QSignalSpy rendered(w.previewPane(), &PreviewPane::rendered);
    w.tabs()->setCurrentIndex(frmMain::PagePreview);
    ASSERT_TRUE(rendered.count() > 0 || rendered.wait(20000));
    auto* previewBar = w.previewPane()->findChild<QToolBar*>("TbPreview");
    ASSERT_TRUE(previewBar);
    EXPECT_EQ(role(previewBar, QPalette::Window), c(Colour::CLR_BARSMENU));
    auto* darkButton = w.previewPane()->findChild<QToolButton*>("chkDarkMode");
    ASSERT_TRUE(darkButton);
    EXPECT_EQ(role(darkButton, QPalette::ButtonText), role(tableButton, QPalette::ButtonText));
    w.tabs()->setCurrentIndex(frmMain::PageVisual);

    saveShot(w, QStringLiteral("scheme-%1.png").arg(name.toLower()));
}

INSTANTIATE_TEST_SUITE_P(Shipped, MainWindowScheme, testing::Values("Dark", "Light"));

// ---- Windows made later ----------------------------------------------------------------------

TEST_F(ColorStyleTest, WindowsShownLaterTakeTheProgramScheme) {
    const ColorScheme s = shippedScheme("Dark");
    auto c = [&s](Colour colour) { return schemeColour(s, colour); };
    QMenu probe;
    const QColor before = role(&probe, QPalette::Window);
    applyProgramColorStyle(s, "Dark");
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), c(Colour::CLR_BARSMENU_BACK));

    // The message box has a light design of its own; the scheme goes over it.
    frmMessage box;
    namespace mm = quillora::bMessage;
    box.setTexts("Quillora", mm::instructionMarkup("Save the changes to the message?"),
                 mm::contentMarkup("The message has changes that are not saved."),
                 mm::footerMarkup("Files and pictures stay in the message's folder."));
    box.setIcons(mm::kIconQuestion, mm::kIconProgram);
    box.setButtons({kIdYes, kIdNo});
    box.show();
    auto* ok = box.findChild<QPushButton*>("cmdYes");
    auto* content = box.findChild<QLabel*>("lblContent");
    auto* body = box.findChild<QWidget*>("fraBody");
    ASSERT_TRUE(ok && content && body);
    content->ensurePolished();
    EXPECT_EQ(role(&box, QPalette::Window), c(Colour::CLR_BARSMENU_BACK));
    EXPECT_EQ(role(ok, QPalette::Button), c(Colour::CLR_BUTTON_BACKCOLOR));
    EXPECT_EQ(role(content, QPalette::WindowText), c(Colour::CLR_TESTO_FINESTRA));
    EXPECT_EQ(pixel(body, QPoint(2, 2)), c(Colour::CLR_BARSMENU_BACK));
    saveShot(box, "scheme-dark-message.png");

    QMenu later;
    later.addAction("Entry");
    later.popup(QPoint(0, 0));
    EXPECT_EQ(role(&later, QPalette::Window), c(Colour::CLR_SFONDO_FINESTRA));
    later.close();

    clearProgramColorStyle();
    QMenu afterwards;
    afterwards.popup(QPoint(0, 0));
    EXPECT_EQ(role(&afterwards, QPalette::Window), before);
}

// ---- The colour picker -----------------------------------------------------------------------

class ColourPickerTest : public testing::Test {
protected:
    void SetUp() override {
        surface = std::make_unique<VisualSurface>(true);
        surface->resize(600, 400);
        surface->show();
    }
    void load(const QString& body) {
        QSignalSpy done(surface.get(), &VisualSurface::documentComplete);
        ASSERT_TRUE(surface->setDocumentHTML("<!DOCTYPE html>\r\n<html><head></head><body>" + body +
                                                 "</body></html>",
                                             dir.path() + "/"));
        ASSERT_TRUE(done.wait(kWaitMs));
    }
    void selectParagraph() {
        surface->selectContents("#p");
        ASSERT_TRUE(QTest::qWaitFor([&] { return surface->state().hasSelection; }, kWaitMs));
    }
    QString body() {
        static const QRegularExpression re("<body[^>]*>(.*)</body>",
                                           QRegularExpression::DotMatchesEverythingOption);
        return re.match(surface->documentHTML().value_or(QString())).captured(1);
    }
    // The paragraph's text in the given colour, however the engine writes it.
    static QRegularExpression coloured(const QString& hex) {
        const QColor c(hex);
        return QRegularExpression(
            QStringLiteral("(color=\"%1\"|color: ?rgb\\(%2, %3, %4\\))[^>]*>text<")
                .arg(c.name())
                .arg(c.red())
                .arg(c.green())
                .arg(c.blue()),
            QRegularExpression::CaseInsensitiveOption);
    }

    QTemporaryDir dir;
    std::unique_ptr<VisualSurface> surface;
};

TEST_F(ColourPickerTest, APickColoursTheSelectionAndCloses) {
    load("<p id=\"p\">text</p>");
    selectParagraph();
    frmColor picker;
    picker.open(surface.get(), QPoint(20, 20));
    ASSERT_TRUE(picker.isVisible());
    EXPECT_EQ(picker.objectName(), "pwnColor");
    const int cell = int(frmColor::webColours().indexOf(QColor("#3366CC")));
    ASSERT_GE(cell, 0);
    QSignalSpy picked(&picker, &frmColor::colourPicked);
    QTest::mouseClick(picker.grid(), Qt::LeftButton, {}, picker.cellCentre(cell));
    EXPECT_FALSE(picker.isVisible());
    ASSERT_EQ(picked.count(), 1);
    EXPECT_EQ(picker.color(), bFunctions::HTMLtoRGB("#3366CC"));
    EXPECT_TRUE(body().contains(coloured("#3366CC"))) << body().toStdString();
}

TEST_F(ColourPickerTest, OpensOnTheColourOfTheTextAtTheCaret) {
    load("<p id=\"p\" style=\"color: #993366\">text</p><p id=\"q\">plain</p>");
    surface->placeCaret("#p", 0);
    frmColor picker;
    picker.setColor(0);
    picker.open(surface.get(), QPoint(20, 20));
    ASSERT_TRUE(QTest::qWaitFor([&] { return picker.color() == bFunctions::HTMLtoRGB("#993366"); },
                                kWaitMs));
    EXPECT_EQ(picker.currentIndex(), frmColor::webColours().indexOf(QColor("#993366")));
    EXPECT_EQ(picker.findChild<QLabel*>("lblColore")->text(), "#993366");
    // Escape closes the picker and leaves the document alone.
    QTest::keyClick(picker.grid(), Qt::Key_Escape);
    EXPECT_FALSE(picker.isVisible());
    EXPECT_FALSE(body().contains("<font"));

    // Text of no explicit colour: the colour the page reports for it.
    surface->placeCaret("#q", 0);
    picker.open(surface.get(), QPoint(20, 20));
    ASSERT_TRUE(QTest::qWaitFor([&] { return picker.color() == 0; }, kWaitMs));
    picker.close();
}

TEST_F(ColourPickerTest, MoreColoursAppliesTheChosenColourAndCancelChangesNothing) {
    load("<p id=\"p\">text</p>");
    selectParagraph();
    frmColor picker;
    std::optional<QColor> answer;
    QColor offered;
    scripted().onColor = [&](const QColor& initial) {
        offered = initial;
        return answer;
    };
    auto* more = picker.findChild<QPushButton*>("cmdAltriColori");
    ASSERT_TRUE(more);

    picker.open(surface.get(), QPoint(20, 20));
    more->click();
    EXPECT_EQ(offered, QColor(Qt::black)); // the dialog starts from the caret's colour
    EXPECT_FALSE(picker.isVisible());
    EXPECT_FALSE(body().contains(coloured("#12AB34")));

    answer = QColor("#12AB34");
    picker.open(surface.get(), QPoint(20, 20));
    more->click();
    EXPECT_EQ(picker.color(), bFunctions::HTMLtoRGB("#12AB34"));
    EXPECT_TRUE(body().contains(coloured("#12AB34"))) << body().toStdString();
}

} // namespace
