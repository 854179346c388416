#include "gui/spamcheck/frmCheckSpam.h"

#include "core/app/AccountStore.h"
#include "core/app/bError.h"
#include "core/app/bFunctions.h"
#include "core/spamcheck/TestMail.h"
#include "gui/app/LanguageApplier.h"
#include "gui/app/Reported.h"
#include "gui/app/Session.h"
#include "gui/app/WindowHelpers.h"
#include "gui/app/frmMessage.h"
#include "gui/spamcheck/frmAccount.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLinearGradient>
#include <QPainter>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

constexpr const char* kNoScore = "0.00 / 10.00";

QLabel* verdictPicture(QWidget* parent, const char* name, const char* theme,
                       QStyle::StandardPixmap fallback, const char* tip) {
    auto* l = new QLabel(parent);
    l->setObjectName(QString::fromLatin1(name));
    const QIcon icon =
        QIcon::fromTheme(QString::fromLatin1(theme), parent->style()->standardIcon(fallback));
    l->setPixmap(icon.pixmap(48, 48));
    l->setToolTip(QString::fromUtf8(tip));
    l->setFixedSize(52, 52);
    l->setAlignment(Qt::AlignCenter);
    return l;
}

} // namespace

ScoreBar::ScoreBar(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("picPrgSpam"));
    setMinimumSize(220, 18);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    picPrgSpam2 = new QWidget(this);
    picPrgSpam2->setObjectName(QStringLiteral("picPrgSpam2"));
    picPrgSpam2->setAutoFillBackground(true);
    QPalette p = picPrgSpam2->palette();
    p.setColor(QPalette::Window, QColor(0xe4, 0xe4, 0xe4));
    picPrgSpam2->setPalette(p);
    placeCover();
}

void ScoreBar::setCover(int extent) {
    m_cover = extent;
    placeCover();
}

void ScoreBar::placeCover() {
    // The cover takes the bar's size, then its extent; beyond 100 it simply covers it all.
    const int covered = width() * std::clamp(m_cover, 0, 100) / 100;
    picPrgSpam2->setGeometry(width() - covered, 0, covered, height());
}

void ScoreBar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeCover();
}

void ScoreBar::paintEvent(QPaintEvent*) {
    QPainter p(this);
    QLinearGradient g(0, 0, width(), 0);
    g.setColorAt(0.0, QColor(0x2e, 0xa0, 0x43));
    g.setColorAt(0.55, QColor(0xf2, 0xc1, 0x1d));
    g.setColorAt(1.0, QColor(0xd3, 0x2f, 0x2f));
    p.fillRect(rect(), g);
    p.setPen(palette().color(QPalette::Mid));
    p.drawRect(rect().adjusted(0, 0, -1, -1));
}

