// One of the page's own editing commands, so that its undo history records it.
quillora.define('execCommand', function (name, value) {
    try {
        return document.execCommand(name, false, value === null || value === undefined ? '' : String(value));
    } catch (e) {
        return false;
    }
});
