// Writes one edited row of the property grid onto the element under the selection, found
// again as selectedElement finds it. write = {kind, name, value}: kind "attribute", "remove",
// "text", "number" or "boolean" (see the grid's write rules in C++). The change is one step of
// the page's undo: it is made on a copy of the element (of its whole table or list when it is a
// part of one, which cannot stand alone) that replaces the original through the page's editing
// path. A block (a paragraph, a division, a list, the body) cannot be replaced that way: the
// page merges the inserted copy into the text around it or nests it in the original. Those are
// changed in place as a recorded change, which the page's undo takes back all the same.
// Gives "" or the error.
quillora.define('setElementAttribute', function (write) {
    var chosen = quillora.call(['selectedElement']);
    var el = chosen.element;
    if (!el || !document.body || !document.body.contains(el))
        return 'no element under the selection';

    function apply(target) {
        switch (write.kind) {
        case 'remove':
            target.removeAttribute(write.name);
            break;
        case 'text':
            target[write.name] = String(write.value);
            break;
        case 'number':
            target[write.name] = Number(write.value) || 0;
            break;
        case 'boolean':
            target[write.name] = write.value !== '';
            break;
        default:
            target.setAttribute(write.name, String(write.value));
        }
    }

    try {
        var unit = el;
        var part = el.closest('td, th, tr, thead, tbody, tfoot, caption');
        if (part) {
            var table = part.closest('table');
            if (table && document.body.contains(table))
                unit = table;
        }
        var inline = unit.tagName === 'TABLE' || getComputedStyle(unit).display.indexOf('inline') === 0;
        if (!inline || !unit.parentElement ||
            !unit.parentElement.isContentEditable) {
            quillora.call(['recordedChange', el, apply]);
            return '';
        }
        // Child positions from the unit down, to find nodes again in the copy.
        function pathTo(node) {
            var path = [];
            for (var n = node; n && n !== unit; n = n.parentNode) {
                if (!n.parentNode)
                    return null;
                path.unshift(Array.prototype.indexOf.call(n.parentNode.childNodes, n));
            }
            return path;
        }
        function follow(root, path) {
            var n = root;
            for (var i = 0; n && path && i < path.length; ++i)
                n = n.childNodes[path[i]];
            return path ? n : null;
        }
        var sel = document.getSelection();
        var range = sel.rangeCount ? sel.getRangeAt(0) : null;
        var caretPath = range && unit.contains(range.startContainer) ?
            pathTo(range.startContainer) : null;
        var caretOffset = range ? range.startOffset : 0;

        var copy = unit.cloneNode(true);
        var target = follow(copy, pathTo(el));
        if (!target)
            return 'the element cannot be found again';
        apply(target);
        var placed = quillora.replaceElement(unit, copy);
        if (!placed)
            return 'the page refused the change';
        var r = document.createRange();
        if (chosen.type === 'Control') {
            r.selectNode(follow(placed, pathTo(el)) || placed);
        } else {
            var at = follow(placed, caretPath);
            if (!at)
                at = placed;
            var max = at.nodeType === Node.ELEMENT_NODE ? at.childNodes.length : at.length;
            r.setStart(at, Math.min(caretOffset, max));
            r.collapse(true);
        }
        sel.removeAllRanges();
        sel.addRange(r);
        return '';
    } catch (e) {
        return String(e && e.message || e);
    }
});
