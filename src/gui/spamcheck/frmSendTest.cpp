#include "gui/spamcheck/frmSendTest.h"

#include "core/spamcheck/SendSettings.h"
#include "gui/app/Session.h"
#include "gui/app/ThemeIcons.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QThread>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

using namespace Qt::StringLiterals;

QString settingsFile() {
    return session().folders.pathFileImp + QString::fromLatin1(SendSettings::kFileName);
}

QString text(const char* key) {
    return session().texts.get(QString::fromLatin1(key));
}

bool plausibleAddress(const QString& address) {
    static const QRegularExpression re(u"^[^@\\s]+@[^@\\s]+\\.[^@\\s]+$"_s);
    return re.match(address).hasMatch();
}

} // namespace

frmSendTest::frmSendTest(ComposerSource source, QWidget* parent)
    : QDialog(parent), m_source(std::move(source)) {
    setObjectName(u"frmSendTest"_s);
    setWindowTitle(text("sndTitle"));
    setWindowIcon(themeIcon(u"mail-send"_s));
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    cmbAccount = new QComboBox(this);
    cmbAccount->setObjectName(u"cmbAccount"_s);
    txtTo = new QLineEdit(this);
    txtTo->setObjectName(u"txtTo"_s);
    txtPassword = new QLineEdit(this);
    txtPassword->setObjectName(u"txtPassword"_s);
    txtPassword->setEchoMode(QLineEdit::Password);
    form->addRow(text("sndAccount"), cmbAccount);
    form->addRow(text("sndTo"), txtTo);
    form->addRow(text("sndPassword"), txtPassword);
    layout->addLayout(form);
    chkTrustOnce = new QCheckBox(text("sndTrustOnce"), this);
    chkTrustOnce->setObjectName(u"chkTrustOnce"_s);
    chkTrustOnce->hide();
    layout->addWidget(chkTrustOnce);
    lblResult = new QLabel(this);
    lblResult->setObjectName(u"lblResult"_s);
    lblResult->setWordWrap(true);
    lblResult->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(lblResult);
    txtLog = new QPlainTextEdit(this);
    txtLog->setObjectName(u"txtLog"_s);
    txtLog->setReadOnly(true);
    txtLog->setFont(QFont(u"Monospace"_s, 8));
    layout->addWidget(txtLog, 1);
    prgSend = new QProgressBar(this);
    prgSend->setObjectName(u"prgSend"_s);
    prgSend->setRange(0, 0);
    prgSend->setTextVisible(false);
    prgSend->hide();
    layout->addWidget(prgSend);
    auto* buttons = new QHBoxLayout;
    cmdSend = new QPushButton(themeIcon(u"mail-send"_s), text("sndSend"), this);
    cmdSend->setObjectName(u"cmdSend"_s);
    cmdSend->setDefault(true);
    cmdCancel = new QPushButton(text("frmImpDaImg.cmdCancel.Caption").isEmpty()
                                    ? u"Cancel"_s
                                    : text("frmImpDaImg.cmdCancel.Caption"),
                                this);
    cmdCancel->setObjectName(u"cmdCancel"_s);
    buttons->addStretch(1);
    buttons->addWidget(cmdSend);
    buttons->addWidget(cmdCancel);
    layout->addLayout(buttons);
    resize(560, 420);

    connect(cmdSend, &QPushButton::clicked, this, &frmSendTest::cmdSend_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmSendTest::reject);
    connect(cmbAccount, &QComboBox::currentIndexChanged, this, &frmSendTest::accountChanged);
    loadAccounts();
}

frmSendTest::~frmSendTest() {
    if (m_thread) {
        m_cancel->store(true);
        m_thread->wait();
    }
}

void frmSendTest::loadAccounts() {
    const SendSettings settings = SendSettings::read(settingsFile());
    m_accounts.clear();
    cmbAccount->clear();
    if (AccountStore::isOpen()) {
        for (const Account& a : AccountStore().list().value_or(QList<Account>())) {
            if (!a.active)
                continue;
            m_accounts << a;
            cmbAccount->addItem(a.displayName + u" ["_s + a.address + u"]"_s);
            if (a.id == settings.testAccount)
                cmbAccount->setCurrentIndex(cmbAccount->count() - 1);
        }
    }
    txtTo->setText(settings.testAddress);
    accountChanged();
    if (m_accounts.isEmpty()) {
        lblResult->setText(text("sndNoAccount"));
        cmdSend->setEnabled(false);
    }
}

