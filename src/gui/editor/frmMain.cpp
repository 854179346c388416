#include "gui/editor/frmMain.h"

#include "core/app/TextFile.h"
#include "core/app/bError.h"
#include "core/app/bImpostazioni.h"
#include "gui/app/Session.h"
#include "gui/app/WindowHelpers.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QLabel>
#include <QSaveFile>
#include <QStatusBar>

namespace quillora::gui {

namespace {
void phase(const char* line) {
    bError::wrtErrFree(QString::fromLatin1(line));
}
} // namespace

frmMain::frmMain(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("frmMain"));
    auto* centre = new QLabel(this);
    centre->setObjectName(QStringLiteral("lblWorkspace"));
    centre->setAlignment(Qt::AlignCenter);
    setCentralWidget(centre);
    statusBar()->setObjectName(QStringLiteral("stcHelp"));
    CambiaTitoloEditor(QStringLiteral("[NuovoFile.mssx]"));
}

void frmMain::CambiaTitoloEditor(const QString& titleName) {
    setWindowTitle(QStringLiteral("Quillora - ") + titleName);
}

void frmMain::Form_Load(const QString& commandLineFile) {
    Session& s = session();
    {
        QFile layout(s.folders.layoutFile());
        if (layout.open(QIODevice::ReadOnly))
            restoreState(layout.readAll());
    }
    phase("### CaricaNomiCampi ###");
    bImpostazioni::CaricaNomiCampi(s.folders.fieldNameFile(), s.fieldNames);
    phase("### LeggiIMP ###");
    bImpostazioni::LeggiIMP(s.folders.placementFile(), s.placement);
    applyPlacement();
    phase("### Command ###");
    if (!commandLineFile.isEmpty())
        bError::wrtErrFree(QStringLiteral("-- Command -- File: ") + commandLineFile);
}

void frmMain::applyPlacement() {
    const auto& p = session().placement;
    const double tpp = twipsPerPixel(this);
    QRect r(int(p.left / tpp), int(p.top / tpp), int(p.width / tpp), int(p.height / tpp));
    if (r.width() < 200 || r.height() < 150)
        r.setSize(r.size().expandedTo(minimumSizeHint()).expandedTo(QSize(800, 600)));
    r = pullOntoScreen(r);
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

void frmMain::ChiudiEDITOR() {
    if (m_closing)
        return;
    m_closing = true;
    Session& s = session();
    rememberPlacement();
    bImpostazioni::ScriviIMP(s.folders.placementFile(), s.placement);
    {
        QSaveFile layout(s.folders.layoutFile());
        if (layout.open(QIODevice::WriteOnly)) {
            layout.write(saveState());
            layout.commit();
        }
    }
    if (!s.pathElaboration.isEmpty())
        CancellaPercorsoTemporaneo(s.pathElaboration);
    bError::EndError();
    QApplication::exit(0);
}

void frmMain::closeEvent(QCloseEvent* event) {
    // The window system never closes us on its own: every route out is ChiudiEDITOR.
    event->ignore();
    ChiudiEDITOR();
}

} // namespace quillora::gui
