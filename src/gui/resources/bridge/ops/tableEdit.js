// Rows and columns of the table around the caret: insertRow (after the caret's row, with as
// many cells), insertCol (after the caret's cell, in every row), deleteRow, deleteCol. An
// insertion leaves the caret where it was, a deletion moves it to a neighbouring cell; a table
// left without rows goes away. The edit is made on a copy that replaces the table in one step
// of the page's undo.
quillora.define('tableEdit', function (op) {
    var sel = document.getSelection();
    if (!sel || !sel.rangeCount || !document.body)
        return false;
    var caret = sel.getRangeAt(0);
    var node = caret.startContainer;
    var el = node.nodeType === Node.ELEMENT_NODE ? node : node.parentElement;
    var cell = el ? el.closest('td, th') : null;
    if (!cell || !document.body.contains(cell) || !cell.isContentEditable)
        return false;
    var table = cell.parentElement.closest('table');
    if (!table)
        return false;
    var rowAt = Array.prototype.indexOf.call(table.rows, cell.parentElement);
    var col = cell.cellIndex;

    // The caret as child positions from the table down, to find it again in the new table.
    var path = [];
    for (var n = node; n !== table; n = n.parentNode)
        path.unshift(Array.prototype.indexOf.call(n.parentNode.childNodes, n));

    var copy = table.cloneNode(true);
    var rows = Array.prototype.slice.call(copy.rows);
    var row = rows[rowAt];
    var caretRow = -1; // after a deletion: the row whose cell gets the caret, in the copy

    function blank(tagName) {
        var c = document.createElement(tagName);
        c.appendChild(document.createElement('br')); // an empty cell would have no height
        return c;
    }

    switch (op) {
    case 'insertRow': {
        var tr = document.createElement('tr');
        Array.prototype.forEach.call(row.cells, function (c) {
            var added = blank(c.tagName);
            if (c.colSpan > 1)
                added.colSpan = c.colSpan;
            tr.appendChild(added);
        });
        row.parentNode.insertBefore(tr, row.nextSibling);
        break;
    }
    case 'insertCol':
        rows.forEach(function (r) {
            var like = r.cells[Math.min(col, r.cells.length - 1)];
            r.insertBefore(blank(like ? like.tagName : 'TD'), r.cells[col + 1] || null);
        });
        break;
    case 'deleteRow': {
        var neighbour = rows[rowAt + 1] || rows[rowAt - 1] || null;
        row.remove();
        caretRow = neighbour ? Array.prototype.indexOf.call(copy.rows, neighbour) : -1;
        break;
    }
    case 'deleteCol':
        rows.forEach(function (r) {
            if (col < r.cells.length)
                r.deleteCell(col);
            if (!r.cells.length)
                r.remove();
        });
        caretRow = row.parentNode ? Array.prototype.indexOf.call(copy.rows, row) : 0;
        break;
    default:
        return false;
    }

    var placed = quillora.replaceElement(table, copy.rows.length ? copy : null);
    if (!placed)
        return true; // the table went away with its last row; the page put the caret there

    var target = null;
    var offset = 0;
    if (op === 'insertRow' || op === 'insertCol') {
        target = placed;
        for (var i = 0; target && i < path.length; ++i)
            target = target.childNodes[path[i]];
        offset = caret.startOffset;
    }
    if (!target) {
        var r = placed.rows[Math.max(0, caretRow)];
        target = r && r.cells.length ? r.cells[Math.min(col, r.cells.length - 1)] : null;
        offset = 0;
    }
    if (target) {
        var max = target.nodeType === Node.ELEMENT_NODE ? target.childNodes.length
                                                        : target.length;
        var at = document.createRange();
        at.setStart(target, Math.min(offset, max));
        at.collapse(true);
        sel.removeAllRanges();
        sel.addRange(at);
    }
    return true;
});
