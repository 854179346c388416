#pragma once

#include <span>

// The numeric command codes of the visual page, and how the page carries out each one.
namespace quillora {

inline constexpr int DECMD_BOLD = 5000;
inline constexpr int DECMD_COPY = 5002;
inline constexpr int DECMD_CUT = 5003;
inline constexpr int DECMD_DELETECOLS = 5006;
inline constexpr int DECMD_DELETEROWS = 5007;
inline constexpr int DECMD_FINDTEXT = 5008;
inline constexpr int DECMD_GETFORECOLOR = 5010;
inline constexpr int DECMD_GETFONTNAME = 5013;
inline constexpr int DECMD_GETFONTSIZE = 5014;
inline constexpr int DECMD_HYPERLINK = 5016;
inline constexpr int DECMD_IMAGE = 5017;
inline constexpr int DECMD_INDENT = 5018;
inline constexpr int DECMD_INSERTCOL = 5020;
inline constexpr int DECMD_INSERTROW = 5021;
inline constexpr int DECMD_ITALIC = 5023;
inline constexpr int DECMD_JUSTIFYCENTER = 5024;
inline constexpr int DECMD_JUSTIFYLEFT = 5025;
inline constexpr int DECMD_JUSTIFYRIGHT = 5026;
inline constexpr int DECMD_ORDERLIST = 5030;
inline constexpr int DECMD_OUTDENT = 5031;
inline constexpr int DECMD_PASTE = 5032;
inline constexpr int DECMD_REDO = 5033;
inline constexpr int DECMD_SELECTALL = 5035;
inline constexpr int DECMD_SETFONTNAME = 5044;
inline constexpr int DECMD_SETFONTSIZE = 5045;
inline constexpr int DECMD_SETFORECOLOR = 5046;
inline constexpr int DECMD_UNDERLINE = 5048;
inline constexpr int DECMD_UNDO = 5049;
inline constexpr int DECMD_UNORDERLIST = 5051;

// The browser's own edit actions: they reach the page by the engine's input route, not as a
// script.
enum class PageAction { Undo, Redo, Cut, Copy, Paste, SelectAll };

// How the visual page carries out a code.
enum class DhtmlKind {
    PageAction,         // the edit action `action`; `name` is the bridge's name for it
    BridgeOperation,    // our bridge operation `name` with the fixed argument `argument`
    Command,            // document.execCommand(name), no argument
    CommandWithText,    // document.execCommand(name, the caller's argument as text)
    CommandWithColour,  // document.execCommand(name, the caller's argument as a colour)
    CommandWithAddress, // document.execCommand(name, an address), asked for when none is given
    FindText,           // the page's find, asked for when no text is given
    StateQuery,         // answered by the state mirror: `name` is the value the page reports
};

struct DhtmlCommand {
    int code;
    DhtmlKind kind;
    const char* name;
    const char* argument = nullptr;       // BridgeOperation
    PageAction action = PageAction::Undo; // PageAction
    const char* promptTitle = nullptr;    // CommandWithAddress: the question put to the user
    const char* promptLabel = nullptr;
};

// Every code the visual page understands, one row each.
std::span<const DhtmlCommand> dhtmlCommands();

// The row of a code; nullptr for a code the page does not know.
const DhtmlCommand* findDhtmlCommand(int code);

} // namespace quillora
