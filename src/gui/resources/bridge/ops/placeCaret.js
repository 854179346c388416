// A collapsed caret inside the first element matching selector, before its child number offset.
quillora.define('placeCaret', function (selector, offset) {
    var el = document.querySelector(selector);
    if (!el)
        return false;
    var r = document.createRange();
    r.setStart(el, Math.max(0, Math.min(offset, el.childNodes.length)));
    r.collapse(true);
    var sel = document.getSelection();
    sel.removeAllRanges();
    sel.addRange(r);
    return true;
});
