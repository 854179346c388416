#include "gui/app/frmMessage.h"
#include "gui/ScriptedDialogs.h"
#include "gui/app/Session.h"

#include <QApplication>
#include <QDir>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QTimer>
#include <gtest/gtest.h>

using namespace quillora::gui;
namespace mm = quillora::bMessage;

namespace {

QString shown(const QLabel* label) {
    QTextDocument doc;
    doc.setHtml(label->text());
    return doc.toPlainText();
}

// What the box showed while it was up; the box itself lives only during the answer.
struct Seen {
    QString instruction, content, footer;
    double instructionPt = 0, contentPt = 0, footerPt = 0;
    bool instructionBold = false, contentBold = false;
    bool footerVisible = false, footerIconShown = false, mainIconShown = false;
    QString windowTitle;
};

class MessageBoxTest : public testing::Test {
protected:
    void SetUp() override {
        scripted().onAnswer = [this](const MessageRequest& r) {
            requests << r;
            const frmMessage* box = r.box;
            const auto label = [box](const char* name) {
                return box->findChild<QLabel*>(QString::fromLatin1(name));
            };
            seen.instruction = shown(label("lblInstruction"));
            seen.content = shown(label("lblContent"));
            seen.footer = shown(label("lblFooter"));
            seen.instructionPt = label("lblInstruction")->font().pointSizeF();
            seen.instructionBold = label("lblInstruction")->font().bold();
            seen.contentPt = label("lblContent")->font().pointSizeF();
            seen.contentBold = label("lblContent")->font().bold();
            seen.footerPt = label("lblFooter")->font().pointSizeF();
            seen.footerVisible = box->findChild<QWidget*>("fraFooter")->isVisibleTo(box);
            const QLabel* footerIcon = label("picFooterIcon");
            seen.footerIconShown = footerIcon->isVisibleTo(box) && !footerIcon->pixmap().isNull();
            seen.mainIconShown = !label("picMainIcon")->pixmap().isNull();
            seen.windowTitle = box->windowTitle();
            return answer;
        };
        session().pathElaboration = work.path() + "/";
    }
    void TearDown() override { session().pathElaboration.clear(); }
    const QStringList& opened() const { return scripted().opened; }

