// An HTML fragment at the caret, replacing the selection. Before the user has placed a caret
// it goes to the start of the body, where the page shows its insertion point. Outside the body,
// or where nothing can be edited, nothing happens and nothing is reported.
//
// The engine's insertHTML turns a line break at the top level of a fragment into a paragraph
// split ("a<br>b" inside a paragraph gives two paragraphs). Those breaks are therefore put in
// with insertLineBreak between the pieces, which keeps them as <br> in the same paragraph.
quillora.define('insertHtml', function (html) {
    function pieces(text) {
        var t = document.createElement('template');
        t.innerHTML = text;
        var out = [document.createElement('div')];
        Array.prototype.forEach.call(t.content.childNodes, function (n) {
            if (n.nodeType === Node.ELEMENT_NODE && n.localName === 'br')
                out.push(document.createElement('div'));
            else
                out[out.length - 1].appendChild(n.cloneNode(true));
        });
        return out.map(function (d) { return d.innerHTML; });
    }
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
        var parts = pieces(String(html));
        // Breaks alone are no paragraph's content: the engine inserts them as they are.
        if (parts.every(function (p) { return p === ''; }))
            return document.execCommand('insertHTML', false, String(html));
        var ok = true;
        for (var i = 0; i < parts.length; ++i) {
            if (i > 0)
                ok = document.execCommand('insertLineBreak') && ok;
            // An empty first piece leaves the selection to the line break, which replaces it.
            if (parts[i] !== '')
                ok = document.execCommand('insertHTML', false, parts[i]) && ok;
        }
        return ok;
    } catch (e) {
        return false;
    }
});
