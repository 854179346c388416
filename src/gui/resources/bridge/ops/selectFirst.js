// Selects the first element matching selector as a whole, as a click on an image does.
quillora.define('selectFirst', function (selector) {
    var el = document.querySelector(selector);
    if (!el)
        return false;
    var r = document.createRange();
    r.selectNode(el);
    var sel = document.getSelection();
    sel.removeAllRanges();
    sel.addRange(r);
    return true;
});
