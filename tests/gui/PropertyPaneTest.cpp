#include "gui/editor/frmAttributi.h"
#include "gui/message/frmPropBody.h"
#include "gui/message/frmSelAudio.h"

#include <QAction>
#include <QCheckBox>
#include <QColor>
#include <QComboBox>
#include <QDataStream>
#include <QDockWidget>
#include <QFileInfo>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QToolButton>
#include <QTreeWidget>

#include "gui/MainWindowFixture.h"

using namespace quillora;
using namespace quillora::gui;

namespace {

const QString kImages = QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/html/colorlib-16/images/");

// A short, valid PCM wave file: 8 kHz mono 8-bit, a tenth of a second of a square tone.
QString writeWave(const QString& path) {
    const QByteArray samples = [] {
        QByteArray s;
        for (int i = 0; i < 800; ++i)
            s.append(char((i / 10) % 2 ? 200 : 56));
        return s;
    }();
    QByteArray out;
    QDataStream w(&out, QIODevice::WriteOnly);
    w.setByteOrder(QDataStream::LittleEndian);
    w.writeRawData("RIFF", 4);
    w << quint32(36 + samples.size());
    w.writeRawData("WAVEfmt ", 8);
    w << quint32(16) << quint16(1) << quint16(1) << quint32(8000) << quint32(8000) << quint16(1)
      << quint16(8);
    w.writeRawData("data", 4);
    w << quint32(samples.size());
    w.writeRawData(samples.constData(), int(samples.size()));
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(out);
    return path;
}

// The main window, started before every test; questions are answered with their first button.
class EditorWindowTest : public MainWindowTest {
protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        answer = kFirstButton;
        windowSize = QSize(1200, 800);
        start();
        ASSERT_FALSE(HasFailure());
    }
    QStringList captions() const {
        QStringList out;
        const QTreeWidget* grid = window->properties()->grid();
        if (grid->topLevelItemCount() == 0)
            return out;
        out << grid->topLevelItem(0)->text(0);
        for (int i = 0; i < grid->topLevelItem(0)->childCount(); ++i)
            out << grid->topLevelItem(0)->child(i)->text(0);
        return out;
    }
};

class PropertyPaneTest : public EditorWindowTest {};

TEST_F(PropertyPaneTest, CaretInBoldTextInACellShowsTheBoldRows) {
    auto* dock = window->findChild<QDockWidget*>("dckProperty");
    ASSERT_TRUE(dock);
    EXPECT_TRUE(dock->isVisible());
    setBody("<html><body><table><tr><td id=\"c\">cell <b id=\"b\">bold</b></td></tr></table>"
            "<h1 id=\"h\">Title</h1></body></html>");
    page()->placeCaret("#b", 1);
    ASSERT_TRUE(waitFor([&] { return window->properties()->shownTag() == "B"; }));
    EXPECT_EQ(captions(), QStringList({"B", "ID", "Class", "Color", "Size", "Pointsize", "Title"}));
    EXPECT_EQ(window->properties()->rowValue("id"), "b");

    page()->placeCaret("#c", 0);
    ASSERT_TRUE(waitFor([&] { return window->properties()->shownTag() == "TD"; }));
    EXPECT_EQ(captions().mid(0, 4), QStringList({"TD", "ID", "Class", "BG Image"}));
    saveShot(*window, "property-pane.png");
    saveShot(*dock, "property-pane-dock.png");

    page()->placeCaret("#h", 0);
    ASSERT_TRUE(waitFor([&] { return window->properties()->shownTag().isEmpty(); }));
    EXPECT_TRUE(captions().isEmpty());
}

