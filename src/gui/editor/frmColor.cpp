#include "gui/editor/frmColor.h"

#include "core/app/bFunctions.h"
#include "core/editor/DhtmlCommands.h"
#include "gui/app/ColorStyle.h"
#include "gui/app/Dialogs.h"
#include "gui/app/Reported.h"
#include "gui/editor/VisualSurface.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QToolTip>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

constexpr int kColumns = 18;
constexpr int kCell = 14; // a swatch, without the gap between swatches
constexpr int kPitch = kCell + 2;

qint32 platformValue(const QColor& c) {
    return qint32(c.red() | c.green() << 8 | c.blue() << 16);
}

QColor fromPlatform(qint32 v) {
    return schemeColour(v);
}

// A frame that shows on the swatch whatever its colour.
QColor contrasting(const QColor& c) {
    return bColorStyle::RelativeLuminance(platformValue(c)) > 0.35 ? Qt::black : Qt::white;
}

} // namespace

// The swatches: one widget painting every cell, so that the grid stays light and the keyboard
// can walk it.
class ColourGrid : public QWidget {
public:
    explicit ColourGrid(QWidget* parent) : QWidget(parent) {
        setObjectName(QStringLiteral("grdColori"));
        setMouseTracking(true);
        setFocusPolicy(Qt::StrongFocus);
        const int rows = int((frmColor::webColours().size() + kColumns - 1) / kColumns);
        setFixedSize(kColumns * kPitch + 1, rows * kPitch + 1);
    }

    std::function<void(int)> picked;
    int current = -1;

    QRect cellRect(int index) const {
        return {1 + (index % kColumns) * kPitch + 1, 1 + (index / kColumns) * kPitch + 1, kCell,
                kCell};
    }
    int cellAt(QPoint pos) const {
        for (int i = 0; i < frmColor::webColours().size(); ++i) {
            if (cellRect(i).adjusted(-1, -1, 1, 1).contains(pos))
                return i;
        }
        return -1;
    }
    void setFocusCell(int index) {
        m_focus = index;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        const QList<QColor>& colours = frmColor::webColours();
        const QColor edge = palette().color(QPalette::Mid);
        for (int i = 0; i < colours.size(); ++i) {
            const QRect r = cellRect(i);
            p.fillRect(r, colours[i]);
            p.setPen(edge);
            p.drawRect(r.adjusted(0, 0, -1, -1));
        }
        auto ring = [&](int index, const QColor& colour, Qt::PenStyle style) {
            if (index < 0)
                return;
            p.setPen(QPen(colour, 1, style));
            p.drawRect(cellRect(index).adjusted(-1, -1, 0, 0));
            p.setPen(QPen(contrasting(colours[index]), 1, style));
            p.drawRect(cellRect(index).adjusted(1, 1, -2, -2));
        };
        ring(current, palette().color(QPalette::WindowText), Qt::SolidLine);
        ring(m_hover, palette().color(QPalette::Highlight), Qt::SolidLine);
        if (hasFocus() && m_focus != m_hover)
            ring(m_focus, palette().color(QPalette::WindowText), Qt::DotLine);
    }
    void mouseMoveEvent(QMouseEvent* e) override {
        const int cell = cellAt(e->position().toPoint());
        if (cell != m_hover) {
            m_hover = cell;
            update();
        }
    }
    void leaveEvent(QEvent*) override {
        m_hover = -1;
        update();
    }
    void mousePressEvent(QMouseEvent* e) override {
        m_pressed = e->button() == Qt::LeftButton ? cellAt(e->position().toPoint()) : -1;
    }
    void mouseReleaseEvent(QMouseEvent* e) override {
        const int cell = cellAt(e->position().toPoint());
        if (e->button() == Qt::LeftButton && cell >= 0 && cell == m_pressed && picked)
            picked(cell);
        m_pressed = -1;
    }
    void keyPressEvent(QKeyEvent* e) override {
        const int count = int(frmColor::webColours().size());
        int next = m_focus < 0 ? std::max(current, 0) : m_focus;
        switch (e->key()) {
        case Qt::Key_Left:
            next = std::max(next - 1, 0);
            break;
        case Qt::Key_Right:
            next = std::min(next + 1, count - 1);
            break;
        case Qt::Key_Up:
            next = next >= kColumns ? next - kColumns : next;
            break;
        case Qt::Key_Down:
            next = next + kColumns < count ? next + kColumns : next;
            break;
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            if (picked)
                picked(next);
            return;
        default:
            QWidget::keyPressEvent(e);
            return;
        }
        setFocusCell(next);
    }
    bool event(QEvent* e) override {
        if (e->type() == QEvent::ToolTip) {
            auto* help = static_cast<QHelpEvent*>(e);
            const int cell = cellAt(help->pos());
            if (cell >= 0)
                QToolTip::showText(help->globalPos(), frmColor::webColours()[cell].name().toUpper(),
                                   this, cellRect(cell));
            else
                QToolTip::hideText();
            return true;
        }
        return QWidget::event(e);
    }

private:
    int m_hover = -1;
    int m_pressed = -1;
    int m_focus = -1;
};

