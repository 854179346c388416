// A collapsed caret at a point of the viewport (CSS pixels), where a drop lands. A point
// outside the body's editable content leaves the caret where it was.
quillora.define('caretAtPoint', function (x, y) {
    var r = document.caretRangeFromPoint ? document.caretRangeFromPoint(x, y) : null;
    var body = document.body;
    if (!r || !body || !body.contains(r.startContainer))
        return false;
    var at = r.startContainer.nodeType === Node.ELEMENT_NODE ? r.startContainer
                                                             : r.startContainer.parentElement;
    if (!at || !at.isContentEditable)
        return false;
    r.collapse(true);
    var sel = document.getSelection();
    sel.removeAllRanges();
    sel.addRange(r);
    return true;
});