TEST_F(PropertyPaneTest, ImageWidthIsWrittenAndUndoneInOneStep) {
    QFile::copy(kImages + "bg_1.jpg", dir.filePath("pic.jpg"));
    setBody("<html><body><p>x <img id=\"i\" src=\"pic.jpg\" width=\"300\"> y</p></body></html>");
    page()->selectElement("#i");
    ASSERT_TRUE(waitFor([&] { return window->properties()->shownTag() == "IMG"; }));
    EXPECT_EQ(window->properties()->rowValue("width"), "300");
    auto* width = window->properties()->findChild<QLineEdit*>("PROP_width");
    ASSERT_TRUE(width);
    width->setText("120");
    emit width->editingFinished();
    ASSERT_TRUE(waitFor([&] { return html().contains("width=\"120\""); })) << html().toStdString();
    EXPECT_TRUE(html().contains("<p>x <img id=\"i\" src=\"pic.jpg\" width=\"120\"> y</p>"))
        << html().toStdString();
    EXPECT_TRUE(window->DaSalvare());
    // The image is still the selection: the pane keeps showing it.
    EXPECT_TRUE(waitFor([&] { return page()->state().selectionType == "Control"; }));
    EXPECT_EQ(window->properties()->shownTag(), "IMG");

    window->Dks_CommandClick("cmdUndo");
    ASSERT_TRUE(waitFor([&] { return html().contains("width=\"300\""); })) << html().toStdString();
    EXPECT_FALSE(html().contains("120"));
}

TEST_F(PropertyPaneTest, ColourRowsClassListAndFileButton) {
    QFile::copy(kImages + "bg_2.jpg", dir.filePath("bg.jpg"));
    setBody("<html><head><style>p.note{color:red} .note{color:blue} .wide td{padding:0}"
            "</style></head><body><table id=\"t\"><tr><td id=\"c\">a</td></tr></table>"
            "<p id=\"p\">para</p></body></html>");
    page()->placeCaret("#c", 0);
    ASSERT_TRUE(waitFor([&] { return window->properties()->shownTag() == "TD"; }));

    // A colour typed as red;green;blue goes onto the cell as #rrggbb, and only onto the cell.
    window->properties()->editRow("bgColor", "255;0;128");
    ASSERT_TRUE(waitFor([&] { return html().contains("bgcolor=\"#ff0080\""); }))
        << html().toStdString();
    EXPECT_TRUE(html().contains("<td id=\"c\" bgcolor=\"#ff0080\">a</td>"));
    // The colour button offers the picker, starting from the row's colour.
    QColor offered;
    scripted().onColor = [&offered](const QColor& initial) {
        offered = initial;
        return std::optional<QColor>(QColor(0, 128, 255));
    };
    window->properties()->findChild<QToolButton*>("PROP_bordercolor_colour")->click();
    ASSERT_TRUE(waitFor([&] { return html().contains("bordercolor=\"#0080ff\""); }));
    EXPECT_EQ(window->properties()->rowValue("borderColor"), "0;128;255");

    // A colour that is no colour is refused with a message, and nothing is written.
    const QString before = html();
    window->properties()->editRow("bgColor", "300;0;0");
    EXPECT_EQ(lastRequest.content, "300;0;0");
    EXPECT_FALSE(lastRequest.instruction.isEmpty());
    EXPECT_EQ(html(), before);

    // The "..." button puts the chosen file into the background row.
    chosenFile = dir.filePath("bg.jpg");
    window->properties()->findChild<QToolButton*>("PROP_background_browse")->click();
    ASSERT_FALSE(scripted().fileQuestions.isEmpty());
    EXPECT_EQ(scripted().fileQuestions.last().title, "File");
    EXPECT_EQ(scripted().fileQuestions.last().filter,
              "Image (*.jpg;*.gif;*.png;*.bmp)|*.jpg;*.gif;*.png;*.bmp");
    ASSERT_TRUE(waitFor([&] { return html().contains("background=\"" + chosenFile + "\""); }));
    // "Edit" offers to open that background, not the selection's own picture.
    scripted().onAnswer = [](const MessageRequest& r) {
        return r.buttons.contains(kIdYes) ? kIdYes : r.buttons.value(0);
    };
    window->properties()->findChild<QToolButton*>("PROP_background_edit")->click();
    EXPECT_EQ(scripted().opened, QStringList({chosenFile}));

    // The class list holds the classes of selectors that start with a dot.
    page()->placeCaret("#p", 0);
    ASSERT_TRUE(waitFor([&] { return window->properties()->shownTag() == "P"; }));
    window->GetAllClass();
    auto* classes = window->properties()->findChild<QComboBox*>("PROP_class");
    ASSERT_TRUE(classes);
    ASSERT_TRUE(waitFor([&] { return classes->count() > 1; }));
    QStringList offeredClasses;
    for (int i = 0; i < classes->count(); ++i)
        offeredClasses << classes->itemText(i);
    EXPECT_EQ(offeredClasses, QStringList({"", "note", "wide td"}));
    classes->setEditText("note");
    emit classes->lineEdit()->editingFinished();
    ASSERT_TRUE(waitFor([&] { return html().contains("<p id=\"p\" class=\"note\">para</p>"); }))
        << html().toStdString();
}

