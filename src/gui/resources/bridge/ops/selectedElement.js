// The element the property grid edits. A selection that holds exactly one control (an image, a
// table, a form field) is a control selection and the control is the element; any other
// selection is a text selection whose element is the one holding the whole range (its common
// ancestor), never an ancestor above that.
quillora.define('selectedElement', function () {
    var controls = {IMG: 1, TABLE: 1, INPUT: 1, TEXTAREA: 1, SELECT: 1};
    var sel = document.getSelection();
    if (!sel || sel.rangeCount === 0)
        return {type: 'None', element: null};
    var r = sel.getRangeAt(0);
    var start = r.startContainer;
    if (start.nodeType === Node.ELEMENT_NODE && start === r.endContainer &&
        r.endOffset - r.startOffset === 1) {
        var only = start.childNodes[r.startOffset];
        if (only && only.nodeType === Node.ELEMENT_NODE && controls[only.tagName.toUpperCase()])
            return {type: 'Control', element: only};
    }
    var el = r.commonAncestorContainer;
    if (el.nodeType !== Node.ELEMENT_NODE)
        el = el.parentElement;
    return {type: 'Text', element: el};
});
