#include "gui/spamcheck/frmCheckSpam.h"
#include "core/spamcheck/SpamFilter.h"
#include "gui/spamcheck/frmAccount.h"

#include "core/spamcheck/TestMail.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QTableWidget>

#include "gui/MainWindowFixture.h"

using namespace quillora;
using namespace quillora::gui;

namespace {

// The HTML part of an e-mail file, decoded by vmime's parser.
QString htmlOf(const QByteArray& eml) {
    auto msg = vmime::make_shared<vmime::message>();
    msg->parse(eml.toStdString());
    vmime::messageParser mp(msg);
    for (size_t i = 0; i < mp.getTextPartCount(); ++i) {
        if (auto html = vmime::dynamicCast<const vmime::htmlTextPart>(mp.getTextPartAt(i))) {
            std::string out;
            vmime::utility::outputStreamStringAdapter os(out);
            html->getText()->extract(os);
            return QString::fromStdString(out);
        }
    }
    return QString();
}

class SpamCheckTest : public MainWindowTest {
protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        windowSize = QSize(1100, 800);
        ASSERT_TRUE(AccountStore::open(session().folders.accountDatabase()).ok());
    }
    // The editor on a corpus newsletter, saved as a message file and opened the usual way.
    frmMain& startOn(const QString& newsletter) {
        return start(saveCorpusMessage(newsletter, "Our spring news", "news.mssx"));
    }
    frmCheckSpam* openCheck() {
        window->Dks_CommandClick("cmdCheckSpam");
        frmCheckSpam* d = window->spamCheck();
        EXPECT_TRUE(d && d->isVisible());
        return d;
    }
    template <class T> static T* child(QWidget* w, const char* name) {
        T* c = w->findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(c, nullptr) << name;
        return c;
    }
};