TEST_F(PropertyPaneTest, FormFieldRowsWriteTheMarkup) {
    setBody("<html><body><form><p>Name <input id=\"f\" name=\"who\" value=\"x\"></p></form>"
            "</body></html>");
    page()->selectElement("#f");
    ASSERT_TRUE(waitFor([&] { return window->properties()->shownTag() == "INPUT"; }));
    EXPECT_EQ(window->properties()->rowValue("name"), "who");
    auto* disabled = window->properties()->findChild<QCheckBox*>("PROP_disabled");
    ASSERT_TRUE(disabled);
    EXPECT_FALSE(disabled->isChecked());
    disabled->click();
    ASSERT_TRUE(waitFor([&] { return html().contains("disabled=\"\""); })) << html().toStdString();
    window->properties()->editRow("value", "Go");
    window->properties()->editRow("maxLength", "many");
    ASSERT_TRUE(waitFor([&] { return html().contains("maxlength=\"0\""); }))
        << html().toStdString();
    EXPECT_TRUE(html().contains("value=\"Go\"")) << html().toStdString();
    disabled->click();
    ASSERT_TRUE(waitFor([&] { return !html().contains("disabled"); })) << html().toStdString();
}

// Rows written onto blocks and onto the body: each write is one step of the page's undo, which
// gives back the document exactly, and redo puts the write back. The caret stays on the element.
TEST_F(PropertyPaneTest, BlockWritesAreOneUndoStepEach) {
    struct Case {
        QString body, caret, tag, row, value, written;
    };
    const Case cases[] = {
        {"<p>a</p><p id=\"p\">b <b>c</b></p><p>d</p>", "#p", "P", "align", "center",
         "<p id=\"p\" align=\"center\">b <b>c</b></p><p>d</p>"},
        {"<div id=\"d\">e<br>f</div>g", "#d", "DIV", "align", "right",
         "<div id=\"d\" align=\"right\">e<br>f</div>g"},
        {"<ol><li id=\"l\">one</li><li>two</li></ol>", "#l", "LI", "color", "255;0;0",
         "<li id=\"l\" color=\"#ff0000\">one</li><li>two</li>"},
        {"<center id=\"z\">Z</center>", "#z", "CENTER", "title", "mid",
         "<center id=\"z\" title=\"mid\">Z</center>"},
        {"text <i>only</i>", "body", "BODY", "bgColor", "0;128;255",
         "<body bgcolor=\"#0080ff\">text <i>only</i>"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.tag.toStdString());
        setBody("<html><body>" + c.body + "</body></html>");
        page()->placeCaret(c.caret, 0);
        ASSERT_TRUE(waitFor([&] { return window->properties()->shownTag() == c.tag; }));
        const QString before = html();
        window->properties()->editRow(c.row, c.value);
        ASSERT_TRUE(waitFor([&] { return html().contains(c.written); })) << html().toStdString();
        EXPECT_TRUE(waitFor([&] { return page()->state().canUndo; }));
        EXPECT_EQ(window->properties()->shownTag(), c.tag);
        const QString written = html();

        window->Dks_CommandClick("cmdUndo");
        ASSERT_TRUE(waitFor([&] { return html() == before; })) << html().toStdString();
        window->Dks_CommandClick("cmdRedo");
        ASSERT_TRUE(waitFor([&] { return html() == written; })) << html().toStdString();
    }

    // Text typed after the write comes off first, then the write.
    setBody("<html><body><p id=\"p\">para</p></body></html>");
    page()->placeCaret("#p", 0);
    ASSERT_TRUE(waitFor([&] { return window->properties()->shownTag() == "P"; }));
    const QString original = html();
    window->properties()->editRow("align", "center");
    ASSERT_TRUE(waitFor([&] { return html().contains("align=\"center\""); }));
    page()->insertHtml("Typed ");
    ASSERT_TRUE(waitFor([&] { return html().contains("Typed"); })) << html().toStdString();
    window->Dks_CommandClick("cmdUndo");
    ASSERT_TRUE(waitFor([&] { return !html().contains("Typed"); })) << html().toStdString();
    EXPECT_TRUE(html().contains("<p id=\"p\" align=\"center\">para</p>")) << html().toStdString();
    window->Dks_CommandClick("cmdUndo");
    ASSERT_TRUE(waitFor([&] { return html() == original; })) << html().toStdString();

    // The keys in the page do the same.
    window->Dks_CommandClick("cmdRedo");
    ASSERT_TRUE(waitFor([&] { return html().contains("align=\"center\""); }));
    QWidget* keys = page()->focusProxy();
    ASSERT_TRUE(keys);
    keys->setFocus();
    QTest::keyClick(keys, Qt::Key_Z, Qt::ControlModifier);
    ASSERT_TRUE(waitFor([&] { return html() == original; })) << html().toStdString();
    QTest::keyClick(keys, Qt::Key_Y, Qt::ControlModifier);
    ASSERT_TRUE(waitFor([&] { return html().contains("align=\"center\""); }))
        << html().toStdString();
}

