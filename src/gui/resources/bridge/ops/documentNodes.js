// The document's top-level nodes, for C++ to join into the whole HTML text. designMode and our
// view style sheets (adoptedStyleSheets) leave nothing in the DOM, so nothing is stripped here.
quillora.define('documentNodes', function () {
    var out = [];
    for (var n = document.firstChild; n; n = n.nextSibling) {
        if (n.nodeType === Node.DOCUMENT_TYPE_NODE)
            out.push({kind: 'doctype', name: n.name, publicId: n.publicId, systemId: n.systemId});
        else if (n.nodeType === Node.COMMENT_NODE)
            out.push({kind: 'comment', text: n.data});
        else if (n.nodeType === Node.ELEMENT_NODE)
            out.push({kind: 'element', text: n.outerHTML});
    }
    return out;
});
