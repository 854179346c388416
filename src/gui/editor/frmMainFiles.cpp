// New, open and save: the message moves between the file, the core document and the pages.
#include "core/app/Folders.h"
#include "core/app/bError.h"
#include "core/message/MessageFile.h"
#include "core/message/References.h"
#include "gui/app/Dialogs.h"
#include "gui/app/LanguageApplier.h"
#include "gui/app/MessageOwner.h"
#include "gui/app/Session.h"
#include "gui/app/WindowHelpers.h"
#include "gui/app/frmMessage.h"
#include "gui/editor/PreviewPane.h"
#include "gui/editor/SourceView.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmMain.h"
#include "gui/message/frmAllegati.h"
#include "gui/tools/frmImpDaImg.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QTabWidget>

namespace quillora::gui {

namespace {

void log(const char* line) {
    bError::wrtErrFree(QString::fromLatin1(line));
}

} // namespace

QString frmMain::chooseFile(const QString& title, const QString& filter, bool save) {
    return save ? dialogs().saveFileName(this, title, filter)
                : dialogs().openFileName(this, title, filter);
}

QString frmMain::workFolder() {
    if (!m_doc.restoreFolder.isEmpty())
        return m_doc.restoreFolder;
    return m_scratch.path() + u'/';
}

void frmMain::showBody(const QString& html, bool markModifiedWhenChanged, const QString& routine) {
    m_doc.loading = true;
    const QString folder = workFolder();
    QPointer<frmMain> self(this);
    const QMetaObject::Connection completed = connect(
        DHTML, &VisualSurface::documentComplete, this,
        [self, markModifiedWhenChanged] {
            if (!self)
                return;
            self->m_doc.loading = false;
            if (markModifiedWhenChanged)
                self->Modificato();
            self->VisualizzaTag();
            self->CheckButtonMail();
            emit self->documentLoaded();
        },
        Qt::SingleShotConnection);
    setSourceText(html);
    if (!DHTML->setDocumentHTML(html, folder)) {
        m_pagesInStep.reset();
        // The page keeps its old document, so the body is edited on the source page instead;
        // it counts as changed, or closing would drop it without a word.
        disconnect(completed);
        m_doc.loading = false;
        Modificato();
        showSourceInstead();
        reportError(routine, pageFileError(folder));
        emit documentLoaded();
        return;
    }
    m_pagesInStep = pagesNow();
    // The preview is filled whenever it is shown; a hidden one would only take the engine's
    // time from the page being loaded.
    if (m_page == PagePreview)
        m_preview->showBody(References::redirectForPreview(html, m_doc.restoreFolder), folder);
}

QString frmMain::pageFileError(const QString& folder) const {
    return QStringLiteral("The visual page cannot write its file in the working folder %1; "
                          "the message is shown on the source page.")
        .arg(QDir::toNativeSeparators(folder));
}

void frmMain::NuovoMessaggio() {
    dropRecoveryCopy();
    if (m_owner)
        m_owner->own(QString());
    m_doc.NuovoMessaggio();
    session().pathElaboration.clear();
    log(" - Assegno il corpo");
    showBody(m_doc.body, false, QStringLiteral("NuovoMessaggio"));
    log(" - Rinfresco");
    log(" - Form");
    m_bars.subject->clear();
    m_bars.action(QStringLiteral("cmdPriBassa"))->setChecked(false);
    m_bars.action(QStringLiteral("cmdPriAlta"))->setChecked(false);
    m_bars.action(QStringLiteral("cmdShowDetails"))->setChecked(false);
    DHTML->setShowDetails(false);
    m_bars.action(QStringLiteral("cmdShowBorder"))->setChecked(true);
    DHTML->setShowBorders(true);
    CambiaTitoloEditor();
    m_allegati->ClearList();
    applyWindowTexts(m_allegati, m_texts); // the cleared list has its headers back
    log(" - DHTML.SetFocus");
    if (m_page == PageVisual)
        DHTML->setFocus();
    log(" - VisualizzaTag");
    VisualizzaTag();
}

bool frmMain::ApriMessaggio(QString path) {
    if (path.isEmpty()) {
        bError::wrtErrFree(QStringLiteral("ApriMessaggio()"));
        path = chooseFile(QStringLiteral("Open message"),
                          QStringLiteral("Corvanta Message (*.mss;*.mssx)|*.mss;*.mssx"), false);
        if (path.isEmpty())
            return false;
    }
    if (openElsewhere(path))
        return false;
    if (!openFile(path))
        return false;
    dropRecoveryCopy(); // the new message starts with nothing to recover
    m_owner->own(path);
    rememberRecent(path);
    return true;
}

bool frmMain::openFile(const QString& path) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const MessageFile::OpenResult r =
        MessageFile::ApriMessaggio(m_doc, path, session().folders.pathFileImp);
    QApplication::restoreOverrideCursor();
    if (!r.ok()) {
        if (r.notAMessage)
            bMessage::ShowMessage(m_texts.get(QStringLiteral("Attenzione")),
                                  m_texts.get(QStringLiteral("FormatoFileMessaggioErrato")), path,
                                  QString(), quillora::bMessage::kIconWarning,
                                  quillora::bMessage::kIconNone, this);
        else
            bMessage::ShowMessage(m_texts.get(QStringLiteral("Attenzione")),
                                  m_texts.get(QStringLiteral("ErroreApertura")), r.error, QString(),
                                  quillora::bMessage::kIconError, quillora::bMessage::kIconNone,
                                  this);
        return false;
    }
    session().pathElaboration = m_doc.restoreFolder;
    m_bars.subject->setText(m_doc.subject);
    m_bars.action(QStringLiteral("cmdPriAlta"))->setChecked(m_doc.priorityHigh);
    m_bars.action(QStringLiteral("cmdPriBassa"))->setChecked(m_doc.priorityLow);
    m_allegati->setPaths(m_doc.attachments);
    applyWindowTexts(m_allegati, m_texts);
    // As after any load: local references point at the restored copies, and a body that had
    // to change for that counts as modified.
    const References::LoadResult load =
        References::redirectForLoad(m_doc.body, session().baseFolder, m_doc.restoreFolder);
    CambiaTitoloEditor();
    showBody(load.html, load.changed, QStringLiteral("ApriMessaggio"));
    if (!r.warnings.isEmpty())
        bMessage::ShowMessage(m_texts.get(QStringLiteral("Attenzione")), m_doc.openedFileName,
                              r.warnings.join(QStringLiteral("\r\n")), QString(),
                              quillora::bMessage::kIconWarning, quillora::bMessage::kIconNone,
                              this);
    return true;
}

