#include "gui/app/ColorStyle.h"

#include "core/app/Folders.h"
#include "gui/app/Pictures.h"
#include "gui/app/Reported.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDockWidget>
#include <QEvent>
#include <QFrame>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QMap>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QProxyStyle>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSplitter>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QTextEdit>
#include <QToolBar>
#include <QToolButton>
#include <QToolTip>
#include <QTreeView>
#include <QWebEngineView>
#include <Qsci/qsciscintilla.h>

#include <algorithm>
#include <optional>

namespace quillora::gui {

namespace cs = quillora::bColorStyle;
using cs::Colour;
using cs::DockPart;
using cs::Property;

namespace {

// ---- Which widget is which control ----------------------------------------------------------

struct ClassType {
    const QMetaObject* meta;
    const char* type; // "" for a widget whose colours are its own business
};

// First match wins, so a class comes before the classes it derives from.
const ClassType kClassTypes[] = {
    // The message's own pages and the source page's syntax colours are the user's document
    // and its own scheme file, never the program's scheme.
    {&QWebEngineView::staticMetaObject, "DHTMLEdit"},
    {&QsciScintilla::staticMetaObject, ""},
    {&QTabWidget::staticMetaObject, "TabControl"},
    {&QDateTimeEdit::staticMetaObject, "DateTimePicker"},
    {&QPushButton::staticMetaObject, "PushButton"},
    {&QToolButton::staticMetaObject, "PushButton"},
    {&QCheckBox::staticMetaObject, "CheckBox"},
    {&QRadioButton::staticMetaObject, "RadioButton"},
    {&QComboBox::staticMetaObject, "ComboBox"},
    {&QLineEdit::staticMetaObject, "FlatEdit"},
    {&QAbstractSpinBox::staticMetaObject, "FlatEdit"},
    {&QTextEdit::staticMetaObject, "FlatEdit"},
    {&QPlainTextEdit::staticMetaObject, "FlatEdit"},
    {&QLabel::staticMetaObject, "Label"},
    {&QGroupBox::staticMetaObject, "GroupBox"},
    {&QTableView::staticMetaObject, "VSFlexGrid"},
    {&QTreeView::staticMetaObject, "TreeView"},
    {&QListView::staticMetaObject, "ListBox"},
    {&QProgressBar::staticMetaObject, "ProgressLucid"},
    {&QSplitter::staticMetaObject, "Splitter"},
    {&QDockWidget::staticMetaObject, "DockStudio"},
    {&QToolBar::staticMetaObject, "DockStudio"},
    {&QMenuBar::staticMetaObject, "DockStudio"},
    {&QMenu::staticMetaObject, "DockStudio"},
    {&QStatusBar::staticMetaObject, "DockStudio"},
};

// Which palette roles a rule's colour goes to, by control type.
struct RoleMap {
    const char* type;
    QList<QPalette::ColorRole> back;
    QList<QPalette::ColorRole> fore;
    bool fills = false; // paints its own background
};

const QList<RoleMap>& roleMaps() {
    using R = QPalette;
    static const QList<RoleMap> maps = {
        {"PushButton", {R::Button}, {R::ButtonText}},
        {"FlatEdit", {R::Base}, {R::Text}},
        // A combo box that cannot be typed in is drawn as a button.
        {"ComboBox", {R::Base, R::Button}, {R::Text, R::ButtonText, R::WindowText}},
        {"ListBox", {R::Base}, {R::Text}},
        {"TreeView", {R::Base}, {R::Text}},
        {"VSFlexGrid", {R::Base}, {R::Text}},
        {"RadioButton", {R::Window}, {R::WindowText}},
        {"CheckBox", {R::Window}, {R::WindowText}},
        {"Label", {R::Window}, {R::WindowText}},
        {"GroupBox", {R::Window}, {R::WindowText}},
        {"PictureBox", {R::Window}, {R::WindowText}, true},
        {"ColorPicker", {R::Window}, {R::WindowText}, true},
        {"ColorHexagon", {R::Window}, {R::WindowText}, true},
        // The percentage is written across the tube and the empty part alike.
        {"ProgressLucid", {}, {R::Text, R::HighlightedText}},
        {"Line", {}, {}},
        {"Splitter", {}, {}},
    };
    return maps;
}

const RoleMap* roleMap(const QString& type) {
    for (const RoleMap& m : roleMaps()) {
        if (type == QLatin1String(m.type))
            return &m;
    }
    return nullptr;
}

// ---- Colours --------------------------------------------------------------------------------

QColor mix(const QColor& a, const QColor& b, double towardsB) {
    const double t = std::clamp(towardsB, 0.0, 1.0);
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * t),
                            float(a.greenF() + (b.greenF() - a.greenF()) * t),
                            float(a.blueF() + (b.blueF() - a.blueF()) * t));
}

