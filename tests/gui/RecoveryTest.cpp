// The main window's recovery copies, its close on a signal, and the recent messages.
#include "core/message/Recovery.h"
#include "core/app/EditorSettings.h"
#include "gui/editor/RecentMenu.h"

#include <QAction>
#include <QLineEdit>

#include "gui/MainWindowFixture.h"

using namespace quillora;
using namespace quillora::gui;

namespace {

class RecoveryWindowTest : public MainWindowTest {
protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        scripted().onAnswer = [this](const MessageRequest& r) {
            if (r.key == u"id_Recupero") {
                if (offers.isEmpty() && r.box) {
                    QDir().mkpath(QUILLORA_BINARY_DIR "/screenshots");
                    r.box->grab().save(QUILLORA_BINARY_DIR "/screenshots/recovery-question.png");
                }
                offers << r;
                return choice;
            }
            const int id = answerQuestion(r);
            if (onQuestion)
                onQuestion();
            return id;
        };
    }

    QString pathFileImp() const { return session().folders.pathFileImp; }

    // What an editor that ended without cleaning up leaves behind.
    QString leaveCopy(const QString& original) {
        Recovery::Writer w(pathFileImp());
        MessageDocument d;
        d.subject = QStringLiteral("Spring offer");
        d.body = QStringLiteral("<html><body><p id=\"p\">Before the crash</p></body></html>");
        if (!original.isEmpty())
            d.markSaved(original);
        d.Modificato();
        EXPECT_TRUE(w.write(d, dir.path() + u'/').ok());
        return w.messageFile();
    }

    QList<MessageRequest> offers;
    int choice = 0;
    std::function<void()> onQuestion;
};

class RecoveryChoice : public RecoveryWindowTest, public testing::WithParamInterface<int> {};

TEST_P(RecoveryChoice, IsCarriedOutOnTheCopyLeftByAGoneEditor) {
    const QString original = dir.filePath("news/offer.mssx");
    const QString copy = leaveCopy(original);
    const QByteArray copyBytes = fileBytes(copy);
    choice = GetParam();
    chosenFile = dir.filePath("kept.mssx");
    frmMain& w = start();
    ASSERT_TRUE(waitFor([&] { return !offers.isEmpty(); }, 20000));
    ASSERT_EQ(offers.size(), 1);
    EXPECT_EQ(offers[0].buttons, (QList<int>{kIdRestore, kIdSaveElsewhere, kIdDiscard}));
    EXPECT_TRUE(offers[0].content.contains("[offer.mssx]")) << offers[0].content.toStdString();
    EXPECT_TRUE(offers[0].content.contains(original)) << offers[0].content.toStdString();

    switch (choice) {
    case kIdRestore:
        // Back as it was on screen: its own file, unsaved, the text in the page.
        ASSERT_TRUE(waitFor([&] { return !QFileInfo::exists(copy); }, 20000));
        EXPECT_EQ(w.windowTitle(), "Quillora - [offer.mssx*]");
        EXPECT_EQ(w.document().currentPath, original);
        EXPECT_TRUE(html().contains("Before the crash")) << html().toStdString();
        EXPECT_EQ(MessageFile::read(w.recoveryCopyFile()).content.subject, "Spring offer");
        break;
    case kIdSaveElsewhere:
        EXPECT_EQ(fileBytes(chosenFile), copyBytes);
        EXPECT_FALSE(QFileInfo::exists(copy));
        EXPECT_EQ(w.settings().recent.value(0), chosenFile);
        EXPECT_FALSE(w.DaSalvare());
        break;
    case kIdDiscard:
        EXPECT_FALSE(QFileInfo::exists(copy));
        EXPECT_FALSE(QFileInfo::exists(chosenFile));
        EXPECT_FALSE(w.DaSalvare());
        break;
    default: // closed without a choice: offered again at the next start
        EXPECT_EQ(fileBytes(copy), copyBytes);
        window.reset();
        EXPECT_EQ(Recovery::claimOrphans(pathFileImp()).size(), 1u);
        break;
    }
}

INSTANTIATE_TEST_SUITE_P(Choices, RecoveryChoice,
                         testing::Values(kIdRestore, kIdSaveElsewhere, kIdDiscard, 0));

