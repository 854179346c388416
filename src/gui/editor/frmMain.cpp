#include "gui/editor/frmMain.h"

#include "core/app/Folders.h"
#include "core/app/bColorStyle.h"
#include "core/app/bError.h"
#include "core/app/bImpostazioni.h"
#include "core/editor/CommandTable.h"
#include "core/message/Recovery.h"
#include "gui/app/ColorStyle.h"
#include "gui/app/LanguageApplier.h"
#include "gui/app/ProgramIcon.h"
#include "gui/app/Session.h"
#include "gui/app/ThemeIcons.h"
#include "gui/app/WindowHelpers.h"
#include "gui/app/frmMessage.h"
#include "gui/editor/PreviewPane.h"
#include "gui/editor/SourceView.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmColor.h"
#include "gui/message/frmAllegati.h"
#include "gui/tools/frmMemory.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFile>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QProcess>
#include <QSaveFile>
#include <QScopeGuard>
#include <QStatusBar>
#include <QTabWidget>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <thread>

namespace quillora::gui {

namespace {
// The engine begins a load in a few milliseconds; a slower one begins it later, as before.
constexpr int kLoadBeginMs = 15;

void phase(const char* line) {
    bError::wrtErrFree(QString::fromLatin1(line));
}

// The first text the window measures loads the font database, a few milliseconds of work that
// another thread does meanwhile; the font database may be used from any thread. It is done
// before the web engine starts: the engine sets the font library up as well, unguarded, and two
// threads setting it up at once can corrupt it.
std::jthread loadFontsMeanwhile() {
    return std::jthread([] {
        QFontDatabase::families();
        QFontMetrics(QGuiApplication::font()).height();
    });
}
} // namespace

frmMain::frmMain(QWidget* parent) : QMainWindow(parent), m_texts(session().texts) {
    setObjectName(QStringLiteral("frmMain"));
    {
        const std::jthread fonts = loadFontsMeanwhile();
        prepareProgramColorStyle(session().folders);
        setWindowIcon(programIcon());
        setDockNestingEnabled(true);
        m_texts = Texts::builtIn(session().currentLanguage);
        // The visual page first: it starts the web engine, which waits some 30 ms for its
        // helper process, and the fonts load meanwhile instead of holding up the bars. It has
        // no place of its own in the keyboard's order, so the bars still come before the pages.
        DHTML = new VisualSurface(true, this);
        DHTML->setObjectName(QStringLiteral("DHTML"));
        m_bars.build(this, [this](const QString& id) { Dks_CommandClick(id); });
    }
    buildPages();
    readLanguageMeanwhile();
    buildPanes();
    connectPages();
    buildRecentAndOwner();
    CambiaTitoloEditor();
}

frmMain::~frmMain() = default;

void frmMain::readLanguageMeanwhile() {
    const Session& s = session();
    m_languageRead = std::async(std::launch::async, &bLANG::ReadLanguageTexts,
                                s.folders.languageFile(), s.currentLanguage);
}

bLANG::LanguageTexts frmMain::languageTexts() {
    const Session& s = session();
    if (m_languageRead.valid()) {
        bLANG::LanguageTexts read = m_languageRead.get();
        if (read.languageFile == s.folders.languageFile() &&
            read.currentLanguage == s.currentLanguage)
            return read;
    }
    return bLANG::ReadLanguageTexts(s.folders.languageFile(), s.currentLanguage);
}

void frmMain::buildPages() {
    auto* centre = new QWidget(this);
    auto* layout = new QVBoxLayout(centre);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    Tbs = new QTabWidget(centre);
    Tbs->setObjectName(QStringLiteral("Tbs"));
    Tbs->setDocumentMode(true);
    Tbs->setTabPosition(QTabWidget::South);
    // Set before the pages are in: set later, the sheets would polish them all again.
    Tbs->setStyleSheet(QStringLiteral("QTabBar::tab:selected { font-weight: bold; }"));
    SetStyleColor(Tbs);
    m_sourceHost = new QWidget(Tbs);
    m_sourceHost->setObjectName(QStringLiteral("CODEPage"));
    auto* sourceLayout = new QVBoxLayout(m_sourceHost);
    sourceLayout->setContentsMargins(0, 0, 0, 0);
    Tbs->addTab(DHTML, themeIcon(QStringLiteral("document-edit")), QStringLiteral("Design"));
    Tbs->addTab(m_sourceHost, themeIcon(QStringLiteral("text-html")), QStringLiteral("HTML"));
    m_preview = new PreviewPane(Tbs);
    Tbs->addTab(m_preview, themeIcon(QStringLiteral("document-preview")),
                QStringLiteral("Preview"));
    Tbs->setTabToolTip(PageVisual, QStringLiteral("Edit the message as it will look"));
    Tbs->setTabToolTip(PageSource, QStringLiteral("Edit the message's HTML source"));
    Tbs->setTabToolTip(PagePreview, QStringLiteral("See the message as recipients will"));
    layout->addWidget(Tbs, 1);

    // The tag path bar under the pages.
    auto* tagBar = new QWidget(centre);
    tagBar->setObjectName(QStringLiteral("picTag"));
    auto* tagLayout = new QHBoxLayout(tagBar);
    tagLayout->setContentsMargins(6, 2, 6, 2);
    tagLayout->setSpacing(5);
    lblTags = new QLabel(QStringLiteral("TAG: "), tagBar);
    lblTags->setObjectName(QStringLiteral("lblTags"));
    lblTags->setTextFormat(Qt::PlainText);
    lblTag = new QLabel(tagBar);
    lblTag->setObjectName(QStringLiteral("lblTag"));
    lblTag->setTextFormat(Qt::PlainText);
    QFont bold = lblTag->font();
    bold.setBold(true);
    lblTag->setFont(bold);
    tagLayout->addWidget(lblTags);
    tagLayout->addWidget(lblTag);
    tagLayout->addStretch(1);
    layout->addWidget(tagBar);
    setCentralWidget(centre);

    stcHelp = new QLabel(this);
    stcHelp->setObjectName(QStringLiteral("stcHelp"));
    stcX = new QLabel(QStringLiteral("X: 0"), this);
    stcX->setObjectName(QStringLiteral("stcX"));
    stcX->setMinimumWidth(60);
    stcY = new QLabel(QStringLiteral("Y: 0"), this);
    stcY->setObjectName(QStringLiteral("stcY"));
    stcY->setMinimumWidth(60);
    statusBar()->addWidget(stcHelp, 1);
    statusBar()->addPermanentWidget(stcX);
    statusBar()->addPermanentWidget(stcY);
}

void frmMain::buildPanes() {
    dckAllegati = new QDockWidget(QStringLiteral("Attachments"), this);
    dckAllegati->setObjectName(QStringLiteral("dckAllegati"));
    prepareSchemeSheets(dckAllegati);
    m_allegati = new frmAllegati(dckAllegati);
    dckAllegati->setWidget(m_allegati);
    connect(m_allegati, &frmAllegati::modified, this, &frmMain::Modificato);
    connect(m_allegati, &frmAllegati::helpText, stcHelp, &QLabel::setText);
    m_visualPanes << dckAllegati;
    buildPropertyPane();
    buildToolPanes();
}

void frmMain::CambiaTitoloEditor() {
    setWindowTitle(m_doc.CambiaTitoloEditor());
}

void frmMain::Modificato() {
    m_doc.Modificato();
    CambiaTitoloEditor();
    // The first change since the last copy starts the clock; later ones do not push it back,
    // so steady typing still gets a copy every interval.
    if (m_autoSave && m_settings.autoSaveSeconds > 0 && DaSalvare() && !m_autoSave->isActive())
        m_autoSave->start();
}

void frmMain::Form_Load(const QString& commandLineFile) {
    m_loading = true;
    const auto loaded = qScopeGuard([this] { m_loading = false; });
    Session& s = session();
    startRecovery();
    {
        QFile layout(s.folders.layoutFile());
        if (layout.open(QIODevice::ReadOnly))
            restoreState(layout.readAll());
        // The border and detail displays follow their buttons; the border button is looked up
        // as "cdmShowBorder", a name no button has, so only the details take effect here.
        if (QAction* borders = m_bars.action(QStringLiteral("cdmShowBorder")))
            DHTML->setShowBorders(borders->isChecked());
        if (QAction* details = m_bars.action(QStringLiteral("cmdShowDetails")))
            DHTML->setShowDetails(details->isChecked());
    }
    phase("### Colori e Icone Tab ###");
    LeggiColorStyle(s.folders); // the product family's scheme, for every window of the program
    if (const auto* scheme = programColorScheme()) {
        colourWindow(this, *scheme);
        // Icons drawn for light bars vanish on dark ones: the icon theme follows the scheme.
        const bool dark = bColorStyle::RelativeLuminance(scheme->CLR_BARSMENU_BACK) < 0.4;
        const QString icons = dark ? QStringLiteral("breeze-dark") : QStringLiteral("breeze");
        if (QIcon::themeName().startsWith(QLatin1String("breeze")) && QIcon::themeName() != icons)
            QIcon::setThemeName(icons);
    }
    SetStyleColor(Tbs);
    CheckToolBar(true);
    CheckToolbarStatus();

    phase("### xxxLANGUAGExxx ###");
    // Built-in texts first: a language file that lacks a message leaves it readable.
    m_texts = Texts::builtIn(s.currentLanguage);
    applyLanguage(this, m_texts, languageTexts(), m_loadProgress);
    m_preview->applyTexts(m_texts);

    phase("### CaricaNomiCampi ###");
    bImpostazioni::CaricaNomiCampi(s.folders.fieldNameFile(), s.fieldNames);
    applyFieldNames(this, m_texts, s.fieldNames);

    phase("### LeggiIMP ###");
    bImpostazioni::LeggiIMP(s.folders.placementFile(), s.placement);
    applyPlacement();

    phase("### CaricaFont ###");
    CaricaFont();
    phase("### CaricaSize ###");
    CaricaSize();
    phase("### ColoraEditCode ###");
    ColoraEditCode();
    phase("### NuovoMessaggio ###");
    NuovoMessaggio();
    // The page's load begins as soon as the engine gets the event loop: the panes are placed,
    // the colour pop-up and the social window made, and the window shown, while it loads.
    DHTML->letTheLoadBegin(kLoadBeginMs);

    phase("### DockAllegati ###");
    if (!dockWidgetArea(dckAllegati) || dockWidgetArea(dckAllegati) == Qt::NoDockWidgetArea)
        addDockWidget(Qt::RightDockWidgetArea, dckAllegati);
    phase("### DockAllegati 2 ###");
    applyWindowTexts(m_allegati, m_texts);
    restoreDockWidget(dckAllegati);
    phase("### DockMemory ###");
    if (!dockWidgetArea(dckMemory) || dockWidgetArea(dckMemory) == Qt::NoDockWidgetArea)
        addDockWidget(Qt::RightDockWidgetArea, dckMemory);
    phase("### DockMemory 2 ###");
    applyWindowTexts(m_memory, m_texts);
    restoreDockWidget(dckMemory);
    phase("### DockAttributes ###");
    dockPropertyPane();
    phase("### DockAttributes 2 ###");
    phase("### PopColori ###");
    m_colour = new frmColor(this);
    if (QToolBar* text = m_bars.toolbar(QStringLiteral("TbTesto"))) {
        auto* button = new QToolButton(text);
        button->setObjectName(QStringLiteral("cmdColore"));
        button->setIcon(themeIcon(QStringLiteral("format-text-color")));
        button->setToolTip(QStringLiteral("Text colour"));
        text->insertWidget(m_bars.action(QStringLiteral("cmdNumerato")), button);
        connect(button, &QToolButton::clicked, this, [this, button] {
            m_colour->open(DHTML, button->mapToGlobal(QPoint(0, button->height())));
        });
    }
    // Our own commands raise no edit event in the page: the pick itself marks the message.
    connect(m_colour, &frmColor::colourPicked, this, &frmMain::Modificato);
    phase("### Social ###");
    InitializeSocial();
    phase("### Visualizzo finestre Dock ###");
    for (QDockWidget* d : m_visualPanes)
        d->show();

    phase("### Command ###");
    QString named = commandLineFile;
    named.remove(u'"');
    QString file;
    if (!named.isEmpty()) {
        file = CheckDosFielName(named);
        bError::wrtErrFree(QStringLiteral("-- Command -- File: ") + file);
    }
    // Once the page has its first document (and, for a file, half a second more): first the
    // copies a crashed or killed editor left, then the file. When a copy came back into this
    // window, the file gets an editor of its own.
    QPointer<frmMain> self(this);
    QTimer::singleShot(file.isEmpty() ? 0 : 500, this, [self, file] {
        if (!self)
            return;
        auto start = [self, file] {
            if (!self)
                return;
            const bool restored = self->offerRecovery();
            if (file.isEmpty() || self->m_closing)
                return;
            if (restored)
                QProcess::startDetached(QCoreApplication::applicationFilePath(), {file});
            else
                self->ApriMessaggio(file);
        };
        if (self->DHTML->isReady())
            start();
        else
            connect(self->DHTML, &VisualSurface::documentComplete, self, start,
                    Qt::SingleShotConnection);
    });
}

void frmMain::applyPlacement() {
    const auto& p = session().placement;
    const double tpp = twipsPerPixel(this);
    QRect r(int(p.left / tpp), int(p.top / tpp), int(p.width / tpp), int(p.height / tpp));
    if (r.width() < 400 || r.height() < 300)
        r.setSize(r.size().expandedTo(QSize(1000, 700)));
    r = pullOntoScreen(r);
    setWindowState(Qt::WindowNoState);
    move(r.topLeft());
    resize(r.size());
    if (p.state == bImpostazioni::kWindowMaximised)
        setWindowState(Qt::WindowMaximized);
    else if (p.state == bImpostazioni::kWindowMinimised)
        setWindowState(Qt::WindowMinimized);
}

void frmMain::rememberPlacement() {
    auto& p = session().placement;
    const int state = isMinimized()   ? bImpostazioni::kWindowMinimised
                      : isMaximized() ? bImpostazioni::kWindowMaximised
                                      : bImpostazioni::kWindowNormal;
    const double tpp = twipsPerPixel(this);
    const QRect g = geometry();
    bImpostazioni::RememberPlacement(p, state, float(g.x() * tpp), float(g.y() * tpp),
                                     float(g.width() * tpp), float(g.height() * tpp));
    p.state = qint16(state);
}

void frmMain::changeEvent(QEvent* event) {
    // Keep the last normal placement while the window is maximised or minimised.
    if (event->type() == QEvent::WindowStateChange && windowState() == Qt::WindowNoState)
        rememberPlacement();
    QMainWindow::changeEvent(event);
}

// The placement file keeps the last normal placement, so it follows every move and resize of a
// normal window.
void frmMain::moveEvent(QMoveEvent* event) {
    QMainWindow::moveEvent(event);
    if (windowState() == Qt::WindowNoState && isVisible())
        rememberPlacement();
}

void frmMain::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    if (windowState() == Qt::WindowNoState && isVisible())
        rememberPlacement();
}