bool isDark(const QColor& c) {
    return cs::RelativeLuminance(qint32(c.red() | c.green() << 8 | c.blue() << 16)) < 0.2;
}

QString css(const QColor& c) {
    return c.name(QColor::HexRgb);
}

// A foreground everywhere, dimmed halfway into its background when disabled.
void setForeground(QPalette& p, QPalette::ColorRole role, const QColor& fore, const QColor& back) {
    p.setColor(role, fore);
    p.setColor(QPalette::Disabled, role, mix(fore, back, 0.55));
}

// ---- Style sheets we add to a widget's own ---------------------------------------------------

// A widget may carry a style sheet of its own design; the parts we add go after it, so that
// they win over its colours, and are replaced (never piled up) when colouring again.
constexpr const char* kDesignedSheet = "quilloraDesignedSheet";
constexpr const char* kComposedSheet = "quilloraComposedSheet";
constexpr const char* kSheetParts = "quilloraSheetParts";

QString designedSheet(const QWidget* w) {
    const QString current = w->styleSheet();
    if (!current.isEmpty() && current == w->property(kComposedSheet).toString())
        return w->property(kDesignedSheet).toString();
    return current;
}

void setSheetPart(QWidget* w, const char* key, const QString& part) {
    const QString current = w->styleSheet();
    const bool ours = !current.isEmpty() && current == w->property(kComposedSheet).toString();
    const QString designed = ours ? w->property(kDesignedSheet).toString() : current;
    QVariantMap parts = ours ? w->property(kSheetParts).toMap() : QVariantMap();
    if (part.isEmpty())
        parts.remove(QLatin1String(key));
    else
        parts.insert(QLatin1String(key), part);
    QString composed = designed;
    for (auto it = parts.cbegin(); it != parts.cend(); ++it) {
        if (!composed.isEmpty())
            composed += u'\n';
        composed += it.value().toString();
    }
    w->setProperty(kDesignedSheet, designed);
    w->setProperty(kSheetParts, parts);
    w->setProperty(kComposedSheet, composed);
    if (composed != current)
        w->setStyleSheet(composed);
}

// The colour the rules give a property of a control, if they give one.
std::optional<QColor> ruleColour(const QList<cs::Setting>& settings, Property property,
                                 const ColorScheme& scheme) {
    std::optional<QColor> out;
    for (const cs::Setting& s : settings) {
        if (s.property == property)
            out = schemeColour(scheme, s.colour);
    }
    return out;
}