class BodyPropertiesTest : public EditorWindowTest {};

TEST_F(BodyPropertiesTest, EmptyMarginsAreWrittenEmptyAndColoursAsHex) {
    setBody("<html><body leftmargin=\"10\" topmargin=\"20\" marginwidth=\"5\" bgcolor=\"navy\">"
            "<p>text</p></body></html>");
    window->Dks_CommandClick("cmdProprieta");
    frmPropBody* d = window->bodyProperties();
    ASSERT_TRUE(waitFor([&] { return d->isVisible(); }));
    auto* left = d->findChild<QLineEdit*>("txtSx");
    EXPECT_EQ(left->text(), "10");
    EXPECT_EQ(d->findChild<QLineEdit*>("txtWd")->text(), "5");
    EXPECT_EQ(d->colour(BodyProperties::Background), 0x800000); // navy, red in the low byte
    EXPECT_EQ(d->colour(BodyProperties::VisitedLink), 0x800080);
    saveShot(*d, "body-properties.png");

    left->clear();
    d->findChild<QLineEdit*>("txtUp")->clear();
    scripted().onColor = [](const QColor&) { return std::optional<QColor>(QColor(255, 128, 0)); };
    d->findChild<QPushButton*>("colTesto")->click();
    QFile::copy(kImages + "bg_1.jpg", dir.filePath("paper.jpg"));
    chosenFile = dir.filePath("paper.jpg");
    d->findChild<QToolButton*>("cmdApriImmagine")->click();
    EXPECT_EQ(scripted().fileQuestions.last().filter, "Web image type|*.gif;*.jpg;*.png|");

    QSignalSpy reloaded(window.get(), &frmMain::documentLoaded);
    d->findChild<QPushButton*>("cdmSalva")->click();
    EXPECT_FALSE(d->isVisible());
    ASSERT_TRUE(reloaded.wait(20000));
    const QString body =
        QRegularExpression("<body[^>]*>").match(html()).captured(0) + QStringLiteral(" ");
    for (const QString attribute : {"leftmargin=\"\"", "topmargin=\"\"", "marginwidth=\"5\"",
                                    "marginheight=\"\"", "bgcolor=\"#000080\"", "text=\"#FF8000\"",
                                    "link=\"#0000FF\"", "alink=\"#0000FF\"", "vlink=\"#800080\""}) {
        EXPECT_TRUE(body.contains(" " + attribute + " ") || body.contains(" " + attribute + ">"))
            << attribute.toStdString() << " in " << body.toStdString();
    }
    EXPECT_TRUE(body.contains("background=\"" + chosenFile + "\"")) << body.toStdString();
    EXPECT_TRUE(window->DaSalvare());
}

