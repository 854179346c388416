#pragma once

#include "core/app/bColorStyle.h"

#include <QColor>
#include <QPalette>
#include <QString>

class QTabWidget;
class QWidget;

namespace quillora {
struct Folders;
}

// The colour scheme on our widgets. The rules themselves are bColorStyle's; here they meet
// Qt: which widget class is which control type, which palette role a rule's property becomes,
// and the few style-sheet rules that palettes cannot express (pane titles, the tab strip,
// separators).
namespace quillora::gui {

using bColorStyle::ColorScheme;

// A platform colour value (red in the lowest byte) as a QColor, and one of a scheme's colours.
QColor schemeColour(qint32 value);
QColor schemeColour(const ColorScheme& scheme, bColorStyle::Colour colour);

// The control type the rules know a widget by ("PushButton", "Label", "DockStudio"…), empty
// for one they do not name (plain containers). A widget may declare its own type in the
// dynamic property kControlTypeProperty.
QString ControlType(const QWidget* widget);
inline constexpr const char* kControlTypeProperty = "quilloraControlType";

// The palette every window of the scheme starts from, every role set.
QPalette SchemePalette(const ColorScheme& scheme);

// Colours a window: its background and text, then every control inside it by its type and
// name (windows it owns, such as menus and drop-down lists, included). Calling it again, with
// the same or another scheme, gives the same result as calling it once.
void colourWindow(QWidget* window, const ColorScheme& scheme);

// Colours a control made after its window was coloured, and the controls inside it, as
// colourWindow coloured the rest of the window.
void colourControls(QWidget* control, const ColorScheme& scheme);

// Docking panes, toolbars, menu bars, menus and status bars (bColorStyle::DockColour).
void SetColorDockStudio(QWidget* control, const ColorScheme& scheme);

// The tab strip of the main window's pages. The appearance depends on the scheme's name.
void SetStyleColor(QTabWidget* tabs, const ColorScheme& scheme, const QString& schemeName);
// The same with the program's scheme; nothing before one is in use.
void SetStyleColor(QTabWidget* tabs);

// The program's scheme, for every window.
//
// applyProgramColorStyle makes the scheme the application's palette (so dialogs, message
// boxes, tooltips and the colour dialog start from it) and colours every window shown from
// then on, once, as colourWindow does. Call it again to change the scheme.
void applyProgramColorStyle(const ColorScheme& scheme, const QString& schemeName);
// Start-up: reads the scheme in use from the shared data folder and applies it. Returns the
// scheme's name (empty, and nothing applied, when no scheme is chosen).
QString LeggiColorStyle(const Folders& folders);
// Before a window is built: applies the scheme LeggiColorStyle will read when the window loads,
// so that its controls are made under the scheme instead of being polished all over again then.
// Files that cannot be read are left for LeggiColorStyle to report.
void prepareProgramColorStyle(const Folders& folders);
// Before a container is filled: gives it, and what it holds so far, the style sheets the
// program's scheme gives them, so that the controls put in it later are polished once, under
// them, instead of again when the window is coloured. Nothing before a scheme is in use.
void prepareSchemeSheets(QWidget* container);
// Back to the application's own palette; new windows are no longer coloured.
void clearProgramColorStyle();
// The scheme in use, nullptr before one is applied.
const ColorScheme* programColorScheme();
QString programColorSchemeName();

} // namespace quillora::gui
