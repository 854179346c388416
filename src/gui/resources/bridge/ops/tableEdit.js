// Rows and columns of the table around the caret: insertRow (after the caret's row, with as
// many cells), insertCol (after the caret's cell, in every row), deleteRow, deleteCol. The
// caret moves to a neighbouring cell; a table left without rows goes away.
quillora.define('tableEdit', function (op) {
    var sel = document.getSelection();
    if (!sel || !sel.rangeCount || !document.body)
        return false;
    var node = sel.getRangeAt(0).startContainer;
    var el = node.nodeType === Node.ELEMENT_NODE ? node : node.parentElement;
    var cell = el ? el.closest('td, th') : null;
    if (!cell || !document.body.contains(cell) || !cell.isContentEditable)
        return false;
    var row = cell.parentElement;
    var table = row.closest('table');
    if (!table)
        return false;
    var col = cell.cellIndex;

    function blank(tagName) {
        var c = document.createElement(tagName);
        c.appendChild(document.createElement('br')); // an empty cell would have no height
        return c;
    }
    function caretIn(target) {
        var r = document.createRange();
        r.setStart(target, 0);
        r.collapse(true);
        sel.removeAllRanges();
        sel.addRange(r);
    }
    function caretNear(r) {
        if (r && r.cells.length)
            caretIn(r.cells[Math.min(col, r.cells.length - 1)]);
    }
    function dropIfEmpty() {
        if (table.rows.length)
            return false;
        var parent = table.parentNode;
        var index = Array.prototype.indexOf.call(parent.childNodes, table);
        table.remove();
        var r = document.createRange();
        r.setStart(parent, index);
        r.collapse(true);
        sel.removeAllRanges();
        sel.addRange(r);
        return true;
    }

    var rows = Array.prototype.slice.call(table.rows);
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
        return true;
    }
    case 'insertCol':
        rows.forEach(function (r) {
            var like = r.cells[Math.min(col, r.cells.length - 1)];
            r.insertBefore(blank(like ? like.tagName : 'TD'), r.cells[col + 1] || null);
        });
        return true;
    case 'deleteRow': {
        var at = rows.indexOf(row);
        var neighbour = rows[at + 1] || rows[at - 1] || null;
        row.remove();
        if (!dropIfEmpty())
            caretNear(neighbour);
        return true;
    }
    case 'deleteCol':
        rows.forEach(function (r) {
            if (col < r.cells.length)
                r.deleteCell(col);
            if (!r.cells.length)
                r.remove();
        });
        if (!dropIfEmpty())
            caretNear(row.isConnected ? row : table.rows[0]);
        return true;
    }
    return false;
});
