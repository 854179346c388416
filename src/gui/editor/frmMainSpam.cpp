// The spam check, the sender accounts and the export of the message as an e-mail file.
#include "core/app/AccountStore.h"
#include "core/app/bFunctions.h"
#include "core/message/MessageFile.h"
#include "core/spamcheck/TestMail.h"
#include "gui/app/Dialogs.h"
#include "gui/app/Session.h"
#include "gui/app/frmMessage.h"
#include "gui/editor/frmMain.h"
#include "gui/spamcheck/frmAccount.h"
#include "gui/spamcheck/frmCheckSpam.h"

#include <QApplication>
#include <QTemporaryDir>

namespace quillora::gui {

namespace {

QString textOr(const Texts& texts, const char* key, const char* fallback) {
    const QString t = texts.get(QString::fromLatin1(key));
    return t.isEmpty() ? QString::fromUtf8(fallback) : t;
}

} // namespace

frmCheckSpam* frmMain::spamCheck() const {
    return m_spamCheck;
}

frmAccount* frmMain::accountsWindow() const {
    return m_accounts;
}

bool frmMain::SalvaMessaggioPerCheckSpam(const QString& path) {
    collectDocument();
    const std::optional<QString> body = bodyHtml();
    if (!body) {
        reportError(QStringLiteral("SalvaMessaggioPerCheckSpam"),
                    QStringLiteral("The visual page did not give back its HTML in time"));
        return false;
    }
    MessageDocument copy = m_doc;
    copy.body = *body;
    MessageFile::SaveOptions options;
    options.baseFolder = workFolder();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const MessageFile::SaveResult r = MessageFile::SalvaMessaggioPerCheckSpam(copy, path, options);
    QApplication::restoreOverrideCursor();
    if (!r.ok()) {
        reportError(QStringLiteral("SalvaMessaggioPerCheckSpam"), r.description);
        return false;
    }
    return true;
}

void frmMain::TestAntispam() {
    if (m_spamCheck) {
        m_spamCheck->raise();
        return;
    }
    frmCheckSpam::Host host;
    host.saveMessage = [this](const QString& path) { return SalvaMessaggioPerCheckSpam(path); };
    host.baseFolder = [this] { return workFolder(); };
    m_spamCheck = new frmCheckSpam(std::move(host), this);
    m_spamCheck->setAttribute(Qt::WA_DeleteOnClose);
    // Window-modal without a nested event loop: the filter's end arrives through this loop.
    m_spamCheck->open();
}

void frmMain::GestioneAccount() {
    if (m_accounts) {
        m_accounts->raise();
        return;
    }
    m_accounts = new frmAccount(this);
    m_accounts->setAttribute(Qt::WA_DeleteOnClose);
    m_accounts->open();
}

void frmMain::EsportaEml() {
    // The sender is the first account offered; without one, the accounts window opens.
    std::optional<Account> sender;
    if (AccountStore::isOpen()) {
        for (const Account& a : AccountStore().list().value_or(QList<Account>())) {
            if (a.active) {
                sender = a;
                break;
            }
        }
    }
    if (!sender) {
        bMessage::ShowMessage(
            QStringLiteral("Corvanta"), textOr(m_texts, "EsportaEmlTitolo", "Export as e-mail"),
            textOr(m_texts, "EsportaEmlNoAccount",
                   "No sending account is set up: create one, the e-mail needs a sender."),
            QString(), quillora::bMessage::kIconWarning, quillora::bMessage::kIconNone, this);
        if (AccountStore::isOpen())
            GestioneAccount();
        return;
    }
    const QString path = chooseFile(textOr(m_texts, "EsportaEmlTitolo", "Export as e-mail"),
                                    QStringLiteral("E-mail message (*.eml)|*.eml|"), true);
    if (path.isEmpty())
        return;
    QTemporaryDir scratch;
    const QString tmp = scratch.filePath(QString::fromLatin1(SpamFilter::kMessageFile));
    if (!scratch.isValid() || !SalvaMessaggioPerCheckSpam(tmp))
        return;
    const TestMail::ReadResult read = TestMail::readFile(tmp);
    if (!read.ok()) {
        reportError(QStringLiteral("EsportaEml"), read.error);
        return;
    }
    TestMail::Options o;
    o.sender = *sender;
    o.clientMarks = false;
    o.machineName = bFunctions::GetNamePC();
    o.baseFolder = workFolder();
    const TestMail::Result mail = TestMail::compose(read.content, o);
    QString error = mail.error;
    if (!mail.ok() || !TestMail::writeEml(*mail.message, path, &error))
        reportError(QStringLiteral("EsportaEml"), error);
}

} // namespace quillora::gui
