// The content tools as the main window hosts them: the snippet pane and its drops on the page,
// the template chooser and the social-links window.
#include "core/app/Folders.h"
#include "core/app/TextFile.h"
#include "core/message/References.h"
#include "core/tools/TemplateStore.h"
#include "gui/app/ColorStyle.h"
#include "gui/app/LanguageApplier.h"
#include "gui/app/Reported.h"
#include "gui/app/Session.h"
#include "gui/app/WindowHelpers.h"
#include "gui/editor/SourceView.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmMain.h"
#include "gui/message/frmAllegati.h"
#include "gui/tools/frmMemory.h"
#include "gui/tools/frmSocial.h"
#include "gui/tools/frmTemplate.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>

namespace quillora::gui {

void frmMain::buildToolPanes() {
    dckMemory = new QDockWidget(QStringLiteral("Memory"), this);
    dckMemory->setObjectName(QStringLiteral("dckMemory"));
    prepareSchemeSheets(dckMemory);
    m_memory = new frmMemory(dckMemory);
    dckMemory->setWidget(m_memory);
    connect(m_memory, &frmMemory::helpText, stcHelp, &QLabel::setText);
    connect(m_memory, &frmMemory::insertRequested, this, [this](const QString& html) {
        InsertHtmlCode(html);
        DHTML->setFocus();
    });
    DHTML->acceptForeignDrag(MemoryList::mimeType());
    connect(DHTML, &VisualSurface::foreignDrop, this, [this](const QString& format, QPoint at) {
        if (format == MemoryList::mimeType())
            DHTML_DragDrop(at);
    });
    m_visualPanes << dckMemory;

    m_social = new frmSocial([this](const QString& html) { InsertHtmlCode(html); }, this);
}

frmTemplate* frmMain::templateChooser() const {
    return m_templates;
}

void frmMain::setSplashBar(QProgressBar* bar) {
    m_splashBar = bar;
}

void frmMain::DHTML_DragDrop(QPoint viewPos) {
    reported(QStringLiteral("frmMain.DHTML_DragDrop()"), this, [&] {
        const QString html = m_memory->currentDropHtml();
        if (m_memory->currentFileName().isEmpty())
            return;
        DHTML->placeCaretAt(viewPos);
        InsertHtmlCode(html);
        DHTML->setFocus();
    });
}

void frmMain::InitializeSocial() {
    QPointer<QProgressBar> bar = m_splashBar;
    if (bar) {
        bar->setRange(0, 110);
        bar->setValue(60);
    }
    m_social->InitializeForm([bar] {
        if (bar)
            bar->setValue(bar->value() + 5);
    });
    applyWindowTexts(m_social, m_texts);
}

void frmMain::ApriSocial() {
    // Prepared at start-up; a window made without the loading phases is prepared now.
    if (m_social->cmbSize()->count() == 0)
        InitializeSocial();
    m_social->show();
    m_social->raise();
    m_social->activateWindow();
}

void frmMain::ApriModelli() {
    if (m_templates) {
        m_templates->raise();
        return;
    }
    m_templates = new frmTemplate([this](const QString& t) { ImportaTemplate(t); }, this);
    m_templates->setAttribute(Qt::WA_DeleteOnClose);
    applyWindowTexts(m_templates, m_texts);
    m_templates->open();
    m_templates->Form_Load();
}

bool frmMain::ImportaTemplate(const QString& thumbnailPath) {
    const QString folder = thumbnailPath.left(
        std::max(thumbnailPath.lastIndexOf(u'/'), thumbnailPath.lastIndexOf(u'\\')) + 1);
    const QString page = TemplateStore::pagePath(thumbnailPath);
    const TextFile::Decoded html = TextFile::read(page, 32 * 1024 * 1024);
    if (!html.ok()) {
        ShowErrorReport(QStringLiteral("frmTemplate.ImportaTemplate()"), 0,
                        QDir::toNativeSeparators(page) + QStringLiteral(": ") +
                            TextFile::describe(html.error),
                        this);
        return false;
    }
    const QString work = NewWorkFolderBeside(session().folders.pathFileImp, m_doc.restoreFolder);
    if (work.isEmpty()) {
        ShowErrorReport(QStringLiteral("frmTemplate.ImportaTemplate()"), 0,
                        pageFileError(session().folders.pathFileImp), this);
        return false;
    }
    // A new message whose body is the template page. The page's own folder is the current
    // folder its relative images resolve against; they are copied into the new working folder
    // so that the message owns them and a save embeds them.
    m_doc.NuovoMessaggio();
    m_doc.currentPath.clear();
    m_doc.restoreFolder = work;
    session().pathElaboration = work;
    session().baseFolder = folder;
    const QString pageFolder = QFileInfo(page).absolutePath() + u'/';
    const References::LoadResult load = References::redirectForLoad(html.text, pageFolder, work);
    m_bars.subject->clear();
    m_allegati->ClearList();
    applyWindowTexts(m_allegati, m_texts);
    CambiaTitoloEditor();
    showBody(load.html, true, QStringLiteral("ImportaTemplate"));
    if (m_page == PageVisual)
        DHTML->setFocus();
    return true;
}

} // namespace quillora::gui
