// A new text of the same document, taken in place of a reload: the page keeps its address (so
// relative references still resolve in the working folder), its editing mode, the web channel
// and our listeners. Only what lies outside the head moves: when the doctype, the comments
// around the root or the head differ, nothing changes and false tells C++ to load the page
// afresh, as a new head can change how the whole page is read (base address, styles, refresh).
quillora.define('replaceDocument', function (html) {
    var fresh = new DOMParser().parseFromString(html, 'text/html');
    var outside = function (doc) {
        var parts = [];
        for (var n = doc.firstChild; n; n = n.nextSibling) {
            if (n.nodeType === Node.DOCUMENT_TYPE_NODE)
                parts.push('d' + n.name + '\u0000' + n.publicId + '\u0000' + n.systemId);
            else if (n.nodeType === Node.COMMENT_NODE)
                parts.push('c' + n.data);
            else if (n.nodeType === Node.ELEMENT_NODE)
                parts.push('e' + n.tagName);
        }
        return parts.join('\u0001');
    };
    var root = document.documentElement;
    var freshRoot = fresh.documentElement;
    if (!root || !freshRoot || !document.head || !fresh.head ||
        outside(document) !== outside(fresh) ||
        document.head.outerHTML !== fresh.head.outerHTML)
        return false;

    for (var i = root.attributes.length - 1; i >= 0; --i) {
        if (!freshRoot.hasAttribute(root.attributes[i].name))
            root.removeAttribute(root.attributes[i].name);
    }
    for (var j = 0; j < freshRoot.attributes.length; ++j)
        root.setAttribute(freshRoot.attributes[j].name, freshRoot.attributes[j].value);

    // The head stays where it is (taken out and put back, its styles would be read again).
    var head = document.head;
    for (var n = root.firstChild; n;) {
        var next = n.nextSibling;
        if (n !== head)
            root.removeChild(n);
        n = next;
    }
    var beforeHead = true;
    while (freshRoot.firstChild) {
        var node = freshRoot.firstChild;
        if (node === fresh.head) {
            freshRoot.removeChild(node);
            beforeHead = false;
            continue;
        }
        var adopted = document.adoptNode(node);
        if (beforeHead)
            root.insertBefore(adopted, head);
        else
            root.appendChild(adopted);
    }
    // The caret was in the old body; the new one starts without one, as after a load.
    document.getSelection().removeAllRanges();
    window.scrollTo(0, 0);
    return true;
});