std::optional<QString> frmMain::bodyHtml() {
    if (m_page == PageVisual)
        return DHTML->documentHTML();
    // On the source page the body is its text; the preview always follows the source text.
    return sourceText();
}

void frmMain::collectDocument() {
    m_doc.subject = m_bars.subject->text();
    m_doc.priorityHigh = m_bars.action(QStringLiteral("cmdPriAlta"))->isChecked();
    m_doc.priorityLow = m_bars.action(QStringLiteral("cmdPriBassa"))->isChecked();
    m_doc.attachments = m_allegati->paths();
}

bool frmMain::SalvaMessaggio(const QString& path) {
    collectDocument();
    const std::optional<QString> body = bodyHtml();
    if (!body) {
        reportError(QStringLiteral("SalvaMessaggio"),
                    QStringLiteral("The visual page did not give back its HTML in time"));
        return false;
    }
    m_doc.body = *body;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const MessageFile::SaveResult r = MessageFile::SalvaMessaggio(m_doc, path);
    QApplication::restoreOverrideCursor();
    if (!r.ok()) {
        reportError(QStringLiteral("SalvaMessaggio"), r.description);
        return false;
    }
    CambiaTitoloEditor();
    dropRecoveryCopy();
    m_owner->own(r.path);
    rememberRecent(r.path);
    return true;
}

bool frmMain::RiSalva() {
    bError::wrtErrFree(QStringLiteral("RiSalva(): ") + m_doc.currentPath);
    return SalvaMessaggio(m_doc.currentPath);
}

bool frmMain::SalvaMessaggioConNome() {
    const QString path = chooseFile(QStringLiteral("Save message"),
                                    QStringLiteral("Corvanta 4 message (*.mssx)|*.mssx"), true);
    if (path.isEmpty())
        return false;
    return SalvaMessaggio(path);
}

void frmMain::saveForQuestion() {
    if (m_doc.currentPath.isEmpty())
        SalvaMessaggioConNome();
    else
        RiSalva();
}

QString frmMain::selectedImageSource() const {
    return m_imageToEdit.isEmpty() ? DHTML->state().currentSrc : m_imageToEdit;
}

void frmMain::ImportaDaImmagine() {
    if (m_imageImport) {
        m_imageImport->raise();
        return;
    }
    frmImpDaImg::Host host;
    host.newWorkFolder = [this] {
        return NewWorkFolderBeside(session().folders.pathFileImp, m_doc.restoreFolder);
    };
    host.showPage = [this](const QString& page, const QString& folder,
                           std::function<void(bool)> done) {
        showSlicedPage(page, folder, std::move(done));
    };
    m_imageImport = new frmImpDaImg(std::move(host), this);
    m_imageImport->setAttribute(Qt::WA_DeleteOnClose);
    // Window-modal without a nested event loop: the main window keeps running its own.
    m_imageImport->open();
}

void frmMain::showSlicedPage(const QString& pageFile, const QString& workFolder,
                             std::function<void(bool)> done) {
    QFile file(pageFile);
    if (!file.open(QIODevice::ReadOnly)) {
        reportError(QStringLiteral("showSlicedPage"), file.errorString());
        done(false);
        return;
    }
    const QString page = QString::fromUtf8(file.readAll());
    // The page replaces the body: the slices' folder becomes the message's working folder.
    if (!m_doc.restoreFolder.isEmpty() && m_doc.restoreFolder != workFolder)
        CancellaPercorsoTemporaneo(m_doc.restoreFolder);
    m_doc.restoreFolder = workFolder;
    session().pathElaboration = workFolder;
    QPointer<frmMain> self(this);
    connect(
        this, &frmMain::documentLoaded, this,
        [self, done = std::move(done)] {
            if (!self)
                return;
            // The page as the editor holds it gets a blank before every "></TD>" cell end.
            // This editor writes tag names in lower case and keeps the line break before each
            // cell end, so the page normally stays as loaded and is not loaded twice.
            if (self->m_page == PageVisual) {
                if (const std::optional<QString> html = self->DHTML->documentHTML()) {
                    QString spaced = *html;
                    spaced.replace(QLatin1String("></TD>"), QLatin1String("> </TD>"));
                    if (spaced != *html)
                        self->DHTML->setDocumentHTML(spaced, self->workFolder());
                }
            }
            self->Modificato();
            done(true);
        },
        Qt::SingleShotConnection);
    showBody(page, false, QStringLiteral("showSlicedPage"));
}

bool frmMain::askToSave() {
    return bMessage::ShowMessageYesNo(
               QStringLiteral("id_cmdSalvaMess"), m_texts.get(QStringLiteral("Attenzione")),
               m_texts.get(QStringLiteral("MessSalva1")), m_texts.get(QStringLiteral("MessSalva2")),
               QString(), quillora::bMessage::kIconWarning,
               quillora::bMessage::kIconNone) == kIdYes;
}

} // namespace quillora::gui