frmColor::frmColor(QWidget* parent) : QWidget(parent, Qt::Popup) {
    setObjectName(QStringLiteral("pwnColor"));
    setProperty(kControlTypeProperty, QStringLiteral("ColorPicker"));
    Form_Load();
}

frmColor::~frmColor() = default;

void frmColor::Form_Load() {
    reported(QStringLiteral("frmColor.Form_Load()"), this, [&] {
        m_sample = new QLabel(this);
        m_sample->setObjectName(QStringLiteral("picColore"));
        m_sample->setFixedSize(36, 18);
        m_code = new QLabel(this);
        m_code->setObjectName(QStringLiteral("lblColore"));
        m_code->setTextInteractionFlags(Qt::TextSelectableByMouse);
        m_grid = new ColourGrid(this);
        m_grid->picked = [this](int index) { color_Change(platformValue(webColours()[index])); };
        m_more = new QPushButton(tr("More colours..."), this);
        m_more->setObjectName(QStringLiteral("cmdAltriColori"));
        m_more->setAutoDefault(false);
        connect(m_more, &QPushButton::clicked, this, &frmColor::moreColours);

        auto* top = new QHBoxLayout;
        top->setSpacing(8);
        top->addWidget(m_sample);
        top->addWidget(m_code, 1);
        auto* bottom = new QHBoxLayout;
        bottom->addStretch(1);
        bottom->addWidget(m_more);
        auto* column = new QVBoxLayout(this);
        column->setContentsMargins(8, 8, 8, 8);
        column->setSpacing(6);
        column->addLayout(top);
        column->addWidget(m_grid);
        column->addLayout(bottom);
        column->setSizeConstraint(QLayout::SetFixedSize);
        setFocusProxy(m_grid);
        showCurrent();
    });
}

const QList<QColor>& frmColor::webColours() {
    static const QList<QColor> colours = [] {
        QList<QColor> out;
        // The named colours of HTML first: the ones most messages use.
        for (const char* name : {"#000000", "#808080", "#C0C0C0", "#FFFFFF", "#800000", "#FF0000",
                                 "#FFA500", "#FFFF00", "#808000", "#00FF00", "#008000", "#008080",
                                 "#00FFFF", "#0000FF", "#000080", "#800080", "#FF00FF", "#A52A2A"})
            out << QColor(QLatin1String(name));
        // Then the 216 web-safe colours, in six blocks of six by six: red across the blocks,
        // green down and blue across inside a block.
        const int steps[] = {0x00, 0x33, 0x66, 0x99, 0xCC, 0xFF};
        for (int row = 0; row < 12; ++row) {
            for (int column = 0; column < kColumns; ++column) {
                const int red = (row / 6) * 3 + column / 6;
                const int green = row % 6;
                const int blue = column % 6;
                out << QColor(steps[red], steps[green], steps[blue]);
            }
        }
        return out;
    }();
    return colours;
}