class BackgroundSoundTest : public EditorWindowTest {
protected:
    void choose(const QString& file, bool infinite, const QString& count) {
        window->Dks_CommandClick("cmdAudio");
        frmSelAudio* d = window->soundChoice();
        ASSERT_TRUE(d->isVisible());
        chosenFile = file;
        d->findChild<QToolButton*>("cmdsfoglia")->click();
        auto* check = d->findChild<QCheckBox*>("chkInfinito");
        check->setChecked(infinite);
        auto* num = d->findChild<QLineEdit*>("txtNum");
        EXPECT_EQ(num->isEnabled(), !infinite);
        num->setText(count);
        d->findChild<QPushButton*>("cmdOK")->click();
        EXPECT_FALSE(d->isVisible());
    }
};

TEST_F(BackgroundSoundTest, SecondChoiceChangesTheOneSoundAndSaveKeepsItWithTheBackground) {
    QFile::copy(kImages + "bg_1.jpg", dir.filePath("paper.jpg"));
    setBody("<html><body background=\"" + dir.filePath("paper.jpg") +
            "\"><p id=\"p\">hello</p></body></html>");
    page()->placeCaret("#p", 1);
    const QString first = writeWave(dir.filePath("first.wav"));
    const QString second = writeWave(dir.filePath("second.wav"));

    // A window left without a file writes nothing.
    window->Dks_CommandClick("cmdAudio");
    window->soundChoice()->findChild<QPushButton*>("cmdOK")->click();

    const QString silent = html();
    choose(first, false, "three");
    saveShot(*window->soundChoice(), "background-sound.png");
    EXPECT_EQ(scripted().fileQuestions.last().title, "Seleziona file Audio");
    EXPECT_EQ(scripted().fileQuestions.last().filter,
              "File Wave (*.wav)|*.wav|File MP3 (*.mp3)|*.mp3|");
    ASSERT_TRUE(waitFor([&] { return html().contains("<bgsound"); })) << html().toStdString();
    // The sound goes in at the caret, inside its paragraph.
    EXPECT_TRUE(html().contains("<p id=\"p\">hello&nbsp;<bgsound balance=\"0\" src=\"" + first +
                                "\" volume=\"0\" loop=\"0\"></p>"))
        << html().toStdString();

    const QString once = html();
    window->Dks_CommandClick("cmdUndo");
    ASSERT_TRUE(waitFor([&] { return html() == silent; })) << html().toStdString();
    window->Dks_CommandClick("cmdRedo");
    ASSERT_TRUE(waitFor([&] { return html() == once; })) << html().toStdString();
    choose(second, true, "4");
    ASSERT_TRUE(waitFor([&] { return html().contains(second); })) << html().toStdString();
    EXPECT_EQ(html().count("<bgsound"), 1);
    EXPECT_TRUE(html().contains("src=\"" + second + "\" volume=\"0\" loop=\"infinite\">"))
        << html().toStdString();
    // Changing the sound is one step of the page's undo, and redo puts it back.
    const QString twice = html();
    window->Dks_CommandClick("cmdUndo");
    ASSERT_TRUE(waitFor([&] { return html() == once; })) << html().toStdString();
    window->Dks_CommandClick("cmdRedo");
    ASSERT_TRUE(waitFor([&] { return html() == twice; })) << html().toStdString();

    // Saved and opened again: the sound and the background travel inside the message file.
    chosenFile = dir.filePath("sound.mssx");
    window->Dks_CommandClick("cmdSalvaAs");
    ASSERT_TRUE(QFileInfo::exists(chosenFile));
    QFile::remove(second);
    QFile::remove(dir.filePath("paper.jpg"));
    window->NuovoMessaggio();
    QSignalSpy loaded(window.get(), &frmMain::documentLoaded);
    ASSERT_TRUE(window->ApriMessaggio(chosenFile));
    ASSERT_TRUE(loaded.wait(20000));
    const QString restore = window->document().restoreFolder;
    ASSERT_FALSE(restore.isEmpty());
    const QString reopened = html();
    EXPECT_TRUE(reopened.contains("src=\"" + restore + "second.wav\"")) << reopened.toStdString();
    EXPECT_TRUE(reopened.contains("background=\"" + restore + "paper.jpg\""))
        << reopened.toStdString();
    QFile copy(restore + "second.wav");
    ASSERT_TRUE(copy.open(QIODevice::ReadOnly));
    EXPECT_TRUE(copy.readAll().startsWith("RIFF"));
    EXPECT_GT(QFileInfo(restore + "paper.jpg").size(), 60000);
}

