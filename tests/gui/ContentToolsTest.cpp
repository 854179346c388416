// The snippet pane, the template chooser and the social-links window on the real main window.
#include "core/tools/SnippetStore.h"
#include "core/tools/SocialLinks.h"
#include "gui/tools/frmMemory.h"
#include "gui/tools/frmSocial.h"
#include "gui/tools/frmTemplate.h"

#include <QAction>
#include <QComboBox>
#include <QDropEvent>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabWidget>
#include <QToolButton>

#include "gui/MainWindowFixture.h"

using namespace quillora;
using namespace quillora::gui;

namespace {

class ContentToolsTest : public MainWindowTest {
protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        windowSize = QSize(1100, 720);
        // The program folder's language file, for the texts the windows build their labels from.
        QFile::copy(QUILLORA_SOURCE_DIR "/data/LANG_Quillora.lng",
                    session().folders.appPath + "LANG_Quillora.lng");
    }
    // The pictures a first start of the built program lays down: the icon set and templates.
    void provisionBuiltDefaults() {
        const auto r = Provisioning::ensureDataFolders(
            session().folders, QStringLiteral(QUILLORA_BINARY_DIR "/data/defaults"), "en_US");
        ASSERT_TRUE(r.failed.isEmpty()) << r.failed.join('\n').toStdString();
    }
};

TEST_F(ContentToolsTest, SnippetMadeInThePaneDropsAsHtmlAtTheDropPoint) {
    frmMain& w = start();
    frmMemory* pane = w.memory();
    MemoryList* list = pane->LIST();
    EXPECT_EQ(list->headerItem()->text(0), "Memory");
    EXPECT_EQ(list->topLevelItemCount(), 0);
    EXPECT_FALSE(pane->command("cmdMemoryMod")->isEnabled());
    EXPECT_FALSE(pane->command("cmdMemoryDel")->isEnabled());

    // New: the entry form, typed into and confirmed.
    pane->command("cmdMemoryNew")->trigger();
    frmMemoryPop* pop = pane->entryForm();
    ASSERT_TRUE(waitFor([&] { return pop->isVisible(); }));
    QTest::keyClicks(pop->txtNome(), "Greeting");
    pop->txtMemory()->setPlainText("Hello\nWorld");
    saveShot(*pop, "memory-entry.png");
    QTest::mouseClick(pop->cmdOK(), Qt::LeftButton);
    EXPECT_FALSE(pop->isVisible());
    const QString folder = session().folders.appMemory;
    EXPECT_EQ(fileBytes(folder + "00000001.mem"),
              TextFile::encodeUtf16LE(u"Greeting\r\nHello\r\nWorld"));
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(list->topLevelItem(0)->text(0), "Greeting");
    EXPECT_TRUE(pane->command("cmdMemoryDel")->isEnabled());

    // The pointer over the list names the pane in the status bar.
    QMouseEvent hover(QEvent::MouseMove, QPointF(5, 5), QPointF(5, 5), Qt::NoButton, Qt::NoButton,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(list->viewport(), &hover);
    EXPECT_EQ(w.findChild<QLabel*>("stcHelp")->text(), "Memory");

    // Dropped between "sec" and "ond" of the second paragraph.
    setBody("<html><body><p id=\"a\">first</p><p id=\"b\" style=\"margin-top:120px\">second</p>"
            "</body></html>");
    const QVariantList rect =
        evaluate(page(),
                 "(function(){var t=document.getElementById('b').firstChild;"
                 "var r=document.createRange();r.setStart(t,2);r.setEnd(t,3);"
                 "var b=r.getBoundingClientRect();return [b.right + 1, b.top + b.height / 2];})()")
            .toList();
    ASSERT_EQ(rect.size(), 2);
    list->setCurrentItem(list->topLevelItem(0));
    QMimeData data;
    data.setData(MemoryList::mimeType(), "frmMemory.LIST");
    const QPoint at(rect[0].toInt(), rect[1].toInt());
    QWidget* target = w.visualPage()->focusProxy();
    // As a drag does: the drop goes to the widget that accepted the drag's entry.
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &enter);
    ASSERT_TRUE(enter.isAccepted());
    QDragMoveEvent move(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &move);
    QDropEvent drop(QPointF(at), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &drop);
    EXPECT_TRUE(waitFor([&] {
        return html().contains(QRegularExpression("<p id=\"b\"[^>]*>secHello<br>Worldond</p>",
                                                  QRegularExpression::CaseInsensitiveOption));
    })) << html().toStdString();
    EXPECT_TRUE(html().contains("<p id=\"a\">first</p>"));
    EXPECT_TRUE(w.DaSalvare());
    saveShot(w, "memory-pane.png");

    // Enter on the row puts a snippet with markup at the caret, unescaped.
    SnippetStore(folder).add("Bold", "<b>strong</b> & more");
    pane->IniList();
    ASSERT_EQ(list->topLevelItemCount(), 2);
    for (int i = 0; i < list->topLevelItemCount(); ++i)
        if (list->topLevelItem(i)->text(0) == "Bold")
            list->setCurrentItem(list->topLevelItem(i));
    w.visualPage()->placeCaret("#a", 1);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_TRUE(waitFor([&] { return html().contains("first<b>strong</b> &amp; more</p>"); }))
        << html().toStdString();

    // Change keeps the file; delete removes it and the row.
    pane->command("cmdMemoryMod")->trigger();
    ASSERT_TRUE(waitFor([&] { return pop->isVisible(); }));
    EXPECT_EQ(pop->txtNome()->text(), "Bold");
    EXPECT_EQ(pop->txtMemory()->toPlainText(), "<b>strong</b> & more");
    pop->txtNome()->setText("Bolder");
    QTest::mouseClick(pop->cmdOK(), Qt::LeftButton);
    EXPECT_EQ(list->currentItem()->text(0), "Bolder");
    EXPECT_EQ(SnippetStore(folder).GetMemoryTitle("00000002.mem"), "Bolder");
    pane->command("cmdMemoryDel")->trigger();
    EXPECT_FALSE(QFileInfo::exists(folder + "00000002.mem"));
    EXPECT_EQ(list->topLevelItemCount(), 1);
}

