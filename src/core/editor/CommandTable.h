#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <span>

// The editor's command vocabulary: every menu entry and toolbar button is one of these
// identifiers, dispatched in table order by one handler.
namespace quillora::editor {

enum class Action {
    CheckSpam,
    NewMessage,
    OpenMessage,
    Save,
    OpenWord,
    OpenMail,
    ImportFromImage,
    Templates,
    SaveAs,
    Print,
    Exit,
    EditCommand,    // undo/redo/cut/copy/paste/select all/find: routed by the selected page
    SurfaceCommand, // a command of the visual page (bold, lists, table rows...)
    Snippet,        // a fixed HTML text inserted at the caret
    FontName,
    FontSize,
    MergeField, // a merge token inserted at the caret
    Sound,
    ShowDetails,
    ShowBorders,
    BodyProperties,
    PriorityLow,
    PriorityHigh,
    RefreshImages,
    ImportText,
    ImportHtml,
    About,
    Help,
    Social,
    ToggleToolbar,
    Unsubscribe, // identifiers starting with "cmdSubRem_"
    ExportEml,   // the message as an e-mail file
    Accounts,    // the sender accounts window
    CheckMessage,
    SendTest,
};

struct Command {
    const char* id;
    Action action;
    int decmd = 0;              // the surface command, where there is one
    const char* text = nullptr; // the snippet or merge token
    bool marksModified = false; // Undo, Redo, Cut, Paste mark the message even if nothing changed
    const char* toolbar = nullptr; // ToggleToolbar: the toolbar it shows or hides
};

// Every command in dispatch order.
std::span<const Command> commands();

// The first command whose identifier matches exactly (the "cmdSubRem_" family by prefix).
std::optional<Command> find(QStringView id);

inline constexpr const char* kUnsubscribePrefix = "cmdSubRem_";

// The merge tokens in dispatch order: ":::" + name + ":::".
struct MergeField {
    const char* command;
    const char* token;
};
std::span<const MergeField> mergeFields();

// The five toolbars and their toggles.
struct ToolbarToggle {
    const char* toolbar;
    const char* command;
};
std::span<const ToolbarToggle> toolbarToggles();

// Every "\r\n", then every "\n", then every "\r" removed.
QString CleanCrLf(QString text);

// The tag path: innermost first, at most 16 levels, as "<TAG>" texts joined outermost first.
inline constexpr int kTagPathDepth = 16;
QString joinTagPath(const QStringList& innermostFirst);

// The innermost element of a path label: from its last "<" to the end, or empty.
QString GetLastElement(QStringView label);

// The two labels of the tag bar: "TAG: " + the outer elements, and the innermost one.
struct TagBar {
    QString tags;
    QString last;
};
TagBar tagBarFor(const QString& path);

// The status text while the pointer is over a page: "Mod. " + the page's caption.
QString modeText(const QString& pageCaption);

// A command's caption for the status bar: the accelerator marks "&" removed.
QString highlightText(QString caption);

} // namespace quillora::editor