TEST_F(SpamCheckTest, NewsletterIsScoredByTheRealFilter) {
    if (SpamFilter::program().isEmpty())
        GTEST_SKIP() << "spamassassin is not installed";
    addAccount("Bruno", "bruno@example.org", false);
    addAccount("Anna Rossi", "anna@example.com");
    frmMain& w = startOn("colorlib-legacy-12");
    const bool unsavedBefore = w.DaSalvare();
    frmCheckSpam* d = openCheck();
    ASSERT_NE(d, nullptr);
    auto* accounts = child<QComboBox>(d, "cmbAccount");
    ASSERT_EQ(accounts->count(), 1) << "only active accounts are offered";
    EXPECT_EQ(accounts->itemText(0), "Anna Rossi [anna@example.com]");
    EXPECT_EQ(child<QLabel>(d, "lblScore")->text(), "0.00 / 10.00");
    child<QLineEdit>(d, "txtEmailDestinatario")->setText("bob@example.org");
    child<QCheckBox>(d, "chkContatore")->setChecked(true);

    QSignalSpy finished(d, &frmCheckSpam::testFinished);
    child<QPushButton>(d, "cmdAvviaTest")->click();
    EXPECT_FALSE(child<QPushButton>(d, "cmdAvviaTest")->isEnabled())
        << "fields wait for the filter";
    ASSERT_TRUE(finished.wait(120000));
    ASSERT_TRUE(finished.at(0).at(0).toBool())
        << child<QPlainTextEdit>(d, "txtLog")->toPlainText().toStdString();
    const SpamReport::Report& r = d->report();
    EXPECT_TRUE(r.statusFound);
    EXPECT_EQ(child<QLabel>(d, "lblScore")->text(), SpamReport::scoreLabel(r.score, r.required));
    EXPECT_TRUE(QRegularExpression("^-?\\d+\\.\\d\\d / 5\\.00$")
                    .match(child<QLabel>(d, "lblScore")->text())
                    .hasMatch());
    EXPECT_TRUE(child<QPlainTextEdit>(d, "txtLog")->toPlainText().startsWith("Spam Status.....: "));
    EXPECT_EQ(child<QProgressBar>(d, "PRG")->value(), 100);
    EXPECT_EQ(child<QLabel>(d, "picSiSpam")->isVisible(), r.spam);
    EXPECT_EQ(child<QLabel>(d, "PicNoSpam")->isVisible(), !r.spam);
    EXPECT_FALSE(child<QLabel>(d, "picZeroSpam")->isVisible());
    EXPECT_EQ(child<ScoreBar>(d, "picPrgSpam")->cover(),
              SpamReport::coverExtent(r.score, r.required).value_or(-1));
    EXPECT_TRUE(child<QPushButton>(d, "cmdAvviaTest")->isEnabled());

    const QString folder = session().folders.pathFileImp + "SPAMASS/";
    const QByteArray in = fileBytes(folder + "in.eml");
    EXPECT_TRUE(in.contains("X-MimeOLE: Produced By Microsoft MimeOLE"));
    EXPECT_TRUE(htmlOf(in).contains(
        "/readcount.asp?KEY_INVIO_RND=0000&KEY_INVIO_MITT=000&KEY_INVIO_IDINV=000"));
    EXPECT_TRUE(in.contains("Content-Id: <")) << "the newsletter's images go inline";
    EXPECT_TRUE(fileBytes(folder + "checkspam.sh").contains("spamassassin"));
    EXPECT_EQ(w.DaSalvare(), unsavedBefore) << "the check does not count as a save";
    EXPECT_TRUE(scripted().errorReports.isEmpty());
    d->resize(720, 640);
    EXPECT_TRUE(saveShot(*d, "spam-check.png"));

    // The first check started the program's daemon; the next goes through it, same verdict.
    if (SpamFilter::daemonProgram().isEmpty() || SpamFilter::clientProgram().isEmpty())
        return;
    EXPECT_FALSE(d->lastCheckViaDaemon());
    SpamFilter::Daemon& daemon = frmCheckSpam::daemon();
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return daemon.state() != SpamFilter::Daemon::State::Starting; }, 60000));
    ASSERT_TRUE(daemon.isReady()) << daemon.detail().toStdString();
    const SpamReport::Report first = d->report();
    child<QPushButton>(d, "cmdAvviaTest")->click();
    ASSERT_TRUE(finished.wait(120000));
    ASSERT_TRUE(finished.at(1).at(0).toBool());
    EXPECT_TRUE(d->lastCheckViaDaemon());
    EXPECT_TRUE(fileBytes(folder + "checkspam.sh").contains("spamc -x"));
    EXPECT_EQ(d->report().spam, first.spam);
    EXPECT_DOUBLE_EQ(d->report().score, first.score);
    EXPECT_EQ(d->report().tests, first.tests);
    daemon.stop();
}

TEST_F(SpamCheckTest, CancelEndsTheFilterAndNoAccountWarns) {
    frmMain& w = startOn("leemunroe-responsive-email");
    frmCheckSpam* d = openCheck();
    ASSERT_NE(d, nullptr);
    child<QPushButton>(d, "cmdAvviaTest")->click();
    ASSERT_FALSE(scripted().boxes.isEmpty());
    EXPECT_EQ(scripted().boxes.last().content,
              "No sending account is set up: create one before running the test.");
    EXPECT_FALSE(d->isTesting());

    auto* reply = child<QLineEdit>(d, "txtReply");
    EXPECT_FALSE(reply->isEnabled());
    child<QCheckBox>(d, "chkReplyTo")->setChecked(true);
    EXPECT_TRUE(reply->isEnabled());

    if (SpamFilter::program().isEmpty())
        return;
    addAccount("Anna Rossi", "anna@example.com");
    d->CaricaElencoAccount();
    QSignalSpy finished(d, &frmCheckSpam::testFinished);
    child<QPushButton>(d, "cmdAvviaTest")->click();
    ASSERT_TRUE(d->isTesting());
    EXPECT_FALSE(reply->isEnabled());
    child<QPushButton>(d, "cmdCancel")->click();
    ASSERT_TRUE(finished.wait(30000));
    EXPECT_FALSE(finished.at(0).at(0).toBool());
    EXPECT_TRUE(d->isVisible()) << "Cancel during a test stops the test, not the window";
    EXPECT_TRUE(child<QPlainTextEdit>(d, "txtLog")->toPlainText().contains("cancelled"));
    EXPECT_TRUE(reply->isEnabled());
    (void)w;
}

