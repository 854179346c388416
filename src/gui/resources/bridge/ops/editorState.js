// The caret's surroundings and the command states, for the mirror C++ keeps.
quillora.define('editorState', function () {
    quillora.stateTaken();
    var sel = document.getSelection();
    var el = null;
    if (sel && sel.rangeCount > 0) {
        var r = sel.getRangeAt(0);
        var start = r.startContainer;
        var only = start.nodeType === Node.ELEMENT_NODE && start === r.endContainer &&
            r.endOffset - r.startOffset === 1 ? start.childNodes[r.startOffset] : null;
        if (only && only.nodeType === Node.ELEMENT_NODE)
            el = only; // a selected image or control is the element itself
        else
            el = start.nodeType === Node.ELEMENT_NODE ? start : start.parentElement;
    }
    var path = [];
    for (var e = el; e && path.length < 16; e = e.parentElement)
        path.push('<' + e.tagName.toUpperCase() + '>');
    path.reverse();

    function commandState(name) {
        try { return document.queryCommandState(name); } catch (x) { return false; }
    }
    function enabled(name) {
        try { return document.queryCommandEnabled(name); } catch (x) { return false; }
    }
    function value(name) {
        try { return String(document.queryCommandValue(name) || ''); } catch (x) { return ''; }
    }
    function htmlColour(text) {
        var m = /^rgba?\((\d+),\s*(\d+),\s*(\d+)/.exec(text);
        if (!m)
            return text;
        return '#' + [m[1], m[2], m[3]].map(function (c) {
            return ('0' + Number(c).toString(16)).slice(-2);
        }).join('');
    }

    var id = el ? parseInt(el.getAttribute('id') || '', 10) : NaN;
    // The property grid's element and its attributes as written.
    var chosen = quillora.call(['selectedElement']);
    var attributes = {};
    if (chosen.element) {
        Array.prototype.forEach.call(chosen.element.attributes, function (a) {
            attributes[a.name.toLowerCase()] = a.value;
        });
    }
    return {
        selectionType: chosen.type,
        propertyTag: chosen.element ? chosen.element.tagName.toUpperCase() : '',
        properties: attributes,
        tagPath: path,
        tagName: el ? el.tagName.toUpperCase() : '',
        src: el && el.hasAttribute('src') ? el.getAttribute('src') : '',
        id: isFinite(id) && Math.abs(id) < 2147483648 ? id : 0,
        bold: commandState('bold'),
        italic: commandState('italic'),
        underline: commandState('underline'),
        justifyLeft: commandState('justifyLeft'),
        justifyCenter: commandState('justifyCenter'),
        justifyRight: commandState('justifyRight'),
        canCut: enabled('cut'),
        canCopy: enabled('copy'),
        canPaste: enabled('paste'),
        canUndo: enabled('undo'),
        canRedo: enabled('redo'),
        canSelectAll: enabled('selectAll'),
        fontName: value('fontName'),
        fontSize: value('fontSize'),
        foreColor: htmlColour(value('foreColor')),
        hasSelection: !!(sel && sel.rangeCount > 0 && !sel.isCollapsed),
        changes: quillora.changes()
    };
});
