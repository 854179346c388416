#include "gui/app/frmInfoSu.h"

#include "gui/app/AboutPanel.h"
#include "gui/app/ProgramIcon.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPointer>
#include <QScreen>
#include <QVBoxLayout>

namespace quillora::gui {

frmInfoSu::frmInfoSu(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmInfoSu"));
    setWindowTitle(tr("About Quillora"));
    setWindowIcon(programIcon());
    setStyleSheet(QStringLiteral("QDialog#frmInfoSu { background: #ffffff; }"
                                 "QLabel#lblHint { color: #8a93a0; }"));

    m_panel = new AboutPanel(QStringLiteral("frmInfoSu"), this);
    auto* hint = new QLabel(tr("Click anywhere or press Esc to close"), this);
    hint->setObjectName(QStringLiteral("lblHint"));
    QFont small = hint->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    hint->setFont(small);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(28, 26, 28, 14);
    column->setSpacing(18);
    column->addWidget(m_panel);
    column->addWidget(hint, 0, Qt::AlignRight);
    column->setSizeConstraint(QLayout::SetFixedSize);
    Form_Load();
}

frmInfoSu* frmInfoSu::instance() {
    static QPointer<frmInfoSu> window;
    if (!window)
        window = new frmInfoSu;
    return window;
}

void frmInfoSu::showAbout() {
    Form_Load();
    adjustSize();
    if (const QWidget* over = QApplication::activeWindow(); over && over != this) {
        QRect frame = rect();
        frame.moveCenter(over->frameGeometry().center());
        move(frame.topLeft());
    }
    show();
    raise();
    activateWindow();
}

void frmInfoSu::Form_Load() {
    m_panel->Form_Load();
}

void frmInfoSu::keyPressEvent(QKeyEvent* event) {
    event->accept();
    if (event->key() == Qt::Key_Escape)
        hide();
    // Every other key, Enter included, does nothing: there is no button to press.
}

void frmInfoSu::mouseReleaseEvent(QMouseEvent* event) {
    // Reached from the background and from the labels that let clicks through (the picture,
    // the version); the links keep their clicks.
    if (event->button() == Qt::LeftButton)
        hide();
    event->accept();
}

void frmInfoSu::closeEvent(QCloseEvent* event) {
    event->ignore();
    hide();
}

} // namespace quillora::gui