TEST_F(SpamCheckTest, AccountsWindowAddsChangesAndRemoves) {
    frmMain& w = startOn("leemunroe-responsive-email");
    w.Dks_CommandClick("cmdAccount");
    frmAccount* a = w.accountsWindow();
    ASSERT_TRUE(a && a->isVisible());
    child<QLineEdit>(a, "txtNome")->setText("Anna Rossi");
    child<QLineEdit>(a, "txtEmail")->setText("not an address");
    EXPECT_FALSE(a->cmdSalva_Click());
    EXPECT_TRUE(child<QLabel>(a, "lblErrore")->text().contains("not an address"));
    EXPECT_TRUE(AccountStore().list()->isEmpty());

    child<QLineEdit>(a, "txtEmail")->setText("anna@example.com");
    child<QLineEdit>(a, "txtServer")->setText("smtp.example.com");
    auto* security = child<QComboBox>(a, "cmbSicurezza");
    security->setCurrentIndex(security->findText("(AUTO)"));
    ASSERT_TRUE(a->cmdSalva_Click());
    a->cmdNuovo_Click();
    child<QLineEdit>(a, "txtNome")->setText("Bruno");
    child<QLineEdit>(a, "txtEmail")->setText("bruno@example.org");
    ASSERT_TRUE(a->cmdSalva_Click());
    const QList<Account> two = *AccountStore().list();
    ASSERT_EQ(two.size(), 2);
    EXPECT_EQ(two[0].security, "auto");
    EXPECT_EQ(two[0].smtpServer, "smtp.example.com");
    auto* list = child<QTableWidget>(a, "lstAccount");
    EXPECT_EQ(list->item(0, 5)->text(), "(AUTO)");

    list->selectRow(0);
    child<QLineEdit>(a, "txtEmail")->setText("anna.rossi@example.com");
    ASSERT_TRUE(a->cmdSalva_Click());
    EXPECT_EQ(AccountStore().find(two[0].id)->address, "anna.rossi@example.com");
    EXPECT_TRUE(saveShot(*a, "accounts.png"));
    a->cmdElimina_Click();
    ASSERT_EQ(AccountStore().list()->size(), 1);
    EXPECT_EQ(AccountStore().list()->at(0).displayName, "Bruno");
    EXPECT_EQ(list->rowCount(), 1);
}

TEST_F(SpamCheckTest, ExportWritesTheMessageAsAnEmailWithoutClientMarks) {
    addAccount("Anna Rossi", "anna@example.com");
    frmMain& w = startOn("colorlib-legacy-12");
    const bool unsavedBefore = w.DaSalvare();
    chosenFile = dir.filePath("export/spring news.eml");
    QDir().mkpath(dir.filePath("export"));
    w.Dks_CommandClick("cmdEsportaEml");
    const QByteArray eml = fileBytes(chosenFile);
    EXPECT_TRUE(eml.startsWith("Subject: Our spring news\r\n")) << eml.left(200).toStdString();
    EXPECT_TRUE(eml.contains("From: \"Anna Rossi\" <anna@example.com>"));
    EXPECT_TRUE(eml.contains("Content-Type: text/html; charset=utf-8"));
    EXPECT_TRUE(eml.contains("Content-Id: <"));
    EXPECT_FALSE(eml.contains("X-MimeOLE"));
    EXPECT_FALSE(eml.contains("X-Mailer"));
    EXPECT_EQ(w.DaSalvare(), unsavedBefore);
    EXPECT_TRUE(scripted().errorReports.isEmpty());
}

} // namespace
