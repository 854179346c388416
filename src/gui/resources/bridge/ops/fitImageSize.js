// After a left click, an image under the pointer keeps the size it is shown at as its width and
// height attributes (written only when they differ, so a plain click changes nothing). The
// change is one step of the page's undo, and the image stays selected as the click left it.
quillora.define('fitImageSize', function (x, y) {
    var el = document.elementFromPoint(x, y);
    if (!el || el.tagName !== 'IMG' || !el.parentElement || !el.parentElement.isContentEditable)
        return false;
    var width = String(el.width);
    var height = String(el.height);
    if (el.getAttribute('width') === width && el.getAttribute('height') === height)
        return false;
    var copy = el.cloneNode(false);
    copy.setAttribute('width', width);
    copy.setAttribute('height', height);
    var placed = quillora.replaceElement(el, copy);
    if (!placed)
        return false;
    var r = document.createRange();
    r.selectNode(placed);
    var sel = document.getSelection();
    sel.removeAllRanges();
    sel.addRange(r);
    return true;
});
