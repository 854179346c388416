// The message check, the preview's widths and dark mode, and the sample recipient, driven
// through the real main window.
#include "core/spamcheck/SendSettings.h"
#include "gui/editor/PreviewPane.h"
#include "gui/editor/SourceView.h"
#include "gui/spamcheck/frmCheckMessage.h"
#include "gui/spamcheck/frmSendTest.h"

#include <QCheckBox>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>

#include "gui/MainWindowFixture.h"

using namespace quillora;
using namespace quillora::gui;

namespace {

// Relative luminance (0 black .. 1 white) of the first painted background at the middle of
// the page's width, a third of the way down, looking outwards from the element found there.
const char* kMiddleBackground = R"(
(function(){
  var el = document.elementFromPoint(innerWidth / 2, innerHeight / 3);
  for (; el; el = el.parentElement) {
    var m = /rgba?\(([^)]+)\)/.exec(getComputedStyle(el).backgroundColor);
    var p = m ? m[1].split(',').map(parseFloat) : null;
    if (p && (p.length < 4 || p[3] > 0))
      return (0.2126 * p[0] + 0.7152 * p[1] + 0.0722 * p[2]) / 255;
  }
  return -1;
})())";

// The luminance of what the preview shows at the same point, once the engine has painted it.
double paintedLuminance(VisualSurface* page) {
    const QImage shot = page->grab().toImage();
    const QColor c = shot.pixelColor(shot.width() / 2, shot.height() / 3);
    return (0.2126 * c.red() + 0.7152 * c.green() + 0.0722 * c.blue()) / 255.0;
}

class PreSendTest : public MainWindowTest {
protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        windowSize = QSize(1200, 820);
    }
    // Shows the preview page and waits until it shows the body with every option applied.
    void showPreview() {
        QSignalSpy rendered(window->previewPane(), &PreviewPane::rendered);
        window->tabs()->setCurrentIndex(frmMain::PagePreview);
        ASSERT_TRUE(rendered.wait(20000));
    }
    void rerender(const std::function<void()>& change) {
        QSignalSpy rendered(window->previewPane(), &PreviewPane::rendered);
        change();
        ASSERT_TRUE(rendered.wait(20000));
    }
    frmMain& openCorpus(const QString& name) {
        return start(saveCorpusMessage(name, name, name + ".mssx"));
    }
};

TEST_F(PreSendTest, ChoosingAFindingSelectsItsElementInTheVisualPage) {
    frmMain& w = start();
    setBody(R"(<html><body><p>Dear :::Nme:::,</p><img alt="" src="https://example.com/a.png">
        <p>Our <a href="#">offer</a></p><img alt="" src="lost.png"><p>Bye</p></body></html>)");
    w.Dks_CommandClick("cmdCheckMsg");
    frmCheckMessage* check = w.checkWindow();
    ASSERT_NE(check, nullptr);
    EXPECT_TRUE(check->isVisible());
    QTreeWidget* list = check->list();
    ASSERT_EQ(list->topLevelItemCount(), int(check->findings().size()));
    QStringList rules;
    for (const auto& f : check->findings())
        rules << f.rule;
    EXPECT_EQ(rules, (QStringList{"empty-subject", "missing-file", "unknown-token",
                                  "no-unsubscribe", "empty-link"}));
    EXPECT_EQ(list->topLevelItem(1)->text(2), "missing-file");
    EXPECT_TRUE(list->topLevelItem(1)->text(1).contains("lost.png"));
    check->resize(820, 300);
    saveShot(*check, "check-list.png");

    // The missing picture is the second image of the page.
    const QRect row = list->visualItemRect(list->topLevelItem(1));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, row.center());
    const QString selected = R"((function(){var s=getSelection(); if(!s.rangeCount) return '';
        var r=s.getRangeAt(0); var n=r.startContainer.childNodes[r.startOffset];
        return n===document.images[1] ? 'second image' : String(n && n.nodeName);})())";
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return evaluate(w.visualPage(), selected).toString() == "second image"; }, 10000));

    // From the preview page too: the visual page comes back first.
    w.tabs()->setCurrentIndex(frmMain::PagePreview);
    const QRect tokenRow = list->visualItemRect(list->topLevelItem(2));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, tokenRow.center());
    EXPECT_EQ(w.tabs()->currentIndex(), frmMain::PageVisual);
    const QString paragraph = R"((function(){var s=getSelection(); if(!s.rangeCount) return '';
        var r=s.getRangeAt(0); return r.startContainer.childNodes[r.startOffset] ===
        document.getElementsByTagName('p')[0] ? 'first paragraph' : '';})())";
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return evaluate(w.visualPage(), paragraph).toString() == "first paragraph"; },
        10000));

    // A subject and a right token later, a second run lists fewer findings.
    w.bars().subject->setText("June");
    setBody("<p>Dear :::nom:::</p><a href=\"mailto:l@example.com?subject=REMOVE\">x</a>");
    check->runCheck();
    EXPECT_EQ(list->topLevelItemCount(), 0);
}

