// An HTML fragment at the caret, replacing the selection. Before the user has placed a caret
// it goes to the start of the body, where the page shows its insertion point. Outside the body,
// or where nothing can be edited, nothing happens and nothing is reported.
quillora.define('insertHtml', function (html) {
    try {
        var sel = document.getSelection();
        var body = document.body;
        if (!sel || !body)
            return false;
        if (sel.rangeCount === 0 && body.isContentEditable)
            sel.collapse(body, 0);
        if (sel.rangeCount === 0)
            return false;
        var r = sel.getRangeAt(0);
        if (!body.contains(r.startContainer) || !body.contains(r.endContainer))
            return false;
        var at = r.commonAncestorContainer;
        if (at.nodeType !== Node.ELEMENT_NODE)
            at = at.parentElement;
        if (!at || !at.isContentEditable)
            return false;
        return document.execCommand('insertHTML', false, String(html));
    } catch (e) {
        return false;
    }
});
