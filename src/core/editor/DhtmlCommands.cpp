#include "core/editor/DhtmlCommands.h"

namespace quillora {

namespace {

using K = DhtmlKind;
using A = PageAction;

constexpr DhtmlCommand kDhtmlCommands[] = {
    {DECMD_BOLD, K::Command, "bold"},
    {DECMD_COPY, K::PageAction, "copy", nullptr, A::Copy},
    {DECMD_CUT, K::PageAction, "cut", nullptr, A::Cut},
    {DECMD_DELETECOLS, K::BridgeOperation, "tableEdit", "deleteCol"},
    {DECMD_DELETEROWS, K::BridgeOperation, "tableEdit", "deleteRow"},
    {DECMD_FINDTEXT, K::FindText, nullptr},
    {DECMD_GETFORECOLOR, K::StateQuery, "foreColor"},
    {DECMD_GETFONTNAME, K::StateQuery, "fontName"},
    {DECMD_GETFONTSIZE, K::StateQuery, "fontSize"},
    {DECMD_HYPERLINK, K::CommandWithAddress, "createLink", nullptr, A::Undo, "Hyperlink",
     "Link address:"},
    {DECMD_IMAGE, K::CommandWithAddress, "insertImage", nullptr, A::Undo, "Image",
     "Image address:"},
    {DECMD_INDENT, K::Command, "indent"},
    {DECMD_INSERTCOL, K::BridgeOperation, "tableEdit", "insertCol"},
    {DECMD_INSERTROW, K::BridgeOperation, "tableEdit", "insertRow"},
    {DECMD_ITALIC, K::Command, "italic"},
    {DECMD_JUSTIFYCENTER, K::Command, "justifyCenter"},
    {DECMD_JUSTIFYLEFT, K::Command, "justifyLeft"},
    {DECMD_JUSTIFYRIGHT, K::Command, "justifyRight"},
    {DECMD_ORDERLIST, K::Command, "insertOrderedList"},
    {DECMD_OUTDENT, K::Command, "outdent"},
    {DECMD_PASTE, K::PageAction, "paste", nullptr, A::Paste},
    {DECMD_REDO, K::PageAction, "redo", nullptr, A::Redo},
    {DECMD_SELECTALL, K::PageAction, "selectAll", nullptr, A::SelectAll},
    {DECMD_SETFONTNAME, K::CommandWithText, "fontName"},
    {DECMD_SETFONTSIZE, K::CommandWithText, "fontSize"},
    {DECMD_SETFORECOLOR, K::CommandWithColour, "foreColor"},
    {DECMD_UNDERLINE, K::Command, "underline"},
    {DECMD_UNDO, K::PageAction, "undo", nullptr, A::Undo},
    {DECMD_UNORDERLIST, K::Command, "insertUnorderedList"},
};

} // namespace

std::span<const DhtmlCommand> dhtmlCommands() {
    return kDhtmlCommands;
}

const DhtmlCommand* findDhtmlCommand(int code) {
    for (const DhtmlCommand& c : kDhtmlCommands) {
        if (c.code == code)
            return &c;
    }
    return nullptr;
}

} // namespace quillora