void frmMain::ChiudiEDITOR() {
    if (m_closing)
        return;
    m_closing = true;
    Session& s = session();
    if (DaSalvare() && !m_terminating) {
        // A Yes whose save did not happen (cancelled, failed) keeps the changes in the copy.
        if (askToSave() && DaSalvare())
            m_terminating = writeRecoveryCopy();
    }
    if (!m_terminating)
        dropRecoveryCopy(); // a clean close leaves no copy behind
    stopImport();
    rememberPlacement();
    bImpostazioni::ScriviIMP(s.folders.placementFile(), s.placement);
    {
        QSaveFile layout(s.folders.layoutFile());
        if (layout.open(QIODevice::WriteOnly)) {
            layout.write(saveState());
            layout.commit();
        }
    }
    if (!m_doc.restoreFolder.isEmpty())
        CancellaPercorsoTemporaneo(m_doc.restoreFolder);
    s.pathElaboration.clear();
    bError::EndError();
    hide();
    emit closed();
}

void frmMain::closeEvent(QCloseEvent* event) {
    // The window system never closes us on its own: every route out is ChiudiEDITOR.
    event->ignore();
    ChiudiEDITOR();
}

void frmMain::reportError(const QString& routine, const QString& description) {
    ShowErrorReport(QStringLiteral("frmMain.") + routine + QStringLiteral("()"), 0, description,
                    this);
}

} // namespace quillora::gui