// A designed style sheet names its widgets; rules for the same names, added after it, take
// their colours over. Palettes cannot: a style sheet's colours win over the palette.
QString overridesFor(QWidget* holder, const ColorScheme& scheme) {
    QString out;
    const QColor workspace = schemeColour(scheme, Colour::CLR_WORKSPACE);
    // A name that is no identifier would make the whole sheet unreadable, the design included.
    static const QRegularExpression identifier(QStringLiteral("^[A-Za-z_][A-Za-z0-9_-]*$"));
    auto visit = [&](auto&& self, QWidget* w) -> void {
        const QString name = w->objectName();
        if (identifier.match(name).hasMatch()) {
            const QString selector = QStringLiteral("QWidget#") + name;
            if (w->isWindow()) {
                out += QStringLiteral("%1 { background-color: %2; color: %3; }\n")
                           .arg(selector, css(schemeColour(scheme, cs::kWindowBack)),
                                css(schemeColour(scheme, cs::kWindowText)));
            } else {
                const QString type = ControlType(w);
                const auto settings = cs::SettingsFor(type, name);
                const auto fore = ruleColour(settings, Property::ForeColor, scheme);
                const auto back = ruleColour(settings, Property::BackColor, scheme);
                if (type == u"Label" && fore)
                    out += QStringLiteral("%1 { color: %2; }\n").arg(selector, css(*fore));
                else if ((type == u"PictureBox" || type == u"GroupBox") && back)
                    out += QStringLiteral("%1 { background-color: %2; border-color: %3; }\n")
                               .arg(selector, css(*back), css(workspace));
            }
        }
        for (QObject* o : w->children()) {
            auto* child = qobject_cast<QWidget*>(o);
            // A child with a design of its own gets its own overrides.
            if (child && !child->isWindow() && designedSheet(child).isEmpty())
                self(self, child);
        }
    };
    visit(visit, holder);
    return out;
}

// The separators between the main window's panes: this wide, in the workspace colour.
constexpr int kSeparatorExtent = 3;

Colour workspaceColour() {
    return cs::DockColour(DockPart::Workspace);
}

// ---- Colouring -----------------------------------------------------------------------------
//
// Style sheets first, then polish, then palettes: re-polishing after a style-sheet change gives
// a widget back the palette it had when it was polished before.

QString dockSheet(const ColorScheme& scheme) {
    auto c = [&scheme](DockPart part) { return css(schemeColour(scheme, cs::DockColour(part))); };
    return QStringLiteral("QDockWidget { color: %1; }\n"
                          "QDockWidget::title { background-color: %2; "
                          "border-bottom: 1px solid %3; padding: 4px 6px; text-align: left; }")
        .arg(c(DockPart::Text), c(DockPart::PaneTitle), c(DockPart::Workspace));
}

// Whether `scheme` is the program's: its style is installed then, and every window takes the
// scheme when first shown.
bool isProgramScheme(const ColorScheme& scheme);
bool styleDrawsSeparators(const QWidget* window, const ColorScheme& scheme);

void applySheets(QWidget* w, const ColorScheme& scheme) {
    if (qobject_cast<QMainWindow*>(w)) {
        // Under the program's scheme its style draws the separators between the panes: a sheet
        // on the window would put every control of it under the style-sheet style, whose polish
        // is most of the time the colouring takes.
        setSheetPart(w, "workspace",
                     styleDrawsSeparators(w, scheme)
                         ? QString()
                         : QStringLiteral("QMainWindow::separator { background-color: %1; "
                                          "width: %2px; height: %2px; }")
                               .arg(css(schemeColour(scheme, workspaceColour())))
                               .arg(kSeparatorExtent));
    }
    if (qobject_cast<QDockWidget*>(w))
        setSheetPart(w, "dock", dockSheet(scheme));
    const QString type = ControlType(w);
    if (const auto split =
            ruleColour(cs::SettingsFor(type, w->objectName()), Property::SplitColor, scheme))
        setSheetPart(
            w, "splitter",
            QStringLiteral("QSplitter::handle { background-color: %1; }").arg(css(*split)));
    if (!designedSheet(w).isEmpty())
        setSheetPart(w, "overrides", overridesFor(w, scheme));
    for (QObject* o : w->children()) {
        auto* child = qobject_cast<QWidget*>(o);
        if (child && !child->isWindow())
            applySheets(child, scheme);
    }
}

