#include "gui/tools/frmImpDaImg.h"

#include <QFileInfo>
#include <QImage>
#include <QLineEdit>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>

#include "gui/MainWindowFixture.h"

using namespace quillora;
using namespace quillora::gui;

namespace {

// A picture with something in every row: bands of colour, a gradient and text-like bars.
QString makePicture(const QString& path, int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    QPainter p(&image);
    for (int y = 0; y < height; y += 40)
        p.fillRect(0, y, width, 40, QColor::fromHsv((y / 40 * 37) % 360, 160, 230));
    for (int y = 10; y < height; y += 23)
        p.fillRect(20 + y % 50, y, width / 2, 6, Qt::black);
    p.end();
    EXPECT_TRUE(image.save(path));
    return path;
}

class ImageImportTest : public MainWindowTest {
protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        windowSize = QSize(1100, 800);
        start();
        ASSERT_FALSE(HasFailure());
    }

    frmImpDaImg* openDialog() {
        window->Dks_CommandClick("cmdImpDaImg");
        frmImpDaImg* d = window->imageImport();
        EXPECT_NE(d, nullptr);
        EXPECT_TRUE(d && d->isVisible());
        return d;
    }
    static QLineEdit* field(frmImpDaImg* d, const char* name) {
        return d->findChild<QLineEdit*>(QString::fromLatin1(name));
    }
    // Clicks Import and waits for the conversion to end; its outcome.
    static bool import(frmImpDaImg* d) {
        QSignalSpy finished(d, &frmImpDaImg::finished);
        d->findChild<QPushButton*>("cmdImportImg")->click();
        if (finished.isEmpty() && !d->isConverting())
            return false; // stopped by a check before any work
        if (finished.isEmpty() && !finished.wait(60000))
            return false;
        return finished.at(0).at(0).toBool();
    }
    QStringList workFolders() const {
        return QDir(session().folders.pathFileImp + "Elaboration")
            .entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    }
};

// The whole path a user takes: browse, import, see every slice, save, open again.
TEST_F(ImageImportTest, ATallPictureBecomesTheBodyWithEverySliceShownAndSaved) {
    frmImpDaImg* d = openDialog();
    ASSERT_NE(d, nullptr);
    chosenFile = makePicture(dir.filePath("tall.png"), 300, 420); // 600 × 840 once scaled
    d->findChild<QToolButton*>("cmdFile")->click();
    EXPECT_EQ(field(d, "txtFile")->text(), chosenFile);
    EXPECT_EQ(scripted().fileQuestions.last().title, "Apri file immagine");
    EXPECT_TRUE(saveShot(*d, "import-image.png"));

    ASSERT_TRUE(import(d));
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->imageImport() == nullptr; }, 5000))
        << "the window closes after the import";
    EXPECT_EQ(loadedPictures(page()), 9); // eight slices of 100 rows, one of 40
    EXPECT_TRUE(saveShot(*window, "import-image-page.png"));
    const QString body = html();
    EXPECT_TRUE(body.contains("alt=\"Sezione 9\"")) << body.toStdString();
    EXPECT_TRUE(body.contains("height=\"40\""));
    EXPECT_TRUE(window->DaSalvare());
    EXPECT_TRUE(scripted().errorReports.isEmpty());

    chosenFile = dir.filePath("sliced.mssx");
    window->Dks_CommandClick("cmdSalvaAs");
    const MessageFile::ReadResult saved = MessageFile::read(chosenFile);
    ASSERT_TRUE(saved.ok()) << saved.error.toStdString();
    QStringList names;
    for (const MessageFile::StoredObject& o : saved.content.objects)
        names << o.name;
    names.sort();
    EXPECT_EQ(names.size(), 9);
    EXPECT_TRUE(names.contains("imgCrop1.png") && names.contains("imgCrop9.png"));

    QSignalSpy reopened(window.get(), &frmMain::documentLoaded);
    ASSERT_TRUE(window->ApriMessaggio(chosenFile));
    ASSERT_TRUE(reopened.count() > 0 || reopened.wait(20000));
    EXPECT_EQ(loadedPictures(page()), 9);
}

