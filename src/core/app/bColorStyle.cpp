#include "core/app/bColorStyle.h"

#include "core/app/Folders.h"
#include "core/app/TextFile.h"
#include "core/app/bError.h"
#include "core/app/bFunctions.h"

#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace quillora::bColorStyle {

namespace {

using C = Colour;

struct KeyEntry {
    Colour colour;
    const char* key; // exactly kKeyWidth characters
    qint32 ColorScheme::*member;
};

// The order of this table is the order keys are compared in.
constexpr std::array<KeyEntry, kColourCount> kKeys = {{
    {C::CLR_WORKSPACE, "CLR_WORKSPACE...............: ", &ColorScheme::CLR_WORKSPACE},
    {C::CLR_BARSMENU, "CLR_BARSMENU................: ", &ColorScheme::CLR_BARSMENU},
    {C::CLR_BARSMENU_BACK, "CLR_BARSMENU_BACK...........: ", &ColorScheme::CLR_BARSMENU_BACK},
    {C::CLR_SFONDO_FINESTRA, "CLR_SFONDO_FINESTRA.........: ", &ColorScheme::CLR_SFONDO_FINESTRA},
    {C::CLR_TESTO_FINESTRA, "CLR_TESTO_FINESTRA..........: ", &ColorScheme::CLR_TESTO_FINESTRA},
    {C::CLR_HIGHLIGHT_BORDER, "CLR_HIGHLIGHT_BORDER........: ", &ColorScheme::CLR_HIGHLIGHT_BORDER},
    {C::CLR_HIGHLIGHT_TEXT, "CLR_HIGHLIGHT_TEXT..........: ", &ColorScheme::CLR_HIGHLIGHT_TEXT},
    {C::CLR_BORDER, "CLR_BORDER..................: ", &ColorScheme::CLR_BORDER},
    {C::CLR_MENU_HEAD, "CLR_MENU_HEAD...............: ", &ColorScheme::CLR_MENU_HEAD},
    {C::CLR_MENU_COMMAND, "CLR_MENU_COMMAND............: ", &ColorScheme::CLR_MENU_COMMAND},
    {C::CLR_RQD_BACKCOLOR, "CLR_RQD_BACKCOLOR...........: ", &ColorScheme::CLR_RQD_BACKCOLOR},
    {C::CLR_RQD_FORECOLOR, "CLR_RQD_FORECOLOR...........: ", &ColorScheme::CLR_RQD_FORECOLOR},
    {C::CLR_GRID_BACKCOLOR, "CLR_GRID_BACKCOLOR..........: ", &ColorScheme::CLR_GRID_BACKCOLOR},
    {C::CLR_GRID_FORECOLOR, "CLR_GRID_FORECOLOR..........: ", &ColorScheme::CLR_GRID_FORECOLOR},
    {C::CLR_DOCK_HIGHLIGHT, "CLR_DOCK_HIGHLIGHT..........: ", &ColorScheme::CLR_DOCK_HIGHLIGHT},
    {C::CLR_DOCK_BACKCOLOR, "CLR_DOCK_BACKCOLOR..........: ", &ColorScheme::CLR_DOCK_BACKCOLOR},
    {C::CLR_DOCK_TITLECOLOR, "CLR_DOCK_TITLECOLOR.........: ", &ColorScheme::CLR_DOCK_TITLECOLOR},
    {C::CLR_BUTTON_BACKCOLOR, "CLR_BUTTON_BACKCOLOR........: ", &ColorScheme::CLR_BUTTON_BACKCOLOR},
    {C::CLR_BUTTON_FORECOLOR, "CLR_BUTTON_FORECOLOR........: ", &ColorScheme::CLR_BUTTON_FORECOLOR},
}};

constexpr bool keysAreInEnumOrderAndWide() {
    for (size_t i = 0; i < kKeys.size(); ++i) {
        if (int(kKeys[i].colour) != int(i) || std::char_traits<char>::length(kKeys[i].key) != 30)
            return false;
    }
    return true;
}
static_assert(keysAreInEnumOrderAndWide());
static_assert(kKeyWidth == 30);

const KeyEntry& entry(Colour c) {
    return kKeys[size_t(c)];
}

// Scheme files are a few hundred lines; anything far beyond is not one.
constexpr qint64 kMaxSchemeBytes = 16 * 1024 * 1024;

// ---- The colouring rules --------------------------------------------------------------------

// Which controls of a type a row applies to, by the control's name.
enum class When {
    Always,
    Never,         // the type is named by the rules but nothing is set
    TitleRect,     // named "rctUP" or "rctDW"
    LnUp,          // named "LnUp"
    OrdinaryLabel, // neither a heading nor one that keeps its designed colours
    HeadingLabel,
};

struct Row {
    const char* type;
    Property property;
    Colour colour;
    When when = When::Always;
};

using P = Property;
constexpr Colour kNone = C::CLR_WORKSPACE; // the colour field of a row that sets none

// First match wins: only the first block of rows of a type counts. Rows are in the order the
// settings are made.
constexpr Row kRules[] = {
    {"RectTitle", P::BackColor, C::CLR_BARSMENU},
    {"RectTitle", P::BorderColorDW, C::CLR_WORKSPACE},
    {"DockStudio", P::BackColor, kNone, When::Never}, // SetColorDockStudio: DockColour()
    {"VSFlexGrid", P::BackColor, C::CLR_GRID_BACKCOLOR},
    {"VSFlexGrid", P::ForeColor, C::CLR_GRID_FORECOLOR},
    {"ListBox", P::BackColor, C::CLR_SFONDO_FINESTRA},
    {"ListBox", P::SelectionBackColor, C::CLR_HIGHLIGHT_BORDER},
    {"TreeView", P::BackColor, C::CLR_GRID_BACKCOLOR},
    {"TreeView", P::ForeColor, C::CLR_GRID_FORECOLOR},
    {"TreeView", P::SelectionBackColor, C::CLR_HIGHLIGHT_BORDER},
    {"TreeView", P::SelectionForeColor, C::CLR_HIGHLIGHT_TEXT},
    {"PushButton", P::BackColor, C::CLR_BUTTON_BACKCOLOR},
    {"PushButton", P::ForeColor, C::CLR_BUTTON_FORECOLOR},
    {"DateTimePicker", P::BackColor, kNone, When::Never},
    {"FlatEdit", P::BackColor, C::CLR_SFONDO_FINESTRA},
    {"FlatEdit", P::ForeColor, C::CLR_TESTO_FINESTRA},
    {"ComboBox", P::BackColor, C::CLR_SFONDO_FINESTRA},
    {"ComboBox", P::ForeColor, C::CLR_TESTO_FINESTRA},
    {"RadioButton", P::BackColor, C::CLR_BARSMENU_BACK},
    {"RadioButton", P::ForeColor, C::CLR_MENU_COMMAND},
    {"CheckBox", P::BackColor, C::CLR_BARSMENU_BACK},
    {"CheckBox", P::ForeColor, C::CLR_MENU_COMMAND},
    {"Shape", P::BackColor, C::CLR_RQD_BACKCOLOR},
    {"Shape", P::BorderColor, C::CLR_BORDER},
    {"Line", P::BorderColor, C::CLR_WORKSPACE, When::LnUp},
    {"ProgressLucid", P::TubeColor, C::CLR_RQD_BACKCOLOR},
    {"ProgressLucid", P::BorderColor, C::CLR_BORDER},
    // The percentage written over the tube: the one place the required-area text colour shows.
    {"ProgressLucid", P::ForeColor, C::CLR_RQD_FORECOLOR},
    {"Rectangle", P::BorderColor, C::CLR_BORDER},
    {"Rectangle", P::GradientColor1, C::CLR_BARSMENU, When::TitleRect},
    {"Rectangle", P::GradientColor2, C::CLR_BARSMENU, When::TitleRect},
    {"Rectangle", P::BackColor, C::CLR_RQD_BACKCOLOR},
    {"Label", P::Transparent, kNone},
    {"Label", P::ForeColor, C::CLR_TESTO_FINESTRA, When::OrdinaryLabel},
    {"Label", P::ForeColor, C::CLR_MENU_COMMAND, When::HeadingLabel},
    {"PictureBox", P::BackColor, C::CLR_BARSMENU},
    {"Splitter", P::BackColor, C::CLR_WORKSPACE},
    {"Splitter", P::SplitColor, C::CLR_WORKSPACE},
    {"Image", P::BackColor, kNone, When::Never}, // only a cursor, for "cmdHelp"
    {"ColorPicker", P::BackColor, C::CLR_BARSMENU},
    {"ColorHexagon", P::BackColor, C::CLR_BARSMENU},
    {"GroupBox", P::BackColor, C::CLR_BARSMENU_BACK},
    {"TaskDialog", P::BackColor, kNone, When::Never},
    {"VSPrinter", P::BackColor, kNone, When::Never},
    {"CommonDialog", P::BackColor, kNone, When::Never},
    {"Adodc", P::BackColor, kNone, When::Never},
    {"FolderSystem", P::BackColor, kNone, When::Never},
    {"VSReport", P::BackColor, kNone, When::Never},
    {"Timer", P::BackColor, kNone, When::Never},
    {"Import", P::BackColor, kNone, When::Never},
    {"DHTMLEdit", P::BackColor, kNone, When::Never},
    {"PropertyGrid", P::BackColor, kNone, When::Never},
    {"TabControl", P::BackColor, kNone, When::Never},
};

// Counters of the family's sending windows: their colours carry meaning.
const char* const kDesignedLabels[] = {
    "lblCredito",        "lblClassic",      "lblBasic",       "txtCreditoEuro",
    "txtCreditoClassic", "txtCreditoBasic", "lblDestinatari", "txtDestinatari",
    "lblDestValidi",     "txtDestOk",       "lblCarRimasti",  "txtCaratteri",
    "lblConsumoSMS",     "txtConsumo",      "lblConsumoTot",  "txtConsPrev",
};

const char* const kHeadingLabels[] = {
    "lblTitle",       "lblTitolo", "lblOggetto",  "lblDescription", "lblDescr",
    "lblDescrizione", "lblDoppi",  "lblAllegati", "lblAlleg",
};

template <size_t N> bool listed(const char* const (&list)[N], QStringView name) {
    for (const char* entry : list) {
        if (name == QLatin1String(entry))
            return true;
    }
    return false;
}

bool applies(When when, QStringView name) {
    switch (when) {
    case When::Always:
        return true;
    case When::Never:
        return false;
    case When::TitleRect:
        return name == u"rctUP" || name == u"rctDW";
    case When::LnUp:
        return name == u"LnUp";
    case When::OrdinaryLabel:
        return !KeepsDesignedColours(name) && !IsHeadingLabel(name);
    case When::HeadingLabel:
        return !KeepsDesignedColours(name) && IsHeadingLabel(name);
    }
    return false;
}

double channel(int value) {
    const double c = value / 255.0;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

} // namespace

qint32 ColorScheme::value(Colour colour) const {
    return this->*entry(colour).member;
}

void ColorScheme::set(Colour colour, qint32 v) {
    this->*entry(colour).member = v;
}

QString KeyText(Colour colour) {
    return QString::fromLatin1(entry(colour).key);
}

QString ColourName(Colour colour) {
    QString key = KeyText(colour);
    return key.left(key.indexOf(u'.'));
}

QList<Colour> AllColours() {
    QList<Colour> all;
    for (const KeyEntry& k : kKeys)
        all << k.colour;
    return all;
}

QString SchemeChoice(const QStringList& lines) {
    QString name;
    for (qsizetype i = 0; i + 1 < lines.size(); i += 2)
        name = lines[i + 1];
    return name;
}

void ApplySchemeSection(const QStringList& lines, const QString& name, ColorScheme& scheme) {
    const QString header = u'[' + name + u']';
    bool inside = false;
    for (const QString& line : lines) {
        if (line == header) {
            inside = true;
            continue;
        }
        if (line.startsWith(u'[')) {
            inside = false;
            continue;
        }
        if (!inside || line.size() < kKeyWidth)
            continue;
        const QStringView key = QStringView(line).left(kKeyWidth);
        for (const KeyEntry& k : kKeys) {
            if (key != QLatin1String(k.key))
                continue;
            // A value beyond 32 bits would have stopped the old reader with an overflow;
            // skipping the line keeps every other colour of the scheme.
            if (const auto v = bFunctions::ValLong(QStringView(line).mid(kKeyWidth).trimmed()))
                scheme.*k.member = *v;
            break;
        }
    }
}

QStringList SchemeNames(const QStringList& lines) {
    QStringList names;
    for (const QString& line : lines) {
        if (line.size() >= 2 && line.startsWith(u'[') && line.endsWith(u']')) {
            const QString name = line.mid(1, line.size() - 2);
            if (!names.contains(name))
                names << name;
        }
    }
    return names;
}

QString LeggiColorStyle(const QString& choiceFile, const QString& schemeFile, ColorScheme& scheme,
                        ReadFailure failure) {
    const QString routine = QStringLiteral("bColorStyle.LeggiColorStyle");
    auto logFailure = [&](const TextFile::Decoded& d, const QString& file) {
        if (failure == ReadFailure::Quiet)
            return;
        const int number = d.error == TextFile::ReadError::Missing ? 53 : 62;
        bError::wrtErr(routine, QStringLiteral("0"), number,
                       TextFile::describe(d.error) + QStringLiteral(": ") + file);
    };
    QStringList lines;
    TextFile::Decoded d = TextFile::readLines(choiceFile, lines, kMaxSchemeBytes);
    if (!d.ok()) {
        logFailure(d, choiceFile);
        return QString();
    }
    const QString name = SchemeChoice(lines);
    if (name.isEmpty())
        return name;
    d = TextFile::readLines(schemeFile, lines, kMaxSchemeBytes);
    if (!d.ok()) {
        logFailure(d, schemeFile);
        return name;
    }
    ApplySchemeSection(lines, name, scheme);
    return name;
}

QString LeggiColorStyle(const Folders& folders, ColorScheme& scheme, ReadFailure failure) {
    return LeggiColorStyle(folders.pathFileImp + QLatin1String(kChoiceFileName),
                           folders.pathFileImp + QLatin1String(kSchemeFileName), scheme, failure);
}

QList<Setting> SettingsFor(QStringView type, QStringView name) {
    QList<Setting> out;
    bool found = false;
    for (const Row& r : kRules) {
        if (type != QLatin1String(r.type)) {
            if (found)
                break; // the first block of the type is the rule
            continue;
        }
        found = true;
        if (applies(r.when, name))
            out << Setting{r.property, r.colour};
    }
    return out;
}

QStringList RuleTypes() {
    QStringList types;
    for (const Row& r : kRules) {
        const QString t = QString::fromLatin1(r.type);
        if (!types.contains(t))
            types << t;
    }
    return types;
}

bool KeepsDesignedColours(QStringView labelName) {
    return listed(kDesignedLabels, labelName);
}

bool IsHeadingLabel(QStringView labelName) {
    return listed(kHeadingLabels, labelName);
}

Colour DockColour(DockPart part) {
    switch (part) {
    case DockPart::Workspace:
        return C::CLR_WORKSPACE;
    case DockPart::Bars:
        return C::CLR_BARSMENU;
    case DockPart::PaneBack:
        return C::CLR_BARSMENU_BACK;
    case DockPart::PaneTitle:
        return C::CLR_MENU_HEAD;
    case DockPart::Menu:
        return C::CLR_SFONDO_FINESTRA;
    case DockPart::Selection:
        return C::CLR_HIGHLIGHT_BORDER;
    case DockPart::Text:
        return C::CLR_MENU_COMMAND;
    }
    return C::CLR_MENU_COMMAND;
}

TabStripColours TabStripFor(QStringView schemeName) {
    const bool raised = schemeName == QLatin1String(kRaisedTabsScheme);
    return {C::CLR_DOCK_BACKCOLOR,
            C::CLR_MENU_COMMAND,
            raised ? C::CLR_SFONDO_FINESTRA : C::CLR_DOCK_BACKCOLOR,
            C::CLR_MENU_COMMAND,
            C::CLR_DOCK_HIGHLIGHT,
            raised};
}

double RelativeLuminance(qint32 colour) {
    const quint32 v = quint32(colour);
    return 0.2126 * channel(int(v & 0xFF)) + 0.7152 * channel(int((v >> 8) & 0xFF)) +
           0.0722 * channel(int((v >> 16) & 0xFF));
}

double ContrastRatio(qint32 a, qint32 b) {
    double la = RelativeLuminance(a);
    double lb = RelativeLuminance(b);
    if (la < lb)
        std::swap(la, lb);
    return (la + 0.05) / (lb + 0.05);
}

QList<ContrastPair> ContrastPairs(QStringView schemeName) {
    QList<ContrastPair> pairs;
    auto add = [&pairs](const QString& what, Colour fore, Colour back, double minimum) {
        pairs << ContrastPair{what, fore, back, minimum};
    };
    add(QStringLiteral("window text on the window"), kWindowText, kWindowBack,
        kMinimumTextContrast);

    // A control without a background of its own shows the window or a bar behind it.
    const QList<std::pair<QString, Colour>> surfaces = {
        {QStringLiteral("the window"), kWindowBack},
        {QStringLiteral("a bar"), DockColour(DockPart::Bars)},
    };
    // The types that write text; one name of each kind where the name matters.
    const struct {
        const char* type;
        const char* name;
    } controls[] = {
        {"PushButton", ""}, {"FlatEdit", ""},      {"ComboBox", ""},       {"RadioButton", ""},
        {"CheckBox", ""},   {"Label", "lblTesto"}, {"Label", "lblTitolo"}, {"GroupBox", ""},
        {"TreeView", ""},   {"VSFlexGrid", ""},    {"ListBox", ""},        {"ProgressLucid", ""},
    };
    for (const auto& c : controls) {
        const QString type = QString::fromLatin1(c.type);
        const QString name = QString::fromLatin1(c.name);
        const QString what =
            type + (name.isEmpty() ? QString() : QStringLiteral(" \"%1\"").arg(name));
        std::optional<Colour> fore, back, selBack, selFore, tube;
        bool transparent = false;
        for (const Setting& s : SettingsFor(type, name)) {
            switch (s.property) {
            case P::ForeColor:
                fore = s.colour;
                break;
            case P::BackColor:
                back = s.colour;
                break;
            case P::SelectionBackColor:
                selBack = s.colour;
                break;
            case P::SelectionForeColor:
                selFore = s.colour;
                break;
            case P::TubeColor:
                tube = s.colour;
                break;
            case P::Transparent:
                transparent = true;
                break;
            default:
                break;
            }
        }
        const Colour text = fore.value_or(kWindowText);
        if (tube) {
            // The percentage crosses the filled tube and the empty field behind it.
            add(what + QStringLiteral(": text on the tube"), text, *tube, kMinimumTextContrast);
            add(what + QStringLiteral(": text on the empty tube"), text, C::CLR_SFONDO_FINESTRA,
                kMinimumTextContrast);
        } else if (back && !transparent) {
            add(what + QStringLiteral(": text"), text, *back, kMinimumTextContrast);
        } else {
            for (const auto& [where, colour] : surfaces)
                add(what + QStringLiteral(": text on ") + where, text, colour,
                    kMinimumTextContrast);
        }
        if (selBack)
            add(what + QStringLiteral(": selected text"), selFore.value_or(C::CLR_HIGHLIGHT_TEXT),
                *selBack, kMinimumTextContrast);
        if (type == u"PushButton")
            // A tool button on a bar draws no face of its own until pointed at.
            add(what + QStringLiteral(": text on a bar"), text, DockColour(DockPart::Bars),
                kMinimumTextContrast);
    }

    const struct {
        DockPart part;
        const char* where;
    } dockSurfaces[] = {{DockPart::Bars, "bars"},
                        {DockPart::PaneBack, "pane bodies"},
                        {DockPart::PaneTitle, "pane titles and tooltips"},
                        {DockPart::Menu, "menus"},
                        {DockPart::Selection, "the pointed entry"}};
    for (const auto& d : dockSurfaces)
        add(QStringLiteral("text on ") + QLatin1String(d.where), DockColour(DockPart::Text),
            DockColour(d.part), kMinimumTextContrast);

    const TabStripColours tabs = TabStripFor(schemeName);
    add(QStringLiteral("tab captions"), tabs.text, tabs.strip, kMinimumTextContrast);
    add(QStringLiteral("the selected tab's caption"), tabs.selectedText, tabs.selectedBack,
        kMinimumTextContrast);
    add(QStringLiteral("the selected tab's accent on the strip"), tabs.accent, tabs.strip,
        kMinimumPartContrast);
    if (tabs.selectedBack != tabs.strip)
        add(QStringLiteral("the selected tab's accent on the tab"), tabs.accent, tabs.selectedBack,
            kMinimumPartContrast);
    return pairs;
}

} // namespace quillora::bColorStyle