frmCheckSpam::frmCheckSpam(Host host, QWidget* parent) : QDialog(parent), m_host(std::move(host)) {
    setObjectName(QStringLiteral("frmCheckSpam"));
    setWindowTitle(QStringLiteral("Spam check"));
    setModal(true);
    m_folder = session().folders.pathFileImp + QString::fromLatin1(SpamFilter::kFolderName) + u'/';

    const auto label = [this](const char* name, const char* caption) {
        auto* l = new QLabel(QString::fromUtf8(caption), this);
        l->setObjectName(QString::fromLatin1(name));
        return l;
    };
    const auto lineEdit = [this](const char* name) {
        auto* e = new QLineEdit(this);
        e->setObjectName(QString::fromLatin1(name));
        return e;
    };
    const auto checkBox = [this](const char* name, const char* caption) {
        auto* c = new QCheckBox(QString::fromUtf8(caption), this);
        c->setObjectName(QString::fromLatin1(name));
        return c;
    };

    cmbAccount = new QComboBox(this);
    cmbAccount->setObjectName(QStringLiteral("cmbAccount"));
    cmbAccount->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    cmdAccount = new QPushButton(QStringLiteral("&Accounts..."), this);
    cmdAccount->setObjectName(QStringLiteral("cmdAccount"));
    connect(cmdAccount, &QPushButton::clicked, this, &frmCheckSpam::openAccounts);
    txtNomeDestinatario = lineEdit("txtNomeDestinatario");
    txtEmailDestinatario = lineEdit("txtEmailDestinatario");
    txtEmailDestinatario->setPlaceholderText(QStringLiteral("name@example.com"));
    chkReplyTo = checkBox("chkReplyTo", "Reply to:");
    txtReply = lineEdit("txtReply");
    txtReply->setEnabled(false);
    connect(chkReplyTo, &QCheckBox::toggled, this, &frmCheckSpam::chkReplyTo_Click);
    chkConfermaLettura = checkBox("chkConfermaLettura", "Request a read receipt");
    chkContatore = checkBox("chkContatore", "Insert the read counter");

    auto* grid = new QGridLayout;
    auto* sender = new QHBoxLayout;
    sender->addWidget(cmbAccount, 1);
    sender->addWidget(cmdAccount);
    grid->addWidget(label("lblMittente", "Sender:"), 0, 0);
    grid->addLayout(sender, 0, 1);
    grid->addWidget(label("lblNomeDest", "Recipient name:"), 1, 0);
    grid->addWidget(txtNomeDestinatario, 1, 1);
    grid->addWidget(label("lblEmailDest", "Recipient e-mail:"), 2, 0);
    grid->addWidget(txtEmailDestinatario, 2, 1);
    grid->addWidget(chkReplyTo, 3, 0);
    grid->addWidget(txtReply, 3, 1);
    grid->addWidget(chkConfermaLettura, 4, 1);
    grid->addWidget(chkContatore, 5, 1);
    grid->setColumnStretch(1, 1);

    cmdAvviaTest = new QPushButton(QStringLiteral("&Start test"), this);
    cmdAvviaTest->setObjectName(QStringLiteral("cmdAvviaTest"));
    cmdAvviaTest->setDefault(true);
    connect(cmdAvviaTest, &QPushButton::clicked, this, &frmCheckSpam::cmdAvviaTest_Click);
    cmdCancel = new QPushButton(QStringLiteral("Close"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(cmdCancel, &QPushButton::clicked, this, &frmCheckSpam::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdAvviaTest);
    buttons->addWidget(cmdCancel);

    PRG = new QProgressBar(this);
    PRG->setObjectName(QStringLiteral("PRG"));
    PRG->setRange(0, 100);
    txtLog = new QPlainTextEdit(this);
    txtLog->setObjectName(QStringLiteral("txtLog"));
    txtLog->setReadOnly(true);
    txtLog->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    txtLog->setMinimumSize(560, 200);
    txtLog->setLineWrapMode(QPlainTextEdit::NoWrap);

    picZeroSpam = verdictPicture(this, "picZeroSpam", "dialog-question",
                                 QStyle::SP_MessageBoxQuestion, "No result yet");
    PicNoSpam = verdictPicture(this, "PicNoSpam", "security-high", QStyle::SP_DialogApplyButton,
                               "Not spam");
    picSiSpam =
        verdictPicture(this, "picSiSpam", "security-low", QStyle::SP_MessageBoxCritical, "Spam");
    picPrgSpam = new ScoreBar(this);
    lblScore = new QLabel(QString::fromLatin1(kNoScore), this);
    lblScore->setObjectName(QStringLiteral("lblScore"));
    QFont big = lblScore->font();
    big.setPointSizeF(big.pointSizeF() * 1.4);
    big.setBold(true);
    lblScore->setFont(big);
    auto* verdict = new QHBoxLayout;
    verdict->addWidget(picZeroSpam);
    verdict->addWidget(PicNoSpam);
    verdict->addWidget(picSiSpam);
    auto* score = new QVBoxLayout;
    score->addWidget(lblScore);
    score->addWidget(picPrgSpam);
    verdict->addLayout(score, 1);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addLayout(buttons);
    layout->addWidget(PRG);
    layout->addWidget(txtLog, 1);
    layout->addLayout(verdict);

    applyWindowTexts(this, session().texts);
    // Form_Load
    CaricaElencoAccount();
    resetResult();
    PRG->setValue(0);
}

frmCheckSpam::~frmCheckSpam() = default;

QString frmCheckSpam::text(const char* key, const char* fallback) const {
    const QString t = session().texts.get(QString::fromLatin1(key));
    return t.isEmpty() ? QString::fromUtf8(fallback) : t;
}

void frmCheckSpam::warn(const QString& instruction, const QString& content) {
    bMessage::ShowMessage(QStringLiteral("Corvanta"), instruction, content, QString(),
                          quillora::bMessage::kIconWarning, quillora::bMessage::kIconNone, this);
}

void frmCheckSpam::CaricaElencoAccount() {
    const QVariant previous = cmbAccount->currentData();
    cmbAccount->clear();
    if (!AccountStore::isOpen())
        return;
    const std::optional<QList<Account>> all = AccountStore().list();
    for (const Account& a : all.value_or(QList<Account>())) {
        if (a.active)
            cmbAccount->addItem(a.displayName + QStringLiteral(" [") + a.address + u']', a.id);
    }
    const int again = cmbAccount->findData(previous);
    cmbAccount->setCurrentIndex(again >= 0 ? again : (cmbAccount->count() > 0 ? 0 : -1));
}

void frmCheckSpam::chkReplyTo_Click() {
    txtReply->setEnabled(chkReplyTo->isChecked() && !m_testing);
}

void frmCheckSpam::openAccounts() {
    if (m_accounts) {
        m_accounts->raise();
        return;
    }
    m_accounts = new frmAccount(this);
    m_accounts->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_accounts, &frmAccount::accountsChanged, this, &frmCheckSpam::CaricaElencoAccount);
    m_accounts->open();
}

void frmCheckSpam::setFieldsEnabled(bool enabled) {
    for (QWidget* w : std::initializer_list<QWidget*>{cmdAvviaTest, cmbAccount, cmdAccount,
                                                      txtNomeDestinatario, txtEmailDestinatario,
                                                      chkReplyTo, chkConfermaLettura, chkContatore})
        w->setEnabled(enabled);
    txtReply->setEnabled(enabled && chkReplyTo->isChecked());
    cmdCancel->setText(enabled ? text("spamChiudi", "Close") : text("spamAnnulla", "Cancel"));
}

void frmCheckSpam::resetResult() {
    txtLog->clear();
    picPrgSpam->setVisible(false);
    picPrgSpam->setCover(100);
    picZeroSpam->setVisible(true);
    PicNoSpam->setVisible(false);
    picSiSpam->setVisible(false);
    lblScore->setText(QString::fromLatin1(kNoScore));
    m_report = SpamReport::Report{};
}

void frmCheckSpam::endTest(bool scored) {
    m_testing = false;
    setFieldsEnabled(true);
    emit testFinished(scored);
}

void frmCheckSpam::cmdAvviaTest_Click() {
    if (m_testing)
        return;
    if (cmbAccount->count() == 0) {
        warn(text("spamMsgAvvisoTitle", "Spam check"),
             text("spamMsgAvviso", "No sending account is set up: create one before running "
                                   "the test."));
        return;
    }
    if (SpamFilter::program().isEmpty()) {
        warn(text("spamMsgAvvisoTitle", "Spam check"),
             text("spamMsgNoFiltro", "SpamAssassin is not installed. Install the Debian package "
                                     "\"spamassassin\" (sudo apt-get install spamassassin) and "
                                     "run the test again."));
        return;
    }
    m_testing = true;
    setFieldsEnabled(false);
    PRG->setValue(0);
    resetResult();

    bool composed = false;
    reported(QStringLiteral("frmCheckSpam.cmdAvviaTest_Click()"), this, [&] {
        QDir().mkpath(m_folder);
        const QString tmp = m_folder + QString::fromLatin1(SpamFilter::kMessageFile);
        QFile::remove(tmp);
        if (!m_host.saveMessage || !m_host.saveMessage(tmp) || !QFile::exists(tmp)) {
            warn(text("spamMsgAvvisoTitle", "Spam check"),
                 text("ErroreSalvataggio", "The message cannot be saved."));
            return;
        }
        const std::optional<Account> account =
            AccountStore().find(cmbAccount->currentData().toLongLong());
        if (!account) {
            warn(text("spamMsgAvvisoTitle", "Spam check"),
                 text("spamMsgAvviso", "No sending account is set up: create one before "
                                       "running the test."));
            return;
        }
        const TestMail::ReadResult read = TestMail::readFile(tmp);
        if (!read.ok())
            throw std::runtime_error(read.error.toStdString());
        TestMail::Options o;
        o.sender = *account;
        o.recipientName = txtNomeDestinatario->text();
        o.recipientAddress = txtEmailDestinatario->text();
        o.replyTo = chkReplyTo->isChecked() ? txtReply->text() : QString();
        o.readReceipt = chkConfermaLettura->isChecked();
        o.readCounter = chkContatore->isChecked();
        o.readCounterHost = session().links.readCounter;
        o.machineName = bFunctions::GetNamePC();
        o.baseFolder = m_host.baseFolder ? m_host.baseFolder() : QString();
        const TestMail::Result mail = TestMail::compose(read.content, o);
        if (!mail.ok())
            throw std::runtime_error(mail.error.toStdString());
        const QString in = m_folder + QString::fromLatin1(SpamFilter::kInputFile);
        QFile::remove(in);
        PRG->setValue(60);
        QString error;
        if (!TestMail::writeEml(*mail.message, in, &error))
            throw std::runtime_error(error.toStdString());
        PRG->setValue(70);
        for (const QString& missing : mail.missingImages)
            txtLog->appendPlainText(text("spamImmagineMancante", "Image not found, left as a "
                                                                 "link:") +
                                    u' ' + QDir::toNativeSeparators(missing));
        composed = true;
    });
    if (!composed) {
        endTest(false);
        return;
    }
    CheckSpam();
}

SpamFilter::Daemon& frmCheckSpam::daemon() {
    static QPointer<SpamFilter::Daemon> instance;
    if (!instance)
        instance = new SpamFilter::Daemon(QCoreApplication::instance());
    return *instance;
}

void frmCheckSpam::startDaemon(bool localOnly) {
    // A daemon that keeps failing to start is not tried again: the filter by itself still works.
    static int failedStarts = 0;
    SpamFilter::Daemon& d = daemon();
    if (failedStarts >= 2 || d.serves(m_folder, localOnly) ||
        SpamFilter::daemonProgram().isEmpty() || SpamFilter::clientProgram().isEmpty())
        return;
    if (d.state() == SpamFilter::Daemon::State::Starting && d.folder() == m_folder)
        return;
    connect(
        &d, &SpamFilter::Daemon::failed, this,
        [&d] {
            ++failedStarts;
            bError::wrtErrFree(QStringLiteral("CheckSpam() - daemon: ") + d.detail());
        },
        Qt::SingleShotConnection);
    if (!d.start(m_folder, localOnly)) {
        ++failedStarts;
        bError::wrtErrFree(QStringLiteral("CheckSpam() - daemon: ") + d.detail());
    }
}

void frmCheckSpam::CheckSpam() {
    PRG->setValue(80);
    const bool localOnly = !SpamFilter::dnsAnswers();
    const QString socket = daemon().serves(m_folder, localOnly) ? daemon().socketPath() : QString();
    m_run = new SpamFilter::Run(this);
    connect(m_run, &SpamFilter::Run::finished, this, &frmCheckSpam::filterDone,
            Qt::QueuedConnection);
    bError::wrtErrFree(QStringLiteral("CheckSpam()%1%2")
                           .arg(localOnly ? QStringLiteral(" - local tests only") : QString(),
                                socket.isEmpty() ? QString() : QStringLiteral(" - daemon")));
    m_run->start(m_folder, localOnly, socket);
}

void frmCheckSpam::filterDone() {
    const SpamFilter::Outcome outcome = m_run->outcome();
    m_run->deleteLater();
    m_run = nullptr;
    PRG->setValue(90);
    if (outcome.failure == SpamFilter::Failure::Cancelled) {
        txtLog->appendPlainText(text("spamAnnullato", "The test was cancelled."));
        endTest(false);
        return;
    }
    if (!outcome.ok()) {
        warn(text("spamMsgAvvisoTitle", "Spam check"),
             text("spamMsgErroreControllo",
                  "The spam filter returned no result. Check that SpamAssassin is installed.") +
                 (outcome.detail.isEmpty() ? QString() : QStringLiteral("\r\n") + outcome.detail));
        endTest(false);
        return;
    }
    m_viaDaemon = outcome.viaDaemon;
    // Later checks go through the daemon; it starts after this one, which it does not slow.
    if (!outcome.viaDaemon)
        startDaemon(outcome.localOnly);
    bool shown = false;
    reported(QStringLiteral("frmCheckSpam.CheckSpam()"), this, [&] {
        m_report = outcome.report;
        const QString earlier = txtLog->toPlainText();
        QString log = SpamReport::logText(m_report);
        if (outcome.localOnly)
            log += QStringLiteral("\r\n\r\n") +
                   text("spamSoloLocale", "No name server answers: the filter ran its local "
                                          "tests only.");
        if (!earlier.isEmpty())
            log += QStringLiteral("\r\n") + earlier;
        txtLog->setPlainText(log);
        const std::optional<int> cover = SpamReport::coverExtent(m_report.score, m_report.required);
        if (!cover)
            throw std::runtime_error("Division by zero");
        picPrgSpam->setCover(*cover);
        picPrgSpam->setVisible(true);
        picSiSpam->setVisible(m_report.spam);
        PicNoSpam->setVisible(!m_report.spam);
        picZeroSpam->setVisible(false);
        lblScore->setText(SpamReport::scoreLabel(m_report.score, m_report.required));
        shown = true;
    });
    PRG->setValue(100);
    endTest(shown);
}

void frmCheckSpam::reject() {
    // During a test, Cancel ends the filter; the window stays to show that it stopped.
    if (m_testing) {
        if (m_run)
            m_run->cancel();
        return;
    }
    QDialog::reject();
}

} // namespace quillora::gui
