#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace quillora {
struct Folders;
}

// The colour schemes shared by the product family: which scheme is in use, its nineteen
// colours, and the rules that say which colour every kind of control takes. No widget here:
// the GUI maps the rules onto its own controls.
namespace quillora::bColorStyle {

// The nineteen colours, in the order of the scheme file's keys (and of the key table that
// matches them).
enum class Colour {
    CLR_WORKSPACE,
    CLR_BARSMENU,
    CLR_BARSMENU_BACK,
    CLR_SFONDO_FINESTRA,
    CLR_TESTO_FINESTRA,
    CLR_HIGHLIGHT_BORDER,
    CLR_HIGHLIGHT_TEXT,
    CLR_BORDER,
    CLR_MENU_HEAD,
    CLR_MENU_COMMAND,
    CLR_RQD_BACKCOLOR,
    CLR_RQD_FORECOLOR,
    CLR_GRID_BACKCOLOR,
    CLR_GRID_FORECOLOR,
    CLR_DOCK_HIGHLIGHT,
    CLR_DOCK_BACKCOLOR,
    CLR_DOCK_TITLECOLOR,
    CLR_BUTTON_BACKCOLOR,
    CLR_BUTTON_FORECOLOR,
};
inline constexpr int kColourCount = 19;

// A scheme's colours as platform values (red in the lowest byte), 0 until read.
struct ColorScheme {
    qint32 CLR_WORKSPACE = 0;
    qint32 CLR_BARSMENU = 0;
    qint32 CLR_BARSMENU_BACK = 0;
    qint32 CLR_SFONDO_FINESTRA = 0;
    qint32 CLR_TESTO_FINESTRA = 0;
    qint32 CLR_HIGHLIGHT_BORDER = 0;
    qint32 CLR_HIGHLIGHT_TEXT = 0;
    qint32 CLR_BORDER = 0;
    qint32 CLR_MENU_HEAD = 0;
    qint32 CLR_MENU_COMMAND = 0;
    qint32 CLR_RQD_BACKCOLOR = 0;
    qint32 CLR_RQD_FORECOLOR = 0;
    qint32 CLR_GRID_BACKCOLOR = 0;
    qint32 CLR_GRID_FORECOLOR = 0;
    qint32 CLR_DOCK_HIGHLIGHT = 0;
    qint32 CLR_DOCK_BACKCOLOR = 0;
    qint32 CLR_DOCK_TITLECOLOR = 0;
    qint32 CLR_BUTTON_BACKCOLOR = 0;
    qint32 CLR_BUTTON_FORECOLOR = 0;

