// Show borders and show details are constructed style sheets adopted by the document: they
// change how the page looks and never reach its HTML.
(function () {
    var borders = null;
    var details = null;

    function sheet(css) {
        var s = new CSSStyleSheet();
        s.replaceSync(css);
        return s;
    }

    quillora.define('viewSheets', function (showBorders, showDetails) {
        if (!borders) {
            borders = sheet('table, td, th { outline: 1px dotted #8c8c8c; outline-offset: -1px; }');
            details = sheet(
                'p::after { content: "\\00b6"; color: #9ab0c8; }' +
                'div { outline: 1px dotted #c8d4e0; }' +
                'form { outline: 1px dashed #c0504d; }' +
                'a[name]:not([href])::before { content: "\\2693"; color: #c0504d; }' +
                'img:not([src]), img[src=""] { outline: 1px dashed #c0504d; min-width: 16px; min-height: 16px; }');
        }
        var list = [];
        if (showBorders)
            list.push(borders);
        if (showDetails)
            list.push(details);
        document.adoptedStyleSheets = list;
        return true;
    });
})();
