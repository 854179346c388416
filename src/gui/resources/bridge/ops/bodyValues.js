// The body's margins, colours and background image as written, for the body properties.
quillora.define('bodyValues', function () {
    var b = document.body;
    var out = {};
    ['leftmargin', 'topmargin', 'marginwidth', 'marginheight', 'background', 'bgcolor', 'text',
     'link', 'alink', 'vlink'].forEach(function (name) {
        out[name] = b && b.hasAttribute(name) ? b.getAttribute(name) : '';
    });
    return out;
});
