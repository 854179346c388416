#include "core/app/bError.h"
#include "gui/app/Session.h"
#include "gui/editor/CommandBars.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmMain.h"
#include "gui/message/ImportJob.h"
#include "gui/message/frmAllegati.h"

#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>
#include <gtest/gtest.h>

#include "gui/PageProbe.h"
#include "gui/TestSession.h"

using namespace quillora;
using namespace quillora::gui;

namespace {

const QString kData = QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/");

class ImportTest : public testing::Test {
protected:
    void SetUp() override {
        freshSession(dir);
        scripted().onFile = [this](const ScriptedDialogs::FileQuestion&) { return chosenFile; };
        window = std::make_unique<frmMain>();
        QSignalSpy loaded(window.get(), &frmMain::documentLoaded);
        window->Form_Load(QString());
        window->resize(1100, 800);
        window->show();
        ASSERT_TRUE(loaded.count() > 0 || loaded.wait(20000));
        QDir().mkpath(shots);
    }
    void TearDown() override {
        window.reset();
        bError::setLogPath(QString());
    }

    // Runs a command that asks for `file` and waits until the import has ended; its outcome.
    bool import(const char* command, const QString& file, const QString& waitShot = QString()) {
        chosenFile = file;
        QSignalSpy finished(window.get(), &frmMain::importFinished);
        window->Dks_CommandClick(QString::fromLatin1(command));
        if (!waitShot.isEmpty() && window->runningImport()) {
            EXPECT_TRUE(window->runningImport()->waitWindow()->isVisible());
            window->runningImport()->waitWindow()->grab().save(shots + waitShot);
        }
        if (finished.isEmpty() && !finished.wait(180000))
            return false;
        return finished.at(0).at(0).toBool();
    }
    QString body() { return window->visualPage()->documentHTML().value_or(QString()); }

    QTemporaryDir dir;
    std::unique_ptr<frmMain> window;
    QString chosenFile;
    const QString shots = QStringLiteral(QUILLORA_BINARY_DIR "/screenshots/");
};

// A document, a mail and a page in turn: each replaces the body with every picture shown,
// while the subject stays and the mail's attachment joins the list.
TEST_F(ImportTest, DocumentMailAndPageComeWithTheirPictures) {
    window->bars().subject->setText(QStringLiteral("Spring offer"));

    ASSERT_TRUE(import("cmdApriWord", kData + "docs/having-images.docx", "import-wait.png"));
    EXPECT_EQ(scripted().fileQuestions.last().title, "Open Word file...");
    EXPECT_EQ(loadedPictures(window->visualPage()), 3);
    EXPECT_TRUE(window->DaSalvare());
    EXPECT_TRUE(window->grab().save(shots + "import-word.png"));

    ASSERT_TRUE(import("cmdApriOutlook", kData + "eml/inline-cid-images-iso-8859-1.eml"));
    EXPECT_EQ(scripted().fileQuestions.last().title, "Open Outlook message...");
    EXPECT_EQ(loadedPictures(window->visualPage()), 1); // the other one is a table background
    EXPECT_TRUE(body().contains("MIME E-mail message composing"));
    const QStringList attached = window->attachments()->paths();
    ASSERT_EQ(attached.size(), 1);
    EXPECT_EQ(QFileInfo(attached.first()).fileName(), "attachment.txt");
    EXPECT_TRUE(QFileInfo(attached.first()).isFile());
    EXPECT_TRUE(window->grab().save(shots + "import-mail.png"));

    ASSERT_TRUE(import("cmdImpHTML", kData + "html/colorlib-legacy-12/index.html"));
    EXPECT_EQ(loadedPictures(window->visualPage()), 2);
    // The page's pictures were copied into the message's own folder.
    const QString folder = window->document().restoreFolder;
    EXPECT_TRUE(QFileInfo(folder + "prod-1.jpg").isFile()) << folder.toStdString();
    EXPECT_TRUE(body().contains(folder + "prod-2.jpg"));
    EXPECT_TRUE(window->grab().save(shots + "import-html.png"));

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
    const QString html = body();
    EXPECT_TRUE(
        html.contains(QString::fromUtf8("Price: &lt;b&gt;10 \xE2\x82\xAC&lt;/b&gt; &amp; more")))
        << html.toStdString();
    EXPECT_FALSE(html.contains("<b>"));
    EXPECT_TRUE(window->DaSalvare());
}

// A file dropped from the desktop onto the visual page is imported by its type.
TEST_F(ImportTest, ADroppedFileIsImported) {
    const QString file = dir.filePath("dropped.txt");
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("Dropped <i>here</i>\n");
    f.close();
    QWidget* target = window->visualPage()->focusProxy();
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
    EXPECT_TRUE(body().contains("Dropped &lt;i&gt;here&lt;/i&gt;")) << body().toStdString();
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
    const QString before = body();
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
    EXPECT_TRUE(window->grab().save(shots + "import-broken.png"));
    EXPECT_EQ(body(), before);
    EXPECT_EQ(window->document().restoreFolder, folderBefore);
    EXPECT_EQ(workFolders(), foldersBefore); // the converter's folder is gone
}

} // namespace
