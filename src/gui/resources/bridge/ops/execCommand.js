// One of the page's own editing commands, so that its undo history records it. Before the user
// has placed a caret the selection is put at the start of the body, where the page shows its
// insertion point: a typing style (fontName, fontSize…) set then applies to what is typed there.
quillora.define('execCommand', function (name, value) {
    try {
        var sel = document.getSelection();
        if (sel && sel.rangeCount === 0 && document.body && document.body.isContentEditable)
            sel.collapse(document.body, 0);
        return document.execCommand(name, false, value === null || value === undefined ? '' : String(value));
    } catch (e) {
        return false;
    }
});