TEST_F(ContentToolsTest, TemplateOpensWithItsImagesAndSaveKeepsThem) {
    provisionBuiltDefaults();
    frmMain& w = start();
    w.Dks_CommandClick("cmdApriModelli");
    frmTemplate* chooser = w.templateChooser();
    ASSERT_TRUE(chooser);
    QListWidget* list = chooser->lstProf();
    ASSERT_TRUE(waitFor([&] { return !chooser->isLoading(); }));
    ASSERT_GE(list->count(), 6);
    int corporate = -1;
    for (int i = 0; i < list->count(); ++i)
        if (list->item(i)->data(Qt::UserRole).toString().endsWith("/Professional/Corporate.jpg"))
            corporate = i;
    ASSERT_GE(corporate, 0);
    list->setCurrentRow(corporate);
    saveShot(*chooser, "template-dialog.png");

    QSignalSpy loaded(&w, &frmMain::documentLoaded);
    QTest::mouseClick(chooser->cmdImport(), Qt::LeftButton);
    ASSERT_TRUE(loaded.wait(20000));
    EXPECT_TRUE(waitFor([&] { return !w.templateChooser(); }));
    const QString work = w.document().restoreFolder;
    EXPECT_TRUE(html().contains(work + "corporate-hero.jpg")) << html().toStdString();
    EXPECT_EQ(loadedPictures(w.visualPage()), 5);
    EXPECT_TRUE(w.DaSalvare());
    saveShot(w, "template-opened.png");

    const QString saved = dir.filePath("quarterly.mssx");
    scripted().onFile = [&](const ScriptedDialogs::FileQuestion&) { return saved; };
    w.Dks_CommandClick("cmdSalvaAs");
    ASSERT_FALSE(w.DaSalvare());
    // The template's own folder is out of reach: the reopened message must carry every picture.
    ASSERT_TRUE(QDir(session().folders.appTemplate).removeRecursively());
    w.NuovoMessaggio();
    QSignalSpy reopened(&w, &frmMain::documentLoaded);
    ASSERT_TRUE(w.ApriMessaggio(saved));
    ASSERT_TRUE(reopened.wait(20000));
    const QString restore = w.document().restoreFolder;
    EXPECT_TRUE(html().contains(restore + "corporate-logo.png"));
    EXPECT_EQ(loadedPictures(w.visualPage()), 5);
}

TEST_F(ContentToolsTest, SocialIconLinkUsesTheSelectedTabAndKeepsAddresses) {
    provisionBuiltDefaults();
    frmMain& w = start();
    w.Dks_CommandClick("cmdSocial");
    frmSocial* social = w.social();
    ASSERT_TRUE(social->isVisible());
    EXPECT_EQ(social->cmbSize()->currentText(), "64x64");
    EXPECT_EQ(social->lblSocial(7)->text(), "Page address on Vimeo");
    EXPECT_FALSE(social->cmdIcon(146)->icon().isNull());

    social->TB()->setCurrentIndex(7);
    social->txtSocial(7)->setText("https://vimeo.example/studio");
    social->txtSocial(0)->setText("https://facebook.example/studio");
    QTest::mouseClick(social->cmdIcon(146), Qt::LeftButton);
    EXPECT_EQ(social->previewTag(), "07_64x64_vimeo.jpg");
    social->cmbSize()->setCurrentIndex(1);
    social->cmbSize_Click();
    EXPECT_EQ(social->previewTag(), "07_32x32_vimeo.jpg");
    ASSERT_FALSE(social->tbPreview()->pixmap().isNull());
    EXPECT_EQ(social->tbPreview()->pixmap().width(), 32);
    saveShot(*social, "social-window.png");

    setBody("<html><body><p id=\"p\">x</p></body></html>");
    w.visualPage()->placeCaret("#p", 1);
    const QString icons = session().folders.appSocial;
    QTest::mouseClick(social->cmdInsertLink(), Qt::LeftButton);
    EXPECT_TRUE(waitFor([&] {
        return html().contains("x<a href=\"https://vimeo.example/studio\"><img src=\"" + icons +
                               "07_32x32_vimeo.png\" border=\"0\"></a>");
    })) << html().toStdString();
    // Another tab's address with the icon still previewed.
    social->TB()->setCurrentIndex(0);
    QTest::mouseClick(social->cmdInsertLink(), Qt::LeftButton);
    EXPECT_TRUE(waitFor([&] {
        return html().contains("<a href=\"https://facebook.example/studio\"><img src=\"" + icons +
                               "07_32x32_vimeo.png\"");
    })) << html().toStdString();

    // Closing hides and saves; a later window reads the addresses back.
    social->close();
    EXPECT_FALSE(social->isVisible());
    EXPECT_EQ(SocialLinks::readAddresses(session().folders.pathFileImp + "Social.dll").value(7),
              "https://vimeo.example/studio");
    w.Dks_CommandClick("cmdSocial");
    EXPECT_EQ(w.social(), social);
    EXPECT_EQ(social->txtSocial(7)->text(), "https://vimeo.example/studio");
    window.reset();
    frmMain& again = start();
    EXPECT_EQ(again.social()->txtSocial(7)->text(), "https://vimeo.example/studio");
    EXPECT_EQ(again.social()->txtSocial(0)->text(), "https://facebook.example/studio");
}

} // namespace
