// Selects one element, named as the check names it: the index-th element with that tag name in
// document order. The element itself is selected (an image gets its handles), the body's
// contents when the element is the body or html, and it is scrolled into the middle of view.
quillora.define('selectElement', function (tag, index) {
    var el = document.getElementsByTagName(tag)[index];
    if (!el)
        return false;
    var r = document.createRange();
    if (el === document.body || el === document.documentElement || el === document.head)
        r.selectNodeContents(document.body);
    else
        r.selectNode(el);
    var sel = document.getSelection();
    sel.removeAllRanges();
    sel.addRange(r);
    if (el.scrollIntoView)
        el.scrollIntoView({block: 'center', inline: 'nearest'});
    return true;
});
