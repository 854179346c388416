// After a left click, an image under the pointer keeps the size it is shown at as its width and
// height attributes (written only when they differ, so a plain click changes nothing).
quillora.define('fitImageSize', function (x, y) {
    var el = document.elementFromPoint(x, y);
    if (!el || el.tagName !== 'IMG')
        return false;
    var width = String(el.width);
    var height = String(el.height);
    if (el.getAttribute('width') !== width)
        el.setAttribute('width', width);
    if (el.getAttribute('height') !== height)
        el.setAttribute('height', height);
    return true;
});
