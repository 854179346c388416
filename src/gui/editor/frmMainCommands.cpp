// The command dispatcher of the main window and the routines that keep commands in step.
#include "core/editor/CommandTable.h"
#include "core/editor/DhtmlCommands.h"
#include "gui/app/Dialogs.h"
#include "gui/app/LanguageApplier.h"
#include "gui/app/Reported.h"
#include "gui/app/Session.h"
#include "gui/app/WindowHelpers.h"
#include "gui/app/frmInfoSu.h"
#include "gui/app/frmMessage.h"
#include "gui/editor/SourceView.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmMain.h"

#include <QAction>
#include <QComboBox>
#include <QDesktopServices>
#include <QMenu>
#include <QTabWidget>
#include <QToolBar>

namespace quillora::gui {

namespace {

void runSourceCommand(SourceView* code, int decmd) {
    switch (decmd) {
    case DECMD_UNDO:
        code->undo();
        break;
    case DECMD_REDO:
        code->redo();
        break;
    case DECMD_CUT:
        code->cut();
        break;
    case DECMD_COPY:
        code->copy();
        break;
    case DECMD_PASTE:
        code->paste();
        break;
    case DECMD_SELECTALL:
        code->selectAll(true);
        break;
    case DECMD_FINDTEXT:
        code->findDialog();
        break;
    default:
        break;
    }
}

} // namespace

void frmMain::Dks_CommandClick(const QString& id) {
    reported(QStringLiteral("frmMain.Dks_CommandClick()"), this, [&] { runCommand(id); });
}

void frmMain::runCommand(const QString& id) {
    using editor::Action;
    const std::optional<editor::Command> found = editor::find(id);
    if (!found)
        return;
    const editor::Command& c = *found;
    switch (c.action) {
    case Action::NewMessage:
        if (DaSalvare())
            askToSave();
        NuovoMessaggio();
        break;
    case Action::OpenMessage:
        if (DaSalvare())
            askToSave();
        ApriMessaggio();
        break;
    case Action::Save:
        if (m_doc.currentPath.isEmpty())
            SalvaMessaggioConNome();
        else
            RiSalva();
        break;
    case Action::SaveAs:
        SalvaMessaggioConNome();
        break;
    case Action::Print:
        DHTML->printDocument();
        break;
    case Action::Exit:
        ChiudiEDITOR();
        break;
    case Action::EditCommand:
        if (m_page == PageVisual) {
            if (c.decmd == DECMD_FINDTEXT)
                DHTML->findText(QString());
            else
                DHTML->execCommand(c.decmd);
        } else if (m_page == PageSource) {
            runSourceCommand(sourcePage(), c.decmd);
        } else {
            break; // the preview is never edited
        }
        if (c.marksModified)
            Modificato();
        break;
    case Action::SurfaceCommand:
        if (m_page == PageVisual)
            DHTML->execCommand(c.decmd);
        break;
    case Action::Snippet:
    case Action::MergeField:
        InsertHtmlCode(QString::fromUtf8(c.text));
        break;
    case Action::FontName:
        DHTML->execCommand(c.decmd, m_bars.fontName->currentText());
        break;
    case Action::FontSize:
        DHTML->execCommand(c.decmd, m_bars.fontSize->currentText());
        break;
    case Action::ShowDetails:
        DHTML->setShowDetails(m_bars.require(id)->isChecked());
        break;
    case Action::ShowBorders:
        DHTML->setShowBorders(m_bars.require(id)->isChecked());
        break;
    case Action::PriorityLow:
    case Action::PriorityHigh: {
        QAction* self = m_bars.require(id);
        QAction* other =
            m_bars.require(c.action == Action::PriorityLow ? QStringLiteral("cmdPriAlta")
                                                           : QStringLiteral("cmdPriBassa"));
        if (self->isChecked())
            other->setChecked(false);
        m_doc.priorityHigh = m_bars.require(QStringLiteral("cmdPriAlta"))->isChecked();
        m_doc.priorityLow = m_bars.require(QStringLiteral("cmdPriBassa"))->isChecked();
        Modificato();
        break;
    }
    case Action::RefreshImages:
        DHTML->refreshImages();
        break;
    case Action::About:
        applyWindowTexts(frmInfoSu::instance(), m_texts);
        frmInfoSu::instance()->showAbout();
        break;
    case Action::Help: {
        const QString page = session().links.guidePage(session().currentLanguage);
        if (page.isEmpty())
            bMessage::ShowMessage(
                QStringLiteral("Quillora"), m_texts.get(QStringLiteral("GuidaNonDisponibile")),
                session().currentLanguage, QString(), quillora::bMessage::kIconInformation,
                quillora::bMessage::kIconNone, this);
        else
            dialogs().open(this, page);
        break;
    }
    case Action::ToggleToolbar: {
        QToolBar* bar = m_bars.requireToolbar(QString::fromLatin1(c.toolbar));
        bar->setVisible(!bar->isVisible());
        CheckToolbarStatus();
        break;
    }
    case Action::Unsubscribe:
        insertUnsubscribeLink(id);
        break;
    case Action::Sound:
    case Action::BodyProperties:
        // Both work on the body of the visual page.
        if (m_page != PageVisual)
            Tbs->setCurrentIndex(PageVisual);
        if (m_page != PageVisual)
            break; // the source page could not hand its text over; it says why
        if (c.action == Action::Sound)
            SelezionaAudio();
        else
            ProprietaBody();
        break;
    case Action::CheckSpam:
        if (accountsReady())
            TestAntispam();
        break;
    case Action::Accounts:
        if (accountsReady())
            GestioneAccount();
        break;
    case Action::ExportEml:
        EsportaEml();
        break;
    case Action::CheckMessage:
        VerificaMessaggio();
        break;
    case Action::SendTest:
        if (accountsReady())
            InvioProva();
        break;
    case Action::ImportFromImage:
        if (DaSalvare())
            askToSave();
        ImportaDaImmagine();
        break;
    case Action::OpenWord: {
        const QString path =
            chooseFile(QStringLiteral("Open Word file..."),
                       QStringLiteral("Word document (*.doc;*.docx;*.rtf)|*.doc;*.docx;*.rtf|"
                                      "All files *.*|*.*|"),
                       false);
        if (!path.isEmpty())
            ApriFileWord(path);
        break;
    }
    case Action::OpenMail: {
        const QString path = chooseFile(
            QStringLiteral("Open Outlook message..."),
            QStringLiteral("Outlook message (*.msg;*.eml)|*.msg;*.eml|All files *.*|*.*|"), false);
        if (!path.isEmpty())
            ApriFileOutlook(path);
        break;
    }
    case Action::Templates:
        if (DaSalvare())
            askToSave();
        ApriModelli();
        break;
    case Action::Social:
        ApriSocial();
        break;
    case Action::ImportText:
        ImportaTesto();
        break;
    case Action::ImportHtml:
        ImportaHtml();
        break;
    }
}

bool frmMain::accountsReady() {
    if (session().accountsError.isEmpty())
        return true;
    bMessage::ShowMessage(m_texts.get(QStringLiteral("Attenzione")),
                          m_texts.get(QStringLiteral("AccountNonDisponibili")),
                          session().accountsError, QString(), quillora::bMessage::kIconWarning,
                          quillora::bMessage::kIconNone, this);
    return false;
}

void frmMain::InsertHtmlCode(const QString& html) {
    // Errors at the caret are swallowed by the page; the message counts as changed regardless.
    if (m_page == PageVisual)
        DHTML->insertHtml(html);
    Modificato();
}

void frmMain::CheckButtonMail() {
    reported(QStringLiteral("frmMain.CheckButtonMail()"), this, [&] { updateCheckButtonMail(); });
}

void frmMain::updateCheckButtonMail() {
    const SurfaceState& s = DHTML->state();
    const auto set = [this](const char* id, bool checked) {
        if (QAction* a = m_bars.action(QString::fromLatin1(id)))
            a->setChecked(checked);
    };
    const auto enable = [this](const char* id, bool on) {
        if (QAction* a = m_bars.action(QString::fromLatin1(id)))
            a->setEnabled(on);
    };
    set("cmdBold", s.bold);
    set("cmdItalic", s.italic);
    set("cmdUnderline", s.underline);
    set("cmdLeft", s.justifyLeft);
    set("cmdCenter", s.justifyCenter);
    set("cmdRight", s.justifyRight);
    enable("cmdTaglia", s.canCut);
    enable("cmdCopia", s.canCopy);
    enable("cmdIncolla", s.canPaste);
    enable("cmdUndo", s.canUndo);
    enable("cmdRedo", s.canRedo);
    enable("cmdSelezionaTutto", s.canSelectAll);
    if (!s.fontName.isEmpty() && !m_bars.fontName->hasFocus()) {
        QString name = s.fontName;
        name.remove(u'"');
        name = name.section(u',', 0, 0).trimmed();
        const int at = m_bars.fontName->findText(name, Qt::MatchFixedString);
        if (at >= 0)
            m_bars.fontName->setCurrentIndex(at);
        else
            m_bars.fontName->setEditText(name);
    }
    if (!s.fontSize.isEmpty() && !m_bars.fontSize->hasFocus()) {
        const int at = m_bars.fontSize->findText(s.fontSize);
        if (at >= 0)
            m_bars.fontSize->setCurrentIndex(at);
    }
}

void frmMain::CheckButtonCODE() {
    reported(QStringLiteral("frmMain.CheckButtonCODE()"), this, [&] { updateCheckButtonCODE(); });
}

void frmMain::updateCheckButtonCODE() {
    const auto enable = [this](const char* id, bool on) {
        if (QAction* a = m_bars.action(QString::fromLatin1(id)))
            a->setEnabled(on);
    };
    const SourceView* code = sourcePage();
    enable("cmdTaglia", code->hasSelectedText());
    enable("cmdCopia", code->hasSelectedText());
    enable("cmdIncolla", !code->isReadOnly());
    enable("cmdUndo", code->isUndoAvailable());
    enable("cmdRedo", code->isRedoAvailable());
    enable("cmdSelezionaTutto", code->length() > 0);
}

void frmMain::CheckToolbarStatus() {
    reported(QStringLiteral("frmMain.CheckToolbarStatus()"), this,
             [&] { updateCheckToolbarStatus(); });
}

void frmMain::updateCheckToolbarStatus() {
    for (const auto& t : editor::toolbarToggles()) {
        QToolBar* bar = m_bars.toolbar(QString::fromLatin1(t.toolbar));
        QAction* toggle = m_bars.action(QString::fromLatin1(t.command));
        if (bar && toggle)
            toggle->setChecked(!bar->isHidden());
    }
}

void frmMain::CheckToolBar(bool formattingAllowed) {
    reported(QStringLiteral("frmMain.CheckToolBar()"), this,
             [&] { updateCheckToolBar(formattingAllowed); });
}

void frmMain::updateCheckToolBar(bool formattingAllowed) {
    for (const char* id : {"TbTesto", "TbInserisci"}) {
        if (QToolBar* bar = m_bars.toolbar(QString::fromLatin1(id)))
            bar->setEnabled(formattingAllowed);
    }
    for (const char* id : {"mnuTesto", "mnuInsert"}) {
        if (QMenu* m = m_bars.menu(QString::fromLatin1(id)))
            m->setEnabled(formattingAllowed);
    }
    // Edit commands work on the visual and source pages, never on the preview.
    const bool editable = m_page != PagePreview;
    for (const char* id : {"cmdUndo", "cmdRedo", "cmdTaglia", "cmdCopia", "cmdIncolla",
                           "cmdSelezionaTutto", "cmdTrova"}) {
        if (QAction* a = m_bars.action(QString::fromLatin1(id)))
            a->setEnabled(editable);
    }
    if (m_page == PageVisual)
        CheckButtonMail();
    else if (m_page == PageSource)
        CheckButtonCODE();
}

} // namespace quillora::gui