TEST_F(PreSendTest, PhoneAndDarkPreviewsOfANewsletterLeaveTheMessageAlone) {
    frmMain& w = openCorpus("philwareham-responsive-email");
    const QString before = w.visualPage()->documentHTML().value_or(QString());
    const bool modified = w.DaSalvare();
    showPreview();
    PreviewPane* pane = w.previewPane();
    EXPECT_GT(evaluate(w.previewPage(), kMiddleBackground).toDouble(), 0.6) << "light by default";

    rerender([&] { pane->setWidthPreset(PreviewPane::Width::Phone); });
    EXPECT_EQ(evaluate(w.previewPage(), "innerWidth").toInt(), 375);
    EXPECT_GT(loadedPictures(w.previewPage()), 3);
    EXPECT_TRUE(QTest::qWaitFor([&] { return paintedLuminance(w.previewPage()) > 0.6; }, 10000));
    saveShot(w, "preview-phone.png");

    rerender([&] { pane->setDark(true); });
    const double dark = evaluate(w.previewPage(), kMiddleBackground).toDouble();
    EXPECT_GE(dark, 0.0);
    EXPECT_LT(dark, 0.3);
    EXPECT_TRUE(QTest::qWaitFor([&] { return paintedLuminance(w.previewPage()) < 0.3; }, 10000));
    saveShot(w, "preview-dark.png");

    rerender([&] { pane->setWidthPreset(PreviewPane::Width::Tablet); });
    EXPECT_EQ(evaluate(w.previewPage(), "innerWidth").toInt(), 768);
    rerender([&] { pane->setWidthPreset(PreviewPane::Width::Desktop); });
    EXPECT_GT(evaluate(w.previewPage(), "innerWidth").toInt(), 768);

    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    EXPECT_EQ(w.visualPage()->documentHTML().value_or(QString()), before);
    EXPECT_FALSE(w.sourcePage()->text().contains("hsla"));
    EXPECT_EQ(w.DaSalvare(), modified);
}