void dockPalette(QWidget* control, const ColorScheme& scheme) {
    auto c = [&scheme](DockPart part) { return schemeColour(scheme, cs::DockColour(part)); };
    const QColor text = c(DockPart::Text);
    // A menu is a window of its own: nothing to inherit the other roles from.
    QPalette p = control->isWindow() ? SchemePalette(scheme) : QPalette();
    auto surface = [&](const QColor& back) {
        for (QPalette::ColorRole role : {QPalette::Window, QPalette::Button, QPalette::Base})
            p.setColor(role, back);
        for (QPalette::ColorRole role :
             {QPalette::WindowText, QPalette::ButtonText, QPalette::Text})
            setForeground(p, role, text, back);
        p.setColor(QPalette::Highlight, c(DockPart::Selection));
        p.setColor(QPalette::HighlightedText, text);
        p.setColor(QPalette::Mid, c(DockPart::Workspace)); // separators
    };
    if (qobject_cast<QMenu*>(control)) {
        surface(c(DockPart::Menu));
    } else if (qobject_cast<QDockWidget*>(control)) {
        // The pane's body and title text; the fields and buttons inside it are the window's.
        p.setColor(QPalette::Window, c(DockPart::PaneBack));
        setForeground(p, QPalette::WindowText, text, c(DockPart::PaneBack));
    } else {
        // Toolbars, menu bar, status bar.
        surface(c(DockPart::Bars));
        control->setAutoFillBackground(true);
    }
    control->setPalette(p);
}

// Sets the roles the rules give the control on top of `p` (for a control inside a window, an
// empty palette: the roles the rules leave alone keep following the window).
void colourControl(QWidget* w, const ColorScheme& scheme, QPalette p = QPalette()) {
    const QString type = ControlType(w);
    if (type == u"DockStudio") {
        dockPalette(w, scheme);
        return;
    }
    const QList<cs::Setting> settings = cs::SettingsFor(type, w->objectName());
    const RoleMap* map = roleMap(type);
    if (settings.isEmpty() || !map) {
        if (p.resolveMask() != 0)
            w->setPalette(p);
        return;
    }

    const QColor windowBack = schemeColour(scheme, cs::kWindowBack);
    std::optional<QColor> back;
    for (const cs::Setting& s : settings) {
        const QColor c = schemeColour(scheme, s.colour);
        switch (s.property) {
        case Property::BackColor:
            back = c;
            for (QPalette::ColorRole role : map->back)
                p.setColor(role, c);
            if (map->back.contains(QPalette::Base))
                p.setColor(QPalette::AlternateBase,
                           mix(c, schemeColour(scheme, Colour::CLR_TESTO_FINESTRA), 0.05));
            break;
        case Property::ForeColor:
            for (QPalette::ColorRole role : map->fore)
                setForeground(p, role, c, back.value_or(windowBack));
            break;
        case Property::SelectionBackColor:
        case Property::TubeColor:
            p.setColor(QPalette::Highlight, c);
            break;
        case Property::SelectionForeColor:
            p.setColor(QPalette::HighlightedText, c);
            break;
        case Property::BorderColor:
            if (type == u"Line") {
                for (QPalette::ColorRole role :
                     {QPalette::WindowText, QPalette::Dark, QPalette::Light, QPalette::Mid})
                    p.setColor(role, c);
                if (auto* frame = qobject_cast<QFrame*>(w)) {
                    frame->setFrameShadow(QFrame::Plain);
                    frame->setLineWidth(2);
                }
            }
            break;
        case Property::Transparent:
            w->setAutoFillBackground(false);
            break;
        default: // splitter bars are style sheets; gradients and title borders we do not have
            break;
        }
    }
    if (p.resolveMask() != 0)
        w->setPalette(p);
    if (map->fills)
        w->setAutoFillBackground(true);
}

