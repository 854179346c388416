#pragma once

#include <span>

// The numeric command codes of the visual page, and the editing command each maps to in the
// page (an empty name: the command is ours, not the browser's).
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

struct DhtmlCommand {
    int code;
    const char* execCommand; // document.execCommand name; nullptr for our own operations
};

inline constexpr DhtmlCommand kDhtmlCommands[] = {
    {DECMD_BOLD, "bold"},
    {DECMD_COPY, "copy"},
    {DECMD_CUT, "cut"},
    {DECMD_DELETECOLS, nullptr},
    {DECMD_DELETEROWS, nullptr},
    {DECMD_FINDTEXT, nullptr},
    {DECMD_GETFORECOLOR, nullptr},
    {DECMD_GETFONTNAME, nullptr},
    {DECMD_GETFONTSIZE, nullptr},
    {DECMD_HYPERLINK, "createLink"},
    {DECMD_IMAGE, "insertImage"},
    {DECMD_INDENT, "indent"},
    {DECMD_INSERTCOL, nullptr},
    {DECMD_INSERTROW, nullptr},
    {DECMD_ITALIC, "italic"},
    {DECMD_JUSTIFYCENTER, "justifyCenter"},
    {DECMD_JUSTIFYLEFT, "justifyLeft"},
    {DECMD_JUSTIFYRIGHT, "justifyRight"},
    {DECMD_ORDERLIST, "insertOrderedList"},
    {DECMD_OUTDENT, "outdent"},
    {DECMD_PASTE, "paste"},
    {DECMD_REDO, "redo"},
    {DECMD_SELECTALL, "selectAll"},
    {DECMD_SETFONTNAME, "fontName"},
    {DECMD_SETFONTSIZE, "fontSize"},
    {DECMD_SETFORECOLOR, "foreColor"},
    {DECMD_UNDERLINE, "underline"},
    {DECMD_UNDO, "undo"},
    {DECMD_UNORDERLIST, "insertUnorderedList"},
};

// The page's command name for a code, or nullptr.
constexpr const char* execCommandName(int code) {
    for (const DhtmlCommand& c : kDhtmlCommands) {
        if (c.code == code)
            return c.execCommand;
    }
    return nullptr;
}

} // namespace quillora
