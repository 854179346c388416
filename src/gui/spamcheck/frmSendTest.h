#pragma once

#include "core/app/AccountStore.h"
#include "core/spamcheck/SmtpSender.h"

#include <QDialog>
#include <atomic>
#include <functional>
#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QThread;

namespace quillora::gui {

// "Send test": the message as a mailing sends it, to one address, through an account's server.
// The password is asked here each time and kept in memory only. Sending runs away from the
// window, which stays usable, and Cancel stops it.
class frmSendTest : public QDialog {
    Q_OBJECT
public:
    // Composes the message for an account and a recipient; runs on the sending thread, so it
    // must only use what it captured. Returns the message, or an error text.
    struct Composed {
        vmime::shared_ptr<vmime::message> message;
        QString error;
    };
    using Composer = std::function<Composed(const Account& sender, const QString& to)>;
    // Makes the composer for the message as it is now (called on the window's thread).
    using ComposerSource = std::function<std::optional<Composer>()>;

    explicit frmSendTest(ComposerSource source, QWidget* parent = nullptr);
    ~frmSendTest() override;

    // Starts a send with what the fields hold.
    void cmdSend_Click();
    bool isSending() const { return m_thread != nullptr; }
    const smtp::Result& lastResult() const { return m_result; }

    // For tests: where certificates are checked (the system's authorities by default).
    void setAuthorities(const QString& pemFile) { m_authorities = pemFile; }

signals:
    void finished(const smtp::Result& result);

private:
    void loadAccounts();
    void accountChanged();
    void done(const smtp::Result& result, const smtp::Settings& settings);
    void setBusy(bool busy);
    void closeEvent(QCloseEvent* event) override;
    void reject() override;

    ComposerSource m_source;
    QList<Account> m_accounts;
    QThread* m_thread = nullptr;
    std::shared_ptr<std::atomic_bool> m_cancel;
    smtp::Result m_result;
    QByteArray m_trustOnce; // the fingerprint offered for "trust once"
    QString m_authorities;

    QComboBox* cmbAccount = nullptr;
    QLineEdit* txtTo = nullptr;
    QLineEdit* txtPassword = nullptr;
    QCheckBox* chkTrustOnce = nullptr;
    QLabel* lblResult = nullptr;
    QPlainTextEdit* txtLog = nullptr;
    QProgressBar* prgSend = nullptr;
    QPushButton* cmdSend = nullptr;
    QPushButton* cmdCancel = nullptr;
};

} // namespace quillora::gui