void colourTree(QWidget* parent, const ColorScheme& scheme) {
    for (QObject* o : parent->children()) {
        auto* w = qobject_cast<QWidget*>(o);
        if (!w)
            continue;
        if (w->isWindow()) {
            // Menus, drop-down lists, owned dialogs: windows of their own. Under the program's
            // scheme a hidden one takes it when first shown; colouring them all here, few of which
            // a session ever opens, would cost a start as much as the rest of its window.
            if (!w->isVisible() && isProgramScheme(scheme))
                continue;
            colourWindow(w, scheme);
            continue;
        }
        colourControl(w, scheme);
        colourTree(w, scheme);
    }
}

// ---- The program's scheme --------------------------------------------------------------------

// The few glyphs styles draw from fixed black pictures (pane title buttons, the toolbar's
// overflow chevron) would vanish on a dark scheme: they take the bars' text colour instead.
class SchemeStyle : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override {
        if (metric == PM_DockWidgetSeparatorExtent)
            return kSeparatorExtent;
        return QProxyStyle::pixelMetric(metric, option, widget);
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        const ColorScheme* scheme = programColorScheme();
        if (element == PE_IndicatorDockWidgetResizeHandle && scheme) {
            painter->fillRect(option->rect, schemeColour(*scheme, workspaceColour()));
            return;
        }
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }

    QIcon standardIcon(StandardPixmap sp, const QStyleOption* option,
                       const QWidget* widget) const override {
        const ColorScheme* scheme = programColorScheme();
        if (!scheme || !isGlyph(sp))
            return untinted(sp, option, widget);
        // Asked for on every paint of a pane's title: each glyph is tinted once per colour.
        const QColor tint = schemeColour(*scheme, cs::DockColour(DockPart::Text));
        const auto key = std::make_pair(int(sp), tint.rgb());
        if (const auto found = m_tinted.constFind(key); found != m_tinted.cend())
            return *found;
        const QIcon icon = untinted(sp, option, widget);
        if (icon.isNull())
            return icon;
        return *m_tinted.insert(key, tinted(icon, tint));
    }

private:
    mutable QMap<std::pair<int, QRgb>, QIcon> m_tinted;
    mutable QMap<int, QIcon> m_glyphs;

    // The glyphs every window shows at once come from Qt's pictures without its readers.
    QIcon untinted(StandardPixmap sp, const QStyleOption* option, const QWidget* widget) const {
        const Qt::LayoutDirection direction = option   ? option->direction
                                              : widget ? widget->layoutDirection()
                                                       : QGuiApplication::layoutDirection();
        if (direction == Qt::LeftToRight) {
            if (const auto found = m_glyphs.constFind(int(sp)); found != m_glyphs.cend())
                return *found;
            const QIcon glyph = qtGlyphIcon(sp, direction);
            if (!glyph.isNull())
                return *m_glyphs.insert(int(sp), glyph);
        }
        return QProxyStyle::standardIcon(sp, option, widget);
    }

    static bool isGlyph(StandardPixmap sp) {
        switch (sp) {
        case SP_TitleBarCloseButton:
        case SP_TitleBarNormalButton:
        case SP_TitleBarMinButton:
        case SP_TitleBarMaxButton:
        case SP_DockWidgetCloseButton:
        case SP_ToolBarHorizontalExtensionButton:
        case SP_ToolBarVerticalExtensionButton:
            return true;
        default:
            return false;
        }
    }
    // Dark strokes become the tint, light fills become see-through.
    static QIcon tinted(const QIcon& icon, const QColor& tint) {
        QList<QSize> sizes = icon.availableSizes();
        if (sizes.isEmpty())
            sizes = {QSize(16, 16), QSize(32, 32)};
        QIcon out;
        for (const QSize& size : sizes) {
            QImage image = icon.pixmap(size).toImage().convertToFormat(QImage::Format_ARGB32);
            for (int y = 0; y < image.height(); ++y) {
                auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
                for (int x = 0; x < image.width(); ++x) {
                    const QRgb px = line[x];
                    const int ink = qAlpha(px) * (255 - qGray(px)) / 255;
                    line[x] = qRgba(tint.red(), tint.green(), tint.blue(), ink);
                }
            }
            out.addPixmap(QPixmap::fromImage(image));
        }
        return out;
    }
};

