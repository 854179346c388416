// The check before sending, from the main window.
#include "core/app/bFunctions.h"
#include "core/spamcheck/TestMail.h"
#include "gui/app/Session.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmMain.h"
#include "gui/message/frmAllegati.h"
#include "gui/spamcheck/frmCheckMessage.h"
#include "gui/spamcheck/frmSendTest.h"

#include <QTabWidget>

namespace quillora::gui {

std::optional<check::CheckInput> frmMain::checkInput() {
    collectDocument();
    const std::optional<QString> body = bodyHtml();
    if (!body) {
        reportError(QStringLiteral("VerificaMessaggio"),
                    QStringLiteral("The visual page did not give back its HTML in time"));
        return std::nullopt;
    }
    check::CheckInput input;
    input.subject = m_doc.subject;
    input.html = *body;
    // Where the pages resolve relative references.
    input.baseFolder = workFolder();
    input.attachments = m_doc.attachments;
    return input;
}

frmCheckMessage* frmMain::checkWindow() const {
    return m_check;
}

void frmMain::VerificaMessaggio() {
    if (!m_check) {
        QPointer<frmMain> self(this);
        m_check = new frmCheckMessage(
            [self]() -> std::optional<check::CheckInput> {
                if (!self)
                    return std::nullopt;
                return self->checkInput();
            },
            this);
        m_check->setAttribute(Qt::WA_DeleteOnClose);
        connect(m_check, &frmCheckMessage::elementChosen, this, &frmMain::selectFinding);
    }
    m_check->runCheck();
    m_check->show();
    m_check->raise();
    m_check->activateWindow();
}

void frmMain::selectFinding(const check::ElementRef& element) {
    if (m_page != PageVisual)
        Tbs->setCurrentIndex(PageVisual); // copies the body back into the visual page
    if (m_page != PageVisual)
        return; // the visual page could not take the body: the source page is shown
    DHTML->selectElement(element.tag, element.index);
    DHTML->setFocus();
}

frmSendTest* frmMain::sendTestWindow() const {
    return m_sendTest;
}

void frmMain::InvioProva() {
    if (!m_sendTest) {
        QPointer<frmMain> self(this);
        m_sendTest = new frmSendTest(
            [self]() -> std::optional<frmSendTest::Composer> {
                if (!self)
                    return std::nullopt;
                self->collectDocument();
                const std::optional<QString> body = self->bodyHtml();
                if (!body) {
                    self->reportError(
                        QStringLiteral("InvioProva"),
                        QStringLiteral("The visual page did not give back its HTML in time"));
                    return std::nullopt;
                }
                TestMail::Content content;
                content.subject = self->m_doc.subject;
                content.priority = self->m_doc.priorityCode();
                content.attachments = self->m_doc.attachments;
                content.body = *body;
                TestMail::Options options;
                // What readers get: no spam-check marks, no read counter.
                options.clientMarks = false;
                options.readCounter = false;
                options.machineName = bFunctions::GetNamePC();
                options.baseFolder = self->workFolder();
                return [content, options](const Account& sender,
                                          const QString& to) -> frmSendTest::Composed {
                    TestMail::Options o = options;
                    o.sender = sender;
                    o.recipientAddress = to;
                    const TestMail::Result r = TestMail::compose(content, o);
                    return {r.ok() ? r.message : nullptr, r.error};
                };
            },
            this);
        m_sendTest->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_sendTest->show();
    m_sendTest->raise();
    m_sendTest->activateWindow();
}

} // namespace quillora::gui