    int answer = kIdOk;
    QList<MessageRequest> requests;
    Seen seen;
    // The main window that owns the boxes and carries out what "yes" means.
    struct MainWindow : QWidget, MessageKeyActions {
        MainWindow() { setObjectName("frmMain"); }
        void saveForQuestion() override { ++saves; }
        QString selectedImageSource() const override { return src; }
        int saves = 0;
        QString src;
    } main;
    int& saves = main.saves;
    QTemporaryDir work;
};

TEST_F(MessageBoxTest, TextsAreShownLiterallyWithTheirLineBreaksAndFonts) {
    const int id = bMessage::ShowMessage("Title <1> & co", "Delete <all> & more?",
                                         "a & <b>\r\nsecond &amp;\r\nthird", "", mm::kIconWarning);
    EXPECT_EQ(id, kIdOk);
    EXPECT_EQ(seen.windowTitle, "Title <1> & co");
    EXPECT_EQ(seen.instruction, "Delete <all> & more?");
    EXPECT_EQ(seen.content, "a & <b>\nsecond &amp;\nthird");
    EXPECT_EQ(seen.content.split('\n').size(), 3);
    EXPECT_EQ(seen.instructionPt, 14);
    EXPECT_TRUE(seen.instructionBold);
    EXPECT_EQ(seen.contentPt, 9);
    EXPECT_FALSE(seen.contentBold);
    EXPECT_TRUE(seen.mainIconShown);

    const MessageRequest r = bMessage::lastRequest();
    EXPECT_EQ(r.buttons, QList<int>{kIdOk});
    EXPECT_EQ(r.key, "");
    EXPECT_EQ(r.contentMarkup, mm::contentMarkup("a & <b>\r\nsecond &amp;\r\nthird"));
    EXPECT_EQ(r.box, nullptr);
}

TEST_F(MessageBoxTest, FooterAndItsIconOnlyWithFooterText) {
    bMessage::ShowMessage("T", "I", "C", "", mm::kIconInformation, mm::kIconProgram);
    EXPECT_FALSE(seen.footerVisible);
    EXPECT_FALSE(seen.footerIconShown);
    EXPECT_EQ(bMessage::lastRequest().footerIcon, mm::kIconNone);
    EXPECT_EQ(bMessage::lastRequest().footerMarkup, "");

    bMessage::ShowMessage("T", "I", "C", "R&D <notes>", mm::kIconInformation, mm::kIconProgram);
    EXPECT_TRUE(seen.footerVisible);
    EXPECT_TRUE(seen.footerIconShown);
    EXPECT_EQ(seen.footer, "R&D <notes>");
    EXPECT_EQ(seen.footerPt, 10);
    EXPECT_EQ(bMessage::lastRequest().footerIcon, mm::kIconProgram);
}

TEST_F(MessageBoxTest, OnlyYesRunsTheSaveOfTheKey) {
    answer = kIdNo;
    EXPECT_EQ(bMessage::ShowMessageYesNo("id_cmdSalvaMess", "Q", "Save?", "Changes"), kIdNo);
    EXPECT_EQ(saves, 0);
    EXPECT_EQ(frmMessage::MessageKey(), "id_cmdSalvaMess");
    EXPECT_EQ(bMessage::lastRequest().buttons, (QList<int>{kIdYes, kIdNo}));
    EXPECT_EQ(bMessage::lastRequest().key, "id_cmdSalvaMess");

    answer = kIdYes;
    EXPECT_EQ(bMessage::ShowMessageYesNo("id_cmdSalvaMess", "Q", "Save?", "Changes"), kIdYes);
    EXPECT_EQ(saves, 1);

    // The key stays from the last question, but an information box never acts on it.
    answer = kIdOk;
    bMessage::ShowMessage("T", "I", "C");
    EXPECT_EQ(saves, 1);
    answer = kIdYes;
    bMessage::ShowMessageYesNo("some other key", "Q", "I", "C");
    EXPECT_EQ(saves, 1);
    EXPECT_TRUE(opened().isEmpty());
}

TEST_F(MessageBoxTest, EditImageOpensOnlyLocalFilesInTheWorkingFolder) {
    answer = kIdYes;
    QString& src = main.src;
    for (const char* remote :
         {"http://x.example/a.jpg", "HTTP://X.example/a.jpg", "https://x.example/a.jpg", ""}) {
        src = QString::fromLatin1(remote);
        bMessage::ShowMessageYesNo("Modifica immagine", "Q", "Edit?", "C");
        EXPECT_TRUE(opened().isEmpty()) << remote;
    }
    src = "images/pic.jpg";
    answer = kIdNo;
    bMessage::ShowMessageYesNo("Modifica immagine", "Q", "Edit?", "C");
    EXPECT_TRUE(opened().isEmpty());
    answer = kIdYes;
    bMessage::ShowMessageYesNo("Modifica immagine", "Q", "Edit?", "C");
    EXPECT_EQ(opened(), QStringList{QDir::toNativeSeparators(work.path() + "/images/pic.jpg")});
    EXPECT_EQ(saves, 0);
}

TEST_F(MessageBoxTest, LinksInTheMarkupOpenThroughTheOpener) {
    frmMessage box;
    box.setTexts(
        "T", mm::instructionMarkup("I"),
        "<TextBlock FontSize='9pt'>See <Hyperlink NavigateUri='https://x.example/a?b=1&amp;"
        "c=2'>the guide</Hyperlink></TextBlock>",
        QString());
    auto* content = box.findChild<QLabel*>("lblContent");
    EXPECT_EQ(shown(content), "See the guide");
    ASSERT_TRUE(content->text().contains("href=\"https://x.example/a?b=1&amp;c=2\""));
    emit content->linkActivated("https://x.example/a?b=1&c=2");
    EXPECT_EQ(opened(), QStringList{"https://x.example/a?b=1&c=2"});
}

// The real window: buttons, Escape, and the handler running before the box closes.
TEST_F(MessageBoxTest, ShownQuestionIsAnsweredByItsButtons) {
    setDialogs(std::make_shared<Dialogs>()); // the real, modal window
    bool escapeIgnored = false;
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<frmMessage*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QApplication::sendEvent(box, &escape);
        escapeIgnored = box->isVisible();
        const QString folder = QStringLiteral(QUILLORA_BINARY_DIR "/screenshots");
        QDir().mkpath(folder);
        box->grab().save(folder + "/message-box.png");
        box->findChild<QPushButton*>("cmdYes")->click();
    });
    const int id = bMessage::ShowMessageYesNo(
        "id_cmdSalvaMess", "Quillora", "Save the changes to the message?",
        "The message \"Spring offers\" has changes that are not saved.\r\nAnswer No to discard "
        "them.",
        "Files & pictures stay in the message's folder.", mm::kIconQuestion, mm::kIconProgram);
    EXPECT_TRUE(escapeIgnored);
    EXPECT_EQ(id, kIdYes);
    EXPECT_EQ(saves, 1);

    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<frmMessage*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QApplication::sendEvent(box, &escape);
    });
    EXPECT_EQ(bMessage::ShowMessage("T", "Escape closes an information box", "C"), kIdOk);
}

} // namespace