constexpr const char* kColouredGeneration = "quilloraColouredGeneration";

struct ProgramStyle {
    std::optional<ColorScheme> scheme;
    QString name;
    int generation = 0;
    std::optional<QPalette> savedPalette;
    std::optional<QPalette> savedToolTipPalette;
    QString savedStyle;
    QPointer<QObject> colourer;
};

ProgramStyle& program() {
    static ProgramStyle p;
    return p;
}

bool isProgramScheme(const ColorScheme& scheme) {
    const ProgramStyle& p = program();
    return p.scheme && *p.scheme == scheme;
}

bool styleDrawsSeparators(const QWidget* window, const ColorScheme& scheme) {
    return isProgramScheme(scheme) && dynamic_cast<SchemeStyle*>(window->style());
}

// Colours every window the first time it is shown under the current scheme.
class WindowColourer : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::Show || !watched->isWidgetType())
            return false;
        auto* w = static_cast<QWidget*>(watched);
        const ProgramStyle& p = program();
        if (!w->isWindow() || !p.scheme || w->property(kColouredGeneration).toInt() == p.generation)
            return false;
        const Qt::WindowType kind = w->windowType();
        if (kind == Qt::ToolTip || kind == Qt::SplashScreen)
            return false;
        w->setProperty(kColouredGeneration, p.generation);
        if (qobject_cast<QMenu*>(w))
            SetColorDockStudio(w, *p.scheme);
        else
            colourWindow(w, *p.scheme);
        return false;
    }
};

} // namespace

QColor schemeColour(qint32 value) {
    const quint32 v = quint32(value);
    return QColor(int(v & 0xFF), int((v >> 8) & 0xFF), int((v >> 16) & 0xFF));
}

QColor schemeColour(const ColorScheme& scheme, Colour colour) {
    return schemeColour(scheme.value(colour));
}

QString ControlType(const QWidget* widget) {
    if (!widget)
        return QString();
    const QVariant declared = widget->property(kControlTypeProperty);
    if (declared.isValid())
        return declared.toString();
    const QMetaObject* meta = widget->metaObject();
    for (const ClassType& c : kClassTypes) {
        if (meta->inherits(c.meta))
            return QString::fromLatin1(c.type);
    }
    if (meta == &QFrame::staticMetaObject) {
        const auto* frame = static_cast<const QFrame*>(widget);
        if (frame->frameShape() == QFrame::HLine || frame->frameShape() == QFrame::VLine)
            return QStringLiteral("Line");
    }
    // Plain containers are told apart by the prefixes of the program's control names.
    if (meta == &QWidget::staticMetaObject || meta == &QFrame::staticMetaObject) {
        const QString name = widget->objectName();
        if (name.startsWith(QLatin1String("pic")))
            return QStringLiteral("PictureBox");
        if (name.startsWith(QLatin1String("fra")))
            return QStringLiteral("GroupBox");
    }
    return QString();
}

