#pragma once

#include <QString>
#include <QStringView>
#include <span>

// The program's fixed list of language-file keys. Each key names one text and the element that
// shows it; the language file is matched against this list and nothing else.
namespace quillora::bLANG {

enum class TargetKind {
    Message,           // bVAR.<id>: a message text kept by name
    MergeFieldCaption, // bVAR.<id>: a message text that is also the caption of `command`
    WindowCaption,     // <window>.Caption
    ControlCaption,    // <window>.<id>[(<index>)].Caption (`property` when spelt otherwise)
    ToolButton,        // <window>.Dks.Commands.GetToolButton("<id>").Caption
    ToolButtonTip,     // <window>.Dks.Commands.GetToolButton("<id>").TooltipText
    ComboCaption,      // <window>.Dks.Commands.GetComboBox("<id>").Caption
    PopupMenu,         // <window>.Dks.Commands.GetPopupMenu("<id>").Caption
    EditLabel,         // <window>.Dks.Commands.GetEdit("<id>").Label
    StaticText,        // <window>.Dks.Commands.GetStatic("<id>").Text
    DockCaption,       // <window>.Dks.DockWindows("<id>").Caption
    ToolbarName,       // <window>.Dks.CommandBars("<id>").NameLocal
    TabToolTip,        // <window>.<id>.Item(<index>).ToolTip
    TabCaption,        // <window>.<id>.Item(<index>).Caption
    ColumnHeader,      // <window>.<id>.TextMatrix(0, <index>)
};

// Where one text goes. Windows and controls are named as their objects are: a control-array
// element "lbl(1)" is the object "lbl_1".
struct Target {
    TargetKind kind;
    const char* window;             // the section: "bVAR" or a window's name
    const char* id;                 // message, control, command, menu, pane, toolbar or tab strip
    int index = -1;                 // control-array element, tab or column; -1 when there is none
    const char* command = nullptr;  // MergeFieldCaption: the command it captions
    const char* property = nullptr; // ControlCaption: the property as the key spells it
};

struct LanguageKey {
    QString key; // the full key as it stands in the language file
    Target target;
};

// Every key, in table order.
std::span<const LanguageKey> keys();

// The key that matches exactly (case and all), or nullptr.
const LanguageKey* findKey(QStringView fullKey);

// The name under which a text is kept in the program's text store: the message name for
// bVAR texts (what the code asks for: "MessSalva1"), the full key for everything else.
QString storeKey(const LanguageKey& key);

} // namespace quillora::bLANG
