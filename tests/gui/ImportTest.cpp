#include "gui/editor/CommandBars.h"
#include "gui/message/ImportJob.h"
#include "gui/message/frmAllegati.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QLineEdit>
#include <QMimeData>
#include <QUrl>

#include "gui/MainWindowFixture.h"

using namespace quillora;
using namespace quillora::gui;

namespace {

const QString kData = QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/");

class ImportTest : public MainWindowTest {
protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        windowSize = QSize(1100, 800);
        start();
        ASSERT_FALSE(HasFailure());
    }

    // Runs a command that asks for `file` and waits until the import has ended; its outcome.
    bool import(const char* command, const QString& file, const QString& waitShot = QString()) {
        chosenFile = file;
        QSignalSpy finished(window.get(), &frmMain::importFinished);
        window->Dks_CommandClick(QString::fromLatin1(command));
        if (!waitShot.isEmpty() && window->runningImport()) {
            EXPECT_TRUE(window->runningImport()->waitWindow()->isVisible());
            saveShot(*window->runningImport()->waitWindow(), waitShot);
        }
        if (finished.isEmpty() && !finished.wait(180000))
            return false;
        return finished.at(0).at(0).toBool();
    }
};

// A document, a mail and a page in turn: each replaces the body with every picture shown,
// while the subject stays and the mail's attachment joins the list.
TEST_F(ImportTest, DocumentMailAndPageComeWithTheirPictures) {
    window->bars().subject->setText(QStringLiteral("Spring offer"));

    ASSERT_TRUE(import("cmdApriWord", kData + "docs/having-images.docx", "import-wait.png"));
    EXPECT_EQ(scripted().fileQuestions.last().title, "Open Word file...");
    EXPECT_EQ(loadedPictures(page()), 3);
    EXPECT_TRUE(window->DaSalvare());
    EXPECT_TRUE(saveShot(*window, "import-word.png"));

    ASSERT_TRUE(import("cmdApriOutlook", kData + "eml/inline-cid-images-iso-8859-1.eml"));
    EXPECT_EQ(scripted().fileQuestions.last().title, "Open Outlook message...");
    EXPECT_EQ(loadedPictures(page()), 1); // the other one is a table background
    EXPECT_TRUE(html().contains("MIME E-mail message composing"));
    const QStringList attached = window->attachments()->paths();
    ASSERT_EQ(attached.size(), 1);
    EXPECT_EQ(QFileInfo(attached.first()).fileName(), "attachment.txt");
    EXPECT_TRUE(QFileInfo(attached.first()).isFile());
    EXPECT_TRUE(saveShot(*window, "import-mail.png"));

    ASSERT_TRUE(import("cmdImpHTML", kData + "html/colorlib-legacy-12/index.html"));
    EXPECT_EQ(loadedPictures(page()), 2);
    // The page's pictures were copied into the message's own folder.
    const QString folder = window->document().restoreFolder;
    EXPECT_TRUE(QFileInfo(folder + "prod-1.jpg").isFile()) << folder.toStdString();
    EXPECT_TRUE(html().contains(folder + "prod-2.jpg"));
    EXPECT_TRUE(saveShot(*window, "import-html.png"));

    EXPECT_EQ(window->bars().subject->text(), "Spring offer");
    EXPECT_TRUE(scripted().errorReports.isEmpty());
    EXPECT_TRUE(scripted().boxes.isEmpty());
}

TEST_F(ImportTest, TextIsShownLiterally) {
    const QString file = dir.filePath("note.txt");
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("Price: <b>10 \xE2\x82\xAC</b> & more\nsecond line\n");
    f.close();
    ASSERT_TRUE(import("cmdImpTXT", file));
    EXPECT_EQ(scripted().fileQuestions.last().title, "Importa messaggio da file di testo");
    const QString shown = html();
    EXPECT_TRUE(
        shown.contains(QString::fromUtf8("Price: &lt;b&gt;10 \xE2\x82\xAC&lt;/b&gt; &amp; more")))
        << shown.toStdString();
    EXPECT_FALSE(shown.contains("<b>"));
    EXPECT_TRUE(window->DaSalvare());
}

// A file dropped from the desktop onto the visual page is imported by its type.
TEST_F(ImportTest, ADroppedFileIsImported) {
    const QString file = dir.filePath("dropped.txt");
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("Dropped <i>here</i>\n");
    f.close();
    QWidget* target = page()->focusProxy();
    ASSERT_NE(target, nullptr);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(file)});
    QSignalSpy finished(window.get(), &frmMain::importFinished);
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &drop);
    ASSERT_TRUE(finished.count() > 0 || finished.wait(20000));
    EXPECT_TRUE(finished.at(0).at(0).toBool());
    EXPECT_TRUE(html().contains("Dropped &lt;i&gt;here&lt;/i&gt;")) << html().toStdString();
}

// A document the office cannot read: a message in the user's language, and the body, the
// working folder and the title as they were.
TEST_F(ImportTest, ABrokenDocumentLeavesTheMessageAsItWas) {
    const QString text = dir.filePath("before.txt");
    QFile t(text);
    ASSERT_TRUE(t.open(QIODevice::WriteOnly));
    t.write("The body before the import.\n");
    t.close();
    ASSERT_TRUE(import("cmdImpTXT", text));
    const QString before = html();
    const QString folderBefore = window->document().restoreFolder;
    const auto workFolders = [] {
        return QDir(session().folders.pathFileImp + "Elaboration")
            .entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    };
    const QStringList foldersBefore = workFolders();
    const QString broken = dir.filePath("broken.docx");
    QFile f(broken);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("PK\x03\x04 not a zip at all");
    f.close();

    EXPECT_FALSE(import("cmdApriWord", broken));
    ASSERT_EQ(scripted().boxes.size(), 1);
    EXPECT_EQ(scripted().boxes.first().instruction,
              session().texts.get(QStringLiteral("ImpConversioneFallita")));
    EXPECT_TRUE(scripted().boxes.first().content.contains("broken.docx"));
    EXPECT_TRUE(saveShot(*window, "import-broken.png"));
    EXPECT_EQ(html(), before);
    EXPECT_EQ(window->document().restoreFolder, folderBefore);
    EXPECT_EQ(workFolders(), foldersBefore); // the converter's folder is gone
}

} // namespace