QPalette SchemePalette(const ColorScheme& scheme) {
    auto c = [&scheme](Colour colour) { return schemeColour(scheme, colour); };
    const QColor window = c(Colour::CLR_BARSMENU_BACK);
    const QColor windowText = c(Colour::CLR_MENU_COMMAND);
    const QColor base = c(Colour::CLR_SFONDO_FINESTRA);
    const QColor text = c(Colour::CLR_TESTO_FINESTRA);
    const QColor button = c(Colour::CLR_BUTTON_BACKCOLOR);
    const QColor buttonText = c(Colour::CLR_BUTTON_FORECOLOR);
    const bool dark = isDark(window);

    QPalette p;
    p.setColor(QPalette::Window, window);
    setForeground(p, QPalette::WindowText, windowText, window);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::Disabled, QPalette::Base, window);
    p.setColor(QPalette::AlternateBase, mix(base, text, 0.05));
    setForeground(p, QPalette::Text, text, base);
    p.setColor(QPalette::PlaceholderText, mix(text, base, 0.45));
    p.setColor(QPalette::Button, button);
    setForeground(p, QPalette::ButtonText, buttonText, button);
    p.setColor(QPalette::Highlight, c(Colour::CLR_HIGHLIGHT_BORDER));
    p.setColor(QPalette::Disabled, QPalette::Highlight,
               mix(c(Colour::CLR_HIGHLIGHT_BORDER), window, 0.5));
    p.setColor(QPalette::HighlightedText, c(Colour::CLR_HIGHLIGHT_TEXT));
    p.setColor(QPalette::ToolTipBase, c(cs::DockColour(DockPart::PaneTitle)));
    p.setColor(QPalette::ToolTipText, c(cs::DockColour(DockPart::Text)));
    p.setColor(QPalette::Link, c(Colour::CLR_DOCK_HIGHLIGHT));
    p.setColor(QPalette::LinkVisited, mix(c(Colour::CLR_DOCK_HIGHLIGHT), text, 0.3));
    // The bevel shades styles draw with: lighter and darker than a button on either kind of
    // scheme, softer on a dark one where a bright edge glares.
    const QColor light = mix(button, Qt::white, dark ? 0.12 : 0.6);
    const QColor shade = mix(button, Qt::black, dark ? 0.45 : 0.3);
    p.setColor(QPalette::Light, light);
    p.setColor(QPalette::Midlight, mix(button, light, 0.5));
    p.setColor(QPalette::Mid, c(Colour::CLR_WORKSPACE));
    p.setColor(QPalette::Dark, shade);
    p.setColor(QPalette::Shadow, mix(button, Qt::black, dark ? 0.7 : 0.55));
    p.setColor(QPalette::BrightText, dark ? windowText : text);
    return p;
}

void colourWindow(QWidget* window, const ColorScheme& scheme) {
    if (!window)
        return;
    const QString owner =
        window->objectName().isEmpty() ? QStringLiteral("bColorStyle") : window->objectName();
    reported(owner + QStringLiteral(".SetStyleColor()"), window, [&] {
        applySheets(window, scheme);
        // Polished now, with its sheets, so that the palettes below are the last word.
        window->ensurePolished();
        // A window may itself be a control (a pop-up colour picker, a menu).
        if (ControlType(window) == u"DockStudio")
            dockPalette(window, scheme);
        else
            colourControl(window, scheme, SchemePalette(scheme));
        colourTree(window, scheme);
        if (program().scheme)
            window->setProperty(kColouredGeneration, program().generation);
    });
}

void colourControls(QWidget* control, const ColorScheme& scheme) {
    if (!control)
        return;
    reported(QStringLiteral("bColorStyle.colourControls()"), control, [&] {
        applySheets(control, scheme);
        control->ensurePolished();
        colourControl(control, scheme);
        colourTree(control, scheme);
    });
}

void SetColorDockStudio(QWidget* control, const ColorScheme& scheme) {
    if (!control)
        return;
    reported(QStringLiteral("bColorStyle.SetColorDockStudio()"), control, [&] {
        applySheets(control, scheme);
        control->ensurePolished();
        dockPalette(control, scheme);
        colourTree(control, scheme);
    });
}