TEST_F(PreSendTest, DarkModeHonoursTheMessagesOwnDarkStylesUnlessForced) {
    frmMain& w = start();
    setBody(R"(<html><head><style>
        @media (prefers-color-scheme: dark) { .card { background: #203040 !important; } }
        @media screen and (prefers-color-scheme: light) { .card { border: 3px solid red; } }
        </style></head><body><div class="card" style="background:#ffffff;color:#000">Hello
        </div></body></html>)");
    showPreview();
    const QString card = "getComputedStyle(document.querySelector('.card')).";
    EXPECT_EQ(evaluate(w.previewPage(), card + "backgroundColor").toString(), "rgb(255, 255, 255)");
    EXPECT_EQ(evaluate(w.previewPage(), card + "borderTopWidth").toString(), "3px");
    rerender([&] { w.previewPane()->setDark(true); });
    EXPECT_EQ(evaluate(w.previewPage(), card + "backgroundColor").toString(), "rgb(32, 48, 64)");
    EXPECT_EQ(evaluate(w.previewPage(), card + "borderTopWidth").toString(), "0px");
    EXPECT_EQ(evaluate(w.previewPage(), card + "color").toString(), "rgb(0, 0, 0)")
        << "a message with dark styles of its own is not darkened further";
    rerender([&] { w.previewPane()->setForceDark(true); });
    EXPECT_NE(evaluate(w.previewPage(), card + "color").toString(), "rgb(0, 0, 0)");
}

TEST_F(PreSendTest, TheSampleRecipientFillsThePreviewOnly) {
    SendSettings s;
    s.sample = {{"nom", "Anna & Co"}, {"loc", "Verona"}};
    ASSERT_TRUE(s.write(session().folders.pathFileImp + SendSettings::kFileName));
    frmMain& w = start();
    setBody("<p>Dear :::nom::: from :::loc:::, :::cog:::</p>");
    showPreview();
    const QString text = "document.body.innerText.trim()";
    EXPECT_EQ(evaluate(w.previewPage(), text).toString(),
              "Dear :::nom::: from :::loc:::, :::cog:::");
    rerender([&] { w.previewPane()->setSampleRecipient(true); });
    EXPECT_EQ(evaluate(w.previewPage(), text).toString(), "Dear Anna & Co from Verona, :::cog:::");
    w.tabs()->setCurrentIndex(frmMain::PageVisual);
    EXPECT_TRUE(
        w.visualPage()->documentHTML().value_or(QString()).contains(":::nom::: from :::loc:::"));
}

// A send through the window to a real SMTP server on 127.0.0.1 (STARTTLS, a certificate made
// here): refused first, sent once the user trusts the certificate for this send.
TEST_F(PreSendTest, SendTestGoesThroughTheAccountsServer) {
    QTemporaryDir keys;
    QProcess openssl;
    openssl.start("openssl", {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout",
                              keys.filePath("key.pem"), "-out", keys.filePath("cert.pem"), "-days",
                              "2", "-subj", "/CN=127.0.0.1"});
    ASSERT_TRUE(openssl.waitForFinished(60000) && openssl.exitCode() == 0);
    QTemporaryDir inbox;
    QProcess server;
    server.start("/usr/bin/python3",
                 {QUILLORA_SOURCE_DIR "/tests/integration/smtp_server.py", inbox.path(), "--tls",
                  keys.filePath("cert.pem"), keys.filePath("key.pem"), "--starttls", "--user",
                  "anna@example.com", "--password", "s3cret"});
    int port = 0;
    while (port == 0) {
        while (port == 0 && server.canReadLine()) {
            const QByteArray line = server.readLine().trimmed();
            if (line.startsWith("READY "))
                port = line.mid(6).toInt();
        }
        if (port == 0 && !server.waitForReadyRead(20000))
            break;
    }
    ASSERT_GT(port, 0);

    ASSERT_TRUE(AccountStore::open(session().folders.accountDatabase()).ok());
    Account a;
    a.displayName = "Anna Rossi";
    a.address = "anna@example.com";
    a.smtpServer = "127.0.0.1";
    a.port = port;
    a.authentication = "login";
    a.security = "starttls";
    ASSERT_TRUE(AccountStore().add(a));

    frmMain& w = openCorpus("philwareham-responsive-email");
    w.Dks_CommandClick("cmdSendTest");
    frmSendTest* send = w.sendTestWindow();
    ASSERT_NE(send, nullptr);
    send->findChild<QLineEdit*>("txtTo")->setText("me@example.org");
    send->findChild<QLineEdit*>("txtPassword")->setText("s3cret");
    QSignalSpy finished(send, &frmSendTest::finished);
    QTest::mouseClick(send->findChild<QPushButton*>("cmdSend"), Qt::LeftButton);
    EXPECT_TRUE(send->isSending());
    ASSERT_TRUE(finished.wait(30000));
    EXPECT_EQ(send->lastResult().outcome, smtp::Outcome::BadCertificate);
    auto* trust = send->findChild<QCheckBox*>("chkTrustOnce");
    EXPECT_TRUE(trust->isVisible());
    trust->setChecked(true);
    QTest::mouseClick(send->findChild<QPushButton*>("cmdSend"), Qt::LeftButton);
    ASSERT_TRUE(finished.wait(30000));
    EXPECT_EQ(send->lastResult().outcome, smtp::Outcome::Sent);
    EXPECT_TRUE(send->findChild<QLabel*>("lblResult")
                    ->text()
                    .startsWith("The test message was sent. The server answered: 250"));
    EXPECT_FALSE(send->findChild<QPlainTextEdit*>("txtLog")->toPlainText().contains("s3cret"));
    send->resize(640, 440);
    saveShot(*send, "send-test.png");

    const QJsonObject got = QJsonDocument::fromJson(fileBytes(inbox.filePath("1.json"))).object();
    EXPECT_EQ(got["subject"].toString(), "philwareham-responsive-email");
    EXPECT_TRUE(got["tls"].toBool());
    EXPECT_EQ(got["defects"].toArray().size(), 0);
    // The next send remembers the address and the account.
    const SendSettings remembered =
        SendSettings::read(session().folders.pathFileImp + SendSettings::kFileName);
    EXPECT_EQ(remembered.testAddress, "me@example.org");
    server.closeWriteChannel();
    server.waitForFinished(10000);
    window.reset();
    AccountStore::close();
}

} // namespace
