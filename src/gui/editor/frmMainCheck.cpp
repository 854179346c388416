// The check before sending, from the main window.
#include "gui/app/Session.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmMain.h"
#include "gui/message/frmAllegati.h"
#include "gui/spamcheck/frmCheckMessage.h"

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

} // namespace quillora::gui
