// The selector texts of every rule of the document's style sheets, for the class list. A sheet
// whose rules cannot be read stops the walk: {selectors, error} gives what was found until then.
quillora.define('styleSelectors', function () {
    var out = [];
    try {
        Array.prototype.forEach.call(document.styleSheets, function (sheet) {
            Array.prototype.forEach.call(sheet.cssRules, function (rule) {
                if (typeof rule.selectorText === 'string')
                    out.push(rule.selectorText);
            });
        });
    } catch (e) {
        return {selectors: out, error: String(e && e.message || e)};
    }
    return {selectors: out, error: ''};
});