void frmSendTest::accountChanged() {
    const int i = cmbAccount->currentIndex();
    if (i < 0 || i >= m_accounts.size())
        return;
    const Account& a = m_accounts[i];
    txtPassword->setEnabled(a.authentication.toLower() != u"none"_s);
    if (txtTo->text().trimmed().isEmpty())
        txtTo->setText(a.address);
    chkTrustOnce->hide();
    chkTrustOnce->setChecked(false);
    m_trustOnce.clear();
}

void frmSendTest::cmdSend_Click() {
    if (m_thread)
        return;
    const int i = cmbAccount->currentIndex();
    if (i < 0 || i >= m_accounts.size()) {
        lblResult->setText(text("sndNoAccount"));
        return;
    }
    const QString to = txtTo->text().trimmed();
    if (!plausibleAddress(to)) {
        lblResult->setText(text("sndBadAddress"));
        txtTo->setFocus();
        return;
    }
    const std::optional<Composer> composer = m_source ? m_source() : std::nullopt;
    if (!composer)
        return;
    const Account account = m_accounts[i];
    smtp::Settings settings = smtp::settingsFor(account, txtPassword->text());
    settings.to = {to};
    if (chkTrustOnce->isVisible() && chkTrustOnce->isChecked())
        settings.trustedCertificate = m_trustOnce;
    if (!m_authorities.isEmpty())
        settings.authorities = m_authorities;

    SendSettings remembered = SendSettings::read(settingsFile());
    remembered.testAddress = to;
    remembered.testAccount = account.id;
    remembered.write(settingsFile());

    m_cancel = std::make_shared<std::atomic_bool>(false);
    auto result = std::make_shared<smtp::Result>();
    m_thread =
        QThread::create([composer = *composer, account, to, settings, cancel = m_cancel, result] {
            const Composed c = composer(account, to);
            if (!c.message) {
                result->outcome = smtp::Outcome::Failed;
                result->detail = c.error;
                return;
            }
            *result = smtp::send(c.message, settings, cancel.get());
        });
    connect(m_thread, &QThread::finished, this, [this, result, settings] {
        m_thread->deleteLater();
        m_thread = nullptr;
        done(*result, settings);
    });
    lblResult->setText(text("sndSending"));
    txtLog->clear();
    setBusy(true);
    m_thread->start();
}

void frmSendTest::done(const smtp::Result& result, const smtp::Settings& settings) {
    setBusy(false);
    m_result = result;
    lblResult->setText(smtp::describe(result, settings, session().texts));
    txtLog->setPlainText(result.transcript.join(u'\n'));
    if (result.outcome == smtp::Outcome::BadCertificate && !result.certificate.isEmpty()) {
        m_trustOnce = result.certificate;
        chkTrustOnce->setText(text("sndTrustOnce") + u" (SHA-256 "_s +
                              QString::fromLatin1(result.certificate.toHex(':').left(23)) +
                              u"…)"_s);
        chkTrustOnce->setChecked(false);
        chkTrustOnce->show();
    }
    emit finished(result);
}

void frmSendTest::setBusy(bool busy) {
    prgSend->setVisible(busy);
    cmdSend->setEnabled(!busy);
    cmbAccount->setEnabled(!busy);
    txtTo->setEnabled(!busy);
    chkTrustOnce->setEnabled(!busy);
}

void frmSendTest::reject() {
    if (m_thread) {
        // The send ends at its next wait for the server and reports "cancelled".
        m_cancel->store(true);
        cmdCancel->setEnabled(false);
        connect(
            this, &frmSendTest::finished, cmdCancel, [this] { cmdCancel->setEnabled(true); },
            Qt::SingleShotConnection);
        return;
    }
    QDialog::reject();
}

void frmSendTest::closeEvent(QCloseEvent* event) {
    if (m_thread) {
        m_cancel->store(true);
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

} // namespace quillora::gui
