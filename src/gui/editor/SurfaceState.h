#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

namespace quillora::gui {

// What the page last told us about the caret, read synchronously by the command buttons, the
// tag bar and the property grid.
struct SurfaceState {
    QStringList tagPath; // "<HTML>" … "<TD>", outermost first, at most 16 entries
    QString lastTag;     // the innermost entry, "" without a caret
    int currentId = 0;   // the innermost element's id attribute as a whole number
    QString currentTagName;
    QString currentSrc; // the innermost element's src attribute as written, if it has one
    bool bold = false, italic = false, underline = false;
    bool justifyLeft = false, justifyCenter = false, justifyRight = false;
    bool canCut = false, canCopy = false, canPaste = false;
    bool canUndo = false, canRedo = false, canSelectAll = false;
    QString fontName, fontSize;
    QString foreColor; // "#rrggbb" when the page reports a colour
    bool hasSelection = false;
    // The element the property grid edits: how the selection chose it ("None", "Control",
    // "Text"), its upper-case tag and its attributes as written (lower-case names).
    QString selectionType;
    QString propertyTag;
    QMap<QString, QString> properties;
    quint64 changes = 0; // DOM mutations since the document was loaded

    bool operator==(const SurfaceState&) const = default;
};

} // namespace quillora::gui
