// Selects the contents of the first element matching selector.
quillora.define('selectContents', function (selector) {
    var el = document.querySelector(selector);
    if (!el)
        return false;
    var r = document.createRange();
    r.selectNodeContents(el);
    var sel = document.getSelection();
    sel.removeAllRanges();
    sel.addRange(r);
    return true;
});
