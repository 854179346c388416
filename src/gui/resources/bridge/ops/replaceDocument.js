// A new text of the same document, taken in place of a reload: the page keeps its address (so
// relative references still resolve in the working folder), its editing mode, the web channel
// and our listeners. Only what lies outside the head moves: when the doctype, the comments
// around the root or the head differ, nothing changes and false tells C++ to load the page
// afresh, as a new head can change how the whole page is read (base address, styles, refresh).
(function () {
    function sameAttributes(a, b) {
        if (a.attributes.length !== b.attributes.length)
            return false;
        for (var i = 0; i < a.attributes.length; ++i) {
            var at = a.attributes[i];
            if (b.getAttributeNS(at.namespaceURI, at.localName) !== at.value)
                return false;
        }
        return true;
    }

    // Makes live's children equal to fresh's, keeping every live node that is equal already:
    // an edit made on the source page then costs the page the style and layout of what changed,
    // not of the whole message. The equal runs at both ends stay; when one node is left on each
    // side and both are the same element with the same attributes, the change lies inside it;
    // otherwise the nodes in between are swapped for fresh ones. True when nothing was swapped
    // above the body's children.
    function merge(live, fresh) {
        var a = Array.prototype.slice.call(live.childNodes);
        var b = Array.prototype.slice.call(fresh.childNodes);
        var start = 0;
        while (start < a.length && start < b.length && a[start].isEqualNode(b[start]))
            ++start;
        var endA = a.length, endB = b.length;
        while (endA > start && endB > start && a[endA - 1].isEqualNode(b[endB - 1])) {
            --endA;
            --endB;
        }
        if (endA - start === 1 && endB - start === 1) {
            var x = a[start], y = b[start];
            if (x.nodeType === Node.ELEMENT_NODE && y.nodeType === Node.ELEMENT_NODE &&
                x.namespaceURI === y.namespaceURI && x.tagName === y.tagName &&
                sameAttributes(x, y)) {
                merge(x, y);
                return;
            }
        }
        var before = endA < a.length ? a[endA] : null;
        for (var i = start; i < endA; ++i)
            live.removeChild(a[i]);
        for (var j = start; j < endB; ++j)
            live.insertBefore(document.adoptNode(b[j]), before);
    }

    function syncAttributes(live, fresh) {
        for (var i = live.attributes.length - 1; i >= 0; --i) {
            var at = live.attributes[i];
            if (!fresh.hasAttributeNS(at.namespaceURI, at.localName))
                live.removeAttributeNS(at.namespaceURI, at.localName);
        }
        for (var j = 0; j < fresh.attributes.length; ++j) {
            var f = fresh.attributes[j];
            if (live.getAttributeNS(f.namespaceURI, f.localName) !== f.value)
                live.setAttributeNS(f.namespaceURI, f.name, f.value);
        }
    }

    function outside(doc) {
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
    }

    quillora.define('replaceDocument', function (html) {
        var fresh = new DOMParser().parseFromString(html, 'text/html');
        var root = document.documentElement;
        var freshRoot = fresh.documentElement;
        if (!root || !freshRoot || !document.head || !fresh.head || !document.body ||
            !fresh.body || outside(document) !== outside(fresh) ||
            document.head.outerHTML !== fresh.head.outerHTML)
            return false;

        // The root's and the body's own attributes are set where they differ, so that the body
        // (and with it the caret and the scroll position) stays when only its content changed.
        syncAttributes(root, freshRoot);
        syncAttributes(document.body, fresh.body);
        var body = document.body;
        merge(root, freshRoot);

        var selection = document.getSelection();
        if (document.body !== body) {
            // A new body starts as after a load: no caret, at the top.
            selection.removeAllRanges();
            window.scrollTo(0, 0);
        } else if (selection.rangeCount &&
                   (!selection.isCollapsed || !selection.anchorNode ||
                    !selection.anchorNode.isConnected)) {
            // A caret in a node that is still there stays; anything else would be acted on by
            // the next command (a selection gets the typing font) or points nowhere.
            selection.removeAllRanges();
        }
        // The page is laid out before the switch counts as over.
        void document.body.offsetHeight;
        return true;
    });
})();