TEST_F(ImageImportTest, FieldsNeverStayUnderTheirMinimumsAndStepByFifty) {
    frmImpDaImg* d = openDialog();
    ASSERT_NE(d, nullptr);
    QLineEdit* width = field(d, "txtMaxWidth");
    QLineEdit* slice = field(d, "txtAltSez");
    width->setText("50");
    EXPECT_EQ(width->text(), "400");
    d->findChild<QToolButton*>("UpDw1Up")->click();
    EXPECT_EQ(width->text(), "450");
    width->setFocus();
    QTest::keyClick(width, Qt::Key_Up);
    EXPECT_EQ(width->text(), "500");
    d->findChild<QToolButton*>("UpDw1Down")->click();
    d->findChild<QToolButton*>("UpDw1Down")->click();
    d->findChild<QToolButton*>("UpDw1Down")->click();
    EXPECT_EQ(width->text(), "400");
    width->setText("abc");
    EXPECT_EQ(width->text(), "400");

    slice->setText("0");
    EXPECT_EQ(slice->text(), "100");
    d->findChild<QToolButton*>("UpDw2Up")->click();
    EXPECT_EQ(slice->text(), "150");
    d->findChild<QToolButton*>("UpDw2Down")->click();
    d->findChild<QToolButton*>("UpDw2Down")->click();
    EXPECT_EQ(slice->text(), "100");
}

// A missing picture is a warning; a picture that cannot be read is the error report. Either
// way the message on screen, its folder and its state stay as they were.
TEST_F(ImageImportTest, BadPicturesLeaveTheMessageAsItWas) {
    const QStringList foldersBefore = workFolders();
    frmImpDaImg* d = openDialog();
    ASSERT_NE(d, nullptr);
    field(d, "txtFile")->setText(dir.filePath("missing.png"));
    EXPECT_FALSE(import(d));
    ASSERT_EQ(scripted().boxes.size(), 1);
    const MessageRequest& warning = scripted().boxes[0];
    EXPECT_EQ(warning.title, "Corvanta");
    EXPECT_EQ(warning.instruction, "Transform Image in HTML format");
    EXPECT_EQ(warning.content, "File Image");
    EXPECT_EQ(warning.footer, "Change file please.");

    QFile broken(dir.filePath("broken.JPG"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write(QByteArray("\xFF\xD8\xFF\xE0 not really a picture", 27));
    broken.close();
    field(d, "txtFile")->setText(broken.fileName());
    EXPECT_FALSE(import(d));
    ASSERT_EQ(scripted().errorReports.size(), 1);
    EXPECT_TRUE(
        scripted().errorReports[0].text.contains("Routine: frmImpDaImg.cmdImportImg_Click()"));
    EXPECT_TRUE(d->isVisible()) << "the user can pick another picture";
    EXPECT_FALSE(window->DaSalvare());
    EXPECT_EQ(workFolders(), foldersBefore);
}

// Cancel while the slices are written stops them; nothing of the import stays behind.
TEST_F(ImageImportTest, CancelStopsTheSlicesAndLeavesNothingBehind) {
    const QStringList foldersBefore = workFolders();
    frmImpDaImg* d = openDialog();
    ASSERT_NE(d, nullptr);
    field(d, "txtFile")->setText(makePicture(dir.filePath("long.png"), 600, 12000));
    QSignalSpy finished(d, &frmImpDaImg::finished);
    d->findChild<QPushButton*>("cmdImportImg")->click();
    EXPECT_TRUE(d->isConverting());
    EXPECT_TRUE(d->findChild<QProgressBar*>("prgSlices")->isVisible());
    d->findChild<QPushButton*>("cmdCancel")->click();
    ASSERT_TRUE(finished.count() > 0 || finished.wait(60000));
    EXPECT_FALSE(finished.at(0).at(0).toBool());
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->imageImport() == nullptr; }, 5000));
    EXPECT_TRUE(scripted().errorReports.isEmpty());
    EXPECT_FALSE(window->DaSalvare());
    EXPECT_EQ(workFolders(), foldersBefore);
}

} // namespace