int frmColor::currentIndex() const {
    return int(webColours().indexOf(fromPlatform(m_color)));
}

QWidget* frmColor::grid() const {
    return m_grid;
}

QPoint frmColor::cellCentre(int index) const {
    return m_grid->cellRect(index).center();
}

void frmColor::setColor(qint32 color) {
    m_color = color & 0xFFFFFF;
    showCurrent();
}

void frmColor::showCurrent() {
    const QColor c = fromPlatform(m_color);
    QPixmap sample(m_sample->size());
    sample.fill(c);
    {
        QPainter p(&sample);
        p.setPen(palette().color(QPalette::Mid));
        p.drawRect(sample.rect().adjusted(0, 0, -1, -1));
    }
    m_sample->setPixmap(sample);
    m_code->setText(bFunctions::RGBtoHTML(m_color));
    m_grid->current = currentIndex();
    m_grid->setFocusCell(m_grid->current);
}

void frmColor::takeSurfaceColour() {
    if (!m_surface)
        return;
    // No colour (no text at the caret) or one we cannot read: the previous colour stays.
    static const QRegularExpression hex(QStringLiteral("^#[0-9A-Fa-f]{6}$"));
    const QString text = m_surface->state().foreColor;
    if (hex.match(text).hasMatch())
        setColor(bFunctions::HTMLtoRGB(text));
}

void frmColor::open(VisualSurface* surface, QPoint at) {
    reported(QStringLiteral("frmMain.Dks_PopupWindowShow()"), this, [&] {
        disconnect(m_stateConnection);
        m_surface = surface;
        if (surface) {
            // The mirror may already hold the answer; a fresher one follows the request.
            takeSurfaceColour();
            m_stateConnection =
                connect(surface, &VisualSurface::stateChanged, this, &frmColor::takeSurfaceColour);
            surface->execCommand(DECMD_GETFORECOLOR);
        }
        adjustSize();
        QRect r(at, size());
        const QScreen* screen = QGuiApplication::screenAt(at);
        if (!screen)
            screen = QGuiApplication::primaryScreen();
        if (screen) {
            const QRect room = screen->availableGeometry();
            r.moveRight(std::min(r.right(), room.right()));
            r.moveBottom(std::min(r.bottom(), room.bottom()));
            r.moveLeft(std::max(r.left(), room.left()));
            r.moveTop(std::max(r.top(), room.top()));
        }
        move(r.topLeft());
        show();
        m_grid->setFocus(Qt::PopupFocusReason);
    });
}

void frmColor::color_Change(qint32 picked) {
    reported(QStringLiteral("frmColor.color_Change()"), this, [&] {
        setColor(picked);
        if (m_surface)
            m_surface->execCommand(DECMD_SETFORECOLOR, QVariant(int(m_color)));
        close();
        emit colourPicked(m_color);
    });
}

void frmColor::moreColours() {
    // A modal dialog cannot sit on top of a pop-up that closes at the first outside click.
    hide();
    const QColor initial = fromPlatform(m_color);
    QWidget* owner = parentWidget() ? parentWidget()->window() : nullptr;
    const std::optional<QColor> chosen = dialogs().chooseColor(owner, initial, tr("Text colour"));
    if (chosen && chosen->isValid())
        color_Change(platformValue(*chosen));
}

void frmColor::showEvent(QShowEvent* event) {
    reported(QStringLiteral("frmColor.Form_Activate()"), this, [&] { showCurrent(); });
    QWidget::showEvent(event);
}

void frmColor::hideEvent(QHideEvent* event) {
    // The colour is taken when the picker opens; later caret moves are not the picker's.
    disconnect(m_stateConnection);
    QWidget::hideEvent(event);
}

void frmColor::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace quillora::gui