void SetStyleColor(QTabWidget* tabs, const ColorScheme& scheme, const QString& schemeName) {
    if (!tabs)
        return;
    reported(QStringLiteral("frmMain.SetStyleColor()"), tabs, [&] {
        const cs::TabStripColours t = cs::TabStripFor(schemeName);
        auto c = [&scheme](Colour colour) { return schemeColour(scheme, colour); };
        // The accent sits on the edge the tab shares with its page.
        const char* edge = "top";
        switch (tabs->tabPosition()) {
        case QTabWidget::North:
            edge = "bottom";
            break;
        case QTabWidget::South:
            edge = "top";
            break;
        case QTabWidget::West:
            edge = "right";
            break;
        case QTabWidget::East:
            edge = "left";
            break;
        }
        const QString sheet =
            QStringLiteral("QTabWidget::pane { border: none; }\n"
                           "QTabBar { qproperty-drawBase: 0; }\n"
                           "QTabBar::tab { background-color: %1; color: %2; border: none; "
                           "border-%7: 2px solid %1; padding: 4px 14px; }\n"
                           "QTabBar::tab:hover:!selected { background-color: %3; }\n"
                           "QTabBar::tab:selected { background-color: %4; color: %5; "
                           "border-%7: 2px solid %6; font-weight: bold; }")
                .arg(css(c(t.strip)), css(c(t.text)), css(mix(c(t.strip), c(t.text), 0.08)),
                     css(c(t.selectedBack)), css(c(t.selectedText)), css(c(t.accent)),
                     QLatin1String(edge));
        setSheetPart(tabs, "tabs", sheet);
        tabs->ensurePolished();
        // The strip runs the whole width, past the last tab.
        QPalette strip;
        strip.setColor(QPalette::Window, c(t.strip));
        tabs->setPalette(strip);
        tabs->setAutoFillBackground(true);
    });
}

void prepareSchemeSheets(QWidget* container) {
    if (const ColorScheme* scheme = programColorScheme())
        applySheets(container, *scheme);
}

void SetStyleColor(QTabWidget* tabs) {
    if (const ColorScheme* scheme = programColorScheme())
        SetStyleColor(tabs, *scheme, programColorSchemeName());
}

void applyProgramColorStyle(const ColorScheme& scheme, const QString& schemeName) {
    ProgramStyle& p = program();
    // Applied already (before the window was built): setting the style again would polish every
    // control anew for nothing.
    if (isProgramScheme(scheme) && p.name == schemeName &&
        dynamic_cast<SchemeStyle*>(QApplication::style()))
        return;
    if (!p.savedPalette) {
        p.savedPalette = QApplication::palette();
        p.savedToolTipPalette = QToolTip::palette();
    }
    p.scheme = scheme;
    p.name = schemeName;
    ++p.generation;
    // Setting a style re-polishes every widget, so glyphs already drawn take the new colour.
    if (!dynamic_cast<SchemeStyle*>(QApplication::style()))
        p.savedStyle = QApplication::style()->name();
    QApplication::setStyle(new SchemeStyle(p.savedStyle));
    const QPalette palette = SchemePalette(scheme);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
    if (!p.colourer) {
        p.colourer = new WindowColourer(qApp);
        qApp->installEventFilter(p.colourer);
    }
}

QString LeggiColorStyle(const Folders& folders) {
    ColorScheme scheme;
    const QString name = cs::LeggiColorStyle(folders, scheme);
    if (!name.isEmpty())
        applyProgramColorStyle(scheme, name);
    return name;
}

void prepareProgramColorStyle(const Folders& folders) {
    ColorScheme scheme;
    const QString name = cs::LeggiColorStyle(folders, scheme, cs::ReadFailure::Quiet);
    if (!name.isEmpty())
        applyProgramColorStyle(scheme, name);
}

void clearProgramColorStyle() {
    ProgramStyle& p = program();
    delete p.colourer;
    p.scheme.reset();
    if (!p.savedStyle.isEmpty() && dynamic_cast<SchemeStyle*>(QApplication::style()))
        QApplication::setStyle(p.savedStyle);
    p.savedStyle.clear();
    if (p.savedPalette) {
        QApplication::setPalette(*p.savedPalette);
        QToolTip::setPalette(*p.savedToolTipPalette);
    }
    p.scheme.reset();
    p.name.clear();
    p.savedPalette.reset();
    p.savedToolTipPalette.reset();
}

const ColorScheme* programColorScheme() {
    const ProgramStyle& p = program();
    return p.scheme ? &*p.scheme : nullptr;
}

QString programColorSchemeName() {
    return program().name;
}

} // namespace quillora::gui