TEST_F(RecoveryWindowTest, ASignalClosesWithoutAQuestionAndKeepsTheChangesForTheNextStart) {
    {
        frmMain& w = start();
        w.bars().subject->setText("Written just before the logout");
        w.Modificato();
        QSignalSpy closed(&w, &frmMain::closed);
        w.closeForLogout();
        EXPECT_EQ(closed.count(), 1);
        EXPECT_EQ(questions, 0);
        EXPECT_EQ(MessageFile::read(w.recoveryCopyFile()).content.subject,
                  "Written just before the logout");
    }
    // The signal came while the close was asking: the question goes unanswered, and the
    // changes still go to the copy.
    {
        frmMain& w = start();
        w.bars().subject->setText("Asked, never answered");
        w.Modificato();
        onQuestion = [&w] { w.closeForLogout(); };
        QSignalSpy closed(&w, &frmMain::closed);
        w.close();
        EXPECT_EQ(closed.count(), 1);
        EXPECT_EQ(questions, 1);
        EXPECT_EQ(MessageFile::read(w.recoveryCopyFile()).content.subject, "Asked, never answered");
    }
    window.reset();
    EXPECT_EQ(Recovery::claimOrphans(pathFileImp()).size(), 2u);
}

TEST_F(RecoveryWindowTest, ACleanCloseAsksAndLeavesNoCopy) {
    frmMain& w = start();
    w.bars().subject->setText("Changed");
    w.Modificato();
    ASSERT_TRUE(w.writeRecoveryCopy());
    const QString copy = w.recoveryCopyFile();
    ASSERT_TRUE(QFileInfo::exists(copy));
    w.close();
    EXPECT_EQ(questions, 1);
    EXPECT_FALSE(QFileInfo::exists(copy));
    window.reset();
    EXPECT_TRUE(Recovery::claimOrphans(pathFileImp()).empty());
}

TEST_F(RecoveryWindowTest, RecentMessagesSurviveARestartAndAMissingOneIsGreyed) {
    MessageDocument d;
    d.body = "<html><body><p>x</p></body></html>";
    const QString a = dir.filePath("a.mssx"), b = dir.filePath("b.mssx");
    ASSERT_TRUE(MessageFile::SalvaMessaggio(d, a).ok());
    ASSERT_TRUE(MessageFile::SalvaMessaggio(d, b).ok());
    {
        frmMain& w = start(a);
        QSignalSpy loaded(&w, &frmMain::documentLoaded);
        ASSERT_TRUE(w.ApriMessaggio(b));
        ASSERT_TRUE(loaded.wait(20000));
    }
    window.reset();
    frmMain& w = start();
    RecentMenu* menu = w.recentMenu();
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->title().remove('&'), "Recent messages");
    menu->rebuild();
    auto entries = [&] {
        QList<QAction*> out;
        for (QAction* x : menu->actions())
            if (x->objectName().startsWith("mnuRecenti_"))
                out << x;
        return out;
    };
    ASSERT_EQ(entries().size(), 2);
    EXPECT_EQ(entries()[0]->data().toString(), b);
    EXPECT_EQ(entries()[1]->data().toString(), a);
    EXPECT_TRUE(entries()[1]->isEnabled());

    ASSERT_TRUE(QFile::remove(a));
    menu->rebuild();
    EXPECT_FALSE(entries()[1]->isEnabled());
    EXPECT_TRUE(entries()[1]->text().contains("(missing)")) << entries()[1]->text().toStdString();
    QAction* removeMissing = menu->findChild<QAction*>("cmdRecentiRimuovi");
    ASSERT_NE(removeMissing, nullptr);
    ASSERT_TRUE(removeMissing->isEnabled());
    removeMissing->trigger();
    EXPECT_EQ(EditorSettings::read(EditorSettings::fileIn(pathFileImp())).recent, QStringList{b});

    menu->rebuild();
    ASSERT_EQ(entries().size(), 1);
    QSignalSpy loaded(&w, &frmMain::documentLoaded);
    entries()[0]->trigger();
    ASSERT_TRUE(loaded.wait(20000));
    EXPECT_EQ(w.windowTitle(), "Quillora - [b.mssx]");
}

} // namespace
