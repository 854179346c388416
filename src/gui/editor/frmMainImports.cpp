// The imports: a document, a mail, a text file or an HTML page becomes the message body.
// Subject, priority and attachments stay; a mail's own attachments are added to them.
#include "core/app/Folders.h"
#include "core/app/TextFile.h"
#include "core/message/DocumentConverter.h"
#include "core/message/References.h"
#include "core/message/TextImport.h"
#include "gui/app/Session.h"
#include "gui/app/frmMessage.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmMain.h"
#include "gui/message/ImportJob.h"
#include "gui/message/frmAllegati.h"

#include <QDir>
#include <QFileInfo>
#include <QProgressDialog>

namespace quillora::gui {

namespace {

using DocumentConverter::Failure;

// LibreOffice keeps its profile here between imports: a warm profile saves seconds, and its
// own folder keeps it apart from any office the user has open.
QString officeProfile() {
    return session().folders.pathFileImp + QStringLiteral("Elaboration/.office-profile");
}

} // namespace

void frmMain::ApriFileWord(const QString& path) {
    startConversion(path, QStringLiteral("ApriFileWord"));
}

void frmMain::ApriFileOutlook(const QString& path) {
    startConversion(path, QStringLiteral("ApriFileOutlook"));
}

void frmMain::startConversion(const QString& source, const QString& routine) {
    if (m_import)
        return; // one conversion at a time; the wait window says one is running
    const QString folder = NewWorkFolderBeside(session().folders.pathFileImp, m_doc.restoreFolder);
    if (folder.isEmpty()) {
        reportError(routine, m_texts.get(QStringLiteral("PercorsoTemporaneo")));
        emit importFinished(false);
        return;
    }
    DocumentConverter::Settings settings;
    settings.profileFolder = officeProfile();
    m_import = new ImportJob(source, folder, settings, this,
                             m_texts.get(QStringLiteral("ImpAttesa")) + QStringLiteral("\n") +
                                 QFileInfo(source).fileName(),
                             m_texts.get(QStringLiteral("ImpInterrompi")));
    connect(m_import, &ImportJob::finished, this,
            [this, job = m_import, folder, source](const DocumentConverter::Imported& imported) {
                if (m_import != job)
                    return; // stopped on closing: nothing more to show
                m_import->deleteLater();
                m_import = nullptr;
                finishImport(imported, folder, source);
            });
    m_import->start();
}

QString frmMain::importFailureText(const DocumentConverter::Result& r) const {
    switch (r.failure) {
    case Failure::ToolMissing:
        return m_texts.get(QStringLiteral("ImpStrumentoMancante")).arg(r.tool, r.package);
    case Failure::TimedOut:
        return m_texts.get(QStringLiteral("ImpTempoScaduto"));
    case Failure::UnknownType:
        return m_texts.get(QStringLiteral("ImpTipoSconosciuto"));
    case Failure::NoContent:
        return m_texts.get(QStringLiteral("ImpMailVuota"));
    default:
        return m_texts.get(QStringLiteral("ImpConversioneFallita"));
    }
}

void frmMain::finishImport(const DocumentConverter::Imported& imported, const QString& folder,
                           const QString& source) {
    if (!imported.ok()) {
        // The message on screen was never touched: only the new folder goes.
        CancellaPercorsoTemporaneo(folder);
        if (imported.result.failure != Failure::Cancelled)
            bMessage::ShowMessage(
                m_texts.get(QStringLiteral("Attenzione")), importFailureText(imported.result),
                QDir::toNativeSeparators(source) + QStringLiteral("\r\n") +
                    DocumentConverter::describe(imported.result),
                QString(), quillora::bMessage::kIconWarning, quillora::bMessage::kIconNone, this);
        emit importFinished(false);
        return;
    }
    // The converter's folder becomes the restore folder: its pictures are the message's files.
    if (!m_doc.restoreFolder.isEmpty() && m_doc.restoreFolder != folder)
        CancellaPercorsoTemporaneo(m_doc.restoreFolder);
    m_doc.restoreFolder = folder;
    session().pathElaboration = folder;
    if (!imported.result.attachments.isEmpty())
        m_allegati->setPaths(m_allegati->paths() + imported.result.attachments);
    loadImportedBody(imported.html, imported.baseFolder);
}

void frmMain::loadImportedBody(const QString& html, const QString& baseFolder) {
    session().reloadFlag = true;
    const References::LoadResult load =
        References::redirectForLoad(html, baseFolder, m_doc.restoreFolder);
    QPointer<frmMain> self(this);
    connect(
        this, &frmMain::documentLoaded, this,
        [self] {
            if (!self)
                return;
            // RefreshAllImage: pictures written while the page loaded are read again.
            session().reloadFlag = false;
            self->DHTML->refreshImages();
            self->Modificato();
            emit self->importFinished(true);
        },
        Qt::SingleShotConnection);
    showBody(load.html, false, QStringLiteral("loadImportedBody"));
}

void frmMain::ImportaTesto(QString path) {
    if (path.isEmpty()) {
        path = chooseFile(QStringLiteral("Importa messaggio da file di testo"),
                          QStringLiteral("File di testo *.txt|*.txt|Tutti i file *.*|*.*|"), false);
        if (path.isEmpty())
            return;
    }
    const TextFile::Decoded text = TextFile::read(path);
    if (!text.ok()) {
        reportError(QStringLiteral("ImportaTesto"),
                    QStringLiteral("%1: %2").arg(path, TextFile::describe(text.error)));
        emit importFinished(false);
        return;
    }
    loadImportedBody(TextImport::htmlFromText(text.text), workFolder());
}

void frmMain::ImportaHtml(QString path) {
    if (path.isEmpty()) {
        path = chooseFile(QStringLiteral("Import message from HTML page"),
                          QStringLiteral("HTML Page (*.htm;*.html)|*.htm;*.html|"
                                         "Tutti i file *.*|*.*|"),
                          false);
        if (path.isEmpty())
            return;
    }
    const TextFile::Decoded page = TextFile::read(path);
    if (!page.ok()) {
        reportError(QStringLiteral("ImportaHtml"),
                    QStringLiteral("%1: %2").arg(path, TextFile::describe(page.error)));
        emit importFinished(false);
        return;
    }
    // An imported page always gets a fresh restore folder for the pictures it shows.
    session().loadMode = kLoadModeHtmlPage;
    const QString folder = NewWorkFolderBeside(session().folders.pathFileImp, m_doc.restoreFolder);
    if (folder.isEmpty()) {
        reportError(QStringLiteral("ImportaHtml"),
                    m_texts.get(QStringLiteral("PercorsoTemporaneo")));
        emit importFinished(false);
        return;
    }
    if (!m_doc.restoreFolder.isEmpty())
        CancellaPercorsoTemporaneo(m_doc.restoreFolder);
    m_doc.restoreFolder = folder;
    session().pathElaboration = folder;
    // Relative pictures resolve against the page's own folder, where they sit beside it.
    loadImportedBody(page.text, QFileInfo(path).absolutePath() + u'/');
}

void frmMain::importDropped(const QString& path) {
    using DocumentConverter::SourceType;
    const SourceType type = DocumentConverter::typeOf(path);
    if (type == SourceType::Unknown)
        return;
    if (DaSalvare())
        askToSave();
    switch (type) {
    case SourceType::WordDocument:
        ApriFileWord(path);
        break;
    case SourceType::Mail:
    case SourceType::OutlookMail:
        ApriFileOutlook(path);
        break;
    case SourceType::Text:
        ImportaTesto(path);
        break;
    default:
        ImportaHtml(path);
        break;
    }
}

void frmMain::stopImport() {
    delete m_import; // stops the converter and waits for it
    m_import = nullptr;
}

} // namespace quillora::gui
