// The body properties written back, step by step in the given order: [{remove, name, value}].
quillora.define('setBodyAttributes', function (steps) {
    var b = document.body;
    if (!b)
        return false;
    steps.forEach(function (s) {
        if (s.remove)
            b.removeAttribute(s.name);
        else
            b.setAttribute(s.name, String(s.value));
    });
    return true;
});