class UnsubscribeLinkTest : public EditorWindowTest {
protected:
    qint64 addAccount(const QString& name, const QString& address, bool active = true) {
        return EditorWindowTest::addAccount(name, address, active, "smtp.example.com");
    }
};

TEST_F(UnsubscribeLinkTest, EntriesFollowTheStoreAndInsertTheAccountsLink) {
    ASSERT_TRUE(AccountStore::open(session().folders.accountDatabase()).ok());
    auto* menu = window->findChild<QMenu*>("popSubRem");
    ASSERT_TRUE(menu);
    window->CheckDestRemove();
    ASSERT_EQ(menu->actions().size(), 1);
    EXPECT_FALSE(menu->actions()[0]->isEnabled());
    EXPECT_TRUE(menu->actions()[0]->text().contains("quillora-cli accounts add"));

    addAccount("News", "news@example.com");
    addAccount("Old", "old@example.com", false);
    const qint64 third = addAccount("Shop", "shop&offers@example.com");
    ASSERT_EQ(third, 3);
    window->CheckDestRemove();
    QStringList ids;
    for (QAction* a : menu->actions())
        ids << a->objectName();
    EXPECT_EQ(ids, QStringList({"cmdSubRem_1", "cmdSubRem_3"}));

    setBody("<html><body><p id=\"p\">end</p></body></html>");
    page()->placeCaret("#p", 1);
    menu->findChild<QAction*>("cmdSubRem_3")->trigger();
    ASSERT_TRUE(waitFor([&] { return html().contains("mailto:"); })) << html().toStdString();
    EXPECT_TRUE(html().contains("end<a href=\"mailto:shop&amp;offers@example.com?subject=REMOVE\">"
                                "To unsubscribe click here.</a>"))
        << html().toStdString();
    EXPECT_TRUE(window->DaSalvare());
    EXPECT_TRUE(scripted().errorReports.isEmpty());

    // An account that went away is reported, and nothing is inserted.
    window->Dks_CommandClick("cmdSubRem_9");
    ASSERT_EQ(scripted().errorReports.size(), 1);
    EXPECT_TRUE(scripted().errorReports[0].text.contains("frmMain.GetEmailRemove()"));
    EXPECT_EQ(html().count("mailto:"), 1);
}

TEST_F(UnsubscribeLinkTest, AStoreThatCannotBeReadIsReported) {
    session().accountsError = "Cannot open the accounts database: disk I/O error";
    window->CheckDestRemove();
    ASSERT_EQ(scripted().errorReports.size(), 1);
    EXPECT_TRUE(scripted().errorReports[0].text.contains("Routine: frmMain.CheckDestRemove()"));
    EXPECT_TRUE(scripted().errorReports[0].text.contains("disk I/O error"));
}

} // namespace