    qint32 value(Colour colour) const;
    void set(Colour colour, qint32 value);
    bool operator==(const ColorScheme&) const = default;
};

// Every colour line starts with its key, exactly this wide: name, dots, ": ".
inline constexpr qsizetype kKeyWidth = 30;

// "CLR_WORKSPACE...............: "
QString KeyText(Colour colour);
// "CLR_WORKSPACE"
QString ColourName(Colour colour);
// All nineteen, in key-table order.
QList<Colour> AllColours();

// The files in the shared data folder: which scheme is in use, and the schemes themselves.
inline constexpr const char* kChoiceFileName = "colorSchema2.dll";
inline constexpr const char* kSchemeFileName = "colorSchema3.dll";

// The choice file's lines, taken two at a time: the second line of the last complete pair
// names the scheme. Empty when there is no complete pair.
QString SchemeChoice(const QStringList& lines);

// Applies the colour lines of the section "[" + name + "]" to `scheme`. A line starting with
// "[" ends the section; a later line equal to the header starts it again. Keys not present,
// unknown keys and values that do not fit 32 bits leave their colour as it was; a repeated key
// takes the later value.
void ApplySchemeSection(const QStringList& lines, const QString& name, ColorScheme& scheme);

// The names of the sections of a scheme file, in file order, each once.
QStringList SchemeNames(const QStringList& lines);

// Whether a reader writes a file it cannot read to the log.
enum class ReadFailure { Logged, Quiet };

// LeggiColorStyle: reads the scheme named by the choice file from the scheme file into
// `scheme` and returns the name. A file that cannot be read leaves `scheme` as it was and
// writes a step line to the log (unless told to be quiet); without a choice the name is empty
// and nothing is read.
QString LeggiColorStyle(const QString& choiceFile, const QString& schemeFile, ColorScheme& scheme,
                        ReadFailure failure = ReadFailure::Logged);
// The same on the two files of the shared data folder.
QString LeggiColorStyle(const Folders& folders, ColorScheme& scheme,
                        ReadFailure failure = ReadFailure::Logged);

// ---- Colouring rules -----------------------------------------------------------------------

// What a rule sets on a control. The names are those of the controls the family's other
// programs use; a toolkit without them maps each to its nearest equivalent. Settings that are
// no colour (3-D appearance, gloss heights, mouse pointers, line widths) have no equivalent
// here and are left out.
enum class Property {
    BackColor,
    ForeColor,
    SelectionBackColor,
    SelectionForeColor,
    BorderColor,
    BorderColorDW, // the lower border of a title rectangle
    TubeColor,     // the filled part of a progress bar
    SplitColor,    // a splitter's bar
    GradientColor1,
    GradientColor2,
    Transparent, // no colour: the control shows what lies behind it
};

struct Setting {
    Property property;
    Colour colour; // meaningless for Transparent
    bool operator==(const Setting&) const = default;
};

// The settings a control of the type takes, in the order they are made; `name` selects the
// name-dependent ones (title rectangles, "LnUp", labels whose colours stay as designed,
// heading labels). Empty for a type the rules leave alone and for an unknown type.
QList<Setting> SettingsFor(QStringView type, QStringView name);

// Every type the rules name, those that are left alone included, in rule order.
QStringList RuleTypes();

// Labels whose colours stay as designed, and labels drawn as headings.
bool KeepsDesignedColours(QStringView labelName);
bool IsHeadingLabel(QStringView labelName);

// The window itself: its background and text, before any control is coloured.
inline constexpr Colour kWindowBack = Colour::CLR_BARSMENU_BACK;
inline constexpr Colour kWindowText = Colour::CLR_MENU_COMMAND;

// SetColorDockStudio's share-out of colours over docking panes and command bars.
enum class DockPart {
    Workspace, // what lies between panes: separators, the frame around docked panes
    Bars,      // menu bar, toolbars, status bar
    PaneBack,  // the body of a docking pane
    PaneTitle, // a docking pane's title bar; also tooltips
    Menu,      // drop-down and pop-up menus
    Selection, // the entry under the pointer in menus and bars
    Text,      // every text on the parts above
};
Colour DockColour(DockPart part);

// The main window's tab strip (SetStyleColor). One named scheme has its selected tab raised
// and filled with the page's colour; the others mark it with the accent line alone.
inline constexpr const char* kRaisedTabsScheme = "Light";
struct TabStripColours {
    Colour strip;        // the strip behind the tabs
    Colour text;         // the caption of a tab
    Colour selectedBack; // the selected tab
    Colour selectedText;
    Colour accent; // the line that marks the selected tab
    bool raised;
};
TabStripColours TabStripFor(QStringView schemeName);

// ---- Contrast ------------------------------------------------------------------------------

// Relative luminance of a platform colour value (red in the lowest byte), 0 to 1.
double RelativeLuminance(qint32 colour);
// (lighter + 0.05) / (darker + 0.05): 1 to 21, whichever way round the colours are given.
double ContrastRatio(qint32 a, qint32 b);

inline constexpr double kMinimumTextContrast = 4.5;
inline constexpr double kMinimumPartContrast = 3.0; // lines and marks that carry meaning

// One colour shown on another by the rules above, and the contrast it needs.
struct ContrastPair {
    QString what;
    Colour fore;
    Colour back;
    double minimum;
};

// Every pair the rules produce for a scheme of that name: text on its background for each
// control type (transparent controls on every surface they may sit on), the window, the
// docking and command bars, the tab strip.
QList<ContrastPair> ContrastPairs(QStringView schemeName);

} // namespace quillora::bColorStyle
