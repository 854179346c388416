// Every image reloads: its src is cleared and set back.
quillora.define('refreshImages', function () {
    var images = Array.prototype.slice.call(document.images);
    images.forEach(function (img) {
        if (!img.hasAttribute('src'))
            return;
        var src = img.getAttribute('src');
        img.setAttribute('src', '');
        img.setAttribute('src', src);
    });
    return images.length;
});
