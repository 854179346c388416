#include "gui/app/frmSplash.h"

#include "gui/app/AboutPanel.h"
#include "gui/app/ProgramIcon.h"

#include <QProgressBar>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

const char* kStyleSheet = R"(
QWidget#frmSplash { background: #ffffff; border: 1px solid #c7d1df; border-radius: 0; }
QWidget#fraAccent { background: qlineargradient(x1:0, y1:0, x2:1, y2:0,
                                                stop:0 #4c8df6, stop:1 #1f4fb5); }
QProgressBar#PRG { border: none; background: #e7ecf3; border-radius: 3px; }
QProgressBar#PRG::chunk { background: #2f6fde; border-radius: 3px; }
)";

} // namespace

frmSplash::frmSplash(QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint) {
    setObjectName(QStringLiteral("frmSplash"));
    setAttribute(Qt::WA_StyledBackground);
    setWindowTitle(QStringLiteral("Quillora"));
    setWindowIcon(programIcon());
    setStyleSheet(QString::fromLatin1(kStyleSheet));

    auto* accent = new QWidget(this);
    accent->setObjectName(QStringLiteral("fraAccent"));
    accent->setAttribute(Qt::WA_StyledBackground);
    accent->setFixedHeight(5);

    m_panel = new AboutPanel(QStringLiteral("frmSplash"), this);

    m_progress = new QProgressBar(this);
    m_progress->setObjectName(QStringLiteral("PRG"));
    m_progress->setTextVisible(false);
    m_progress->setFixedHeight(6);
    m_progress->setRange(0, 100);
    m_progress->setValue(0);

    auto* inner = new QVBoxLayout;
    inner->setContentsMargins(32, 26, 32, 22);
    inner->setSpacing(24);
    inner->addWidget(m_panel);
    inner->addWidget(m_progress);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(1, 1, 1, 1);
    column->setSpacing(0);
    column->addWidget(accent);
    column->addLayout(inner);
    column->setSizeConstraint(QLayout::SetFixedSize);
    m_panel->setMinimumWidth(440);
    Form_Load();
}

void frmSplash::Form_Load() {
    m_panel->Form_Load();
}

bool frmSplash::firstActivation() {
    if (m_activated)
        return false;
    m_activated = true;
    return true;
}

} // namespace quillora::gui
