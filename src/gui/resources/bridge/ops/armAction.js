// The browser's own edit actions (undo, cut, paste, select all…) reach the page by another
// route than our scripts and can lag behind them. C++ arms this before triggering one and holds
// its queue until the page shows the action's effect.
(function () {
    var armed = null;
    var effects = {
        undo: 'input', redo: 'input', cut: 'cut', copy: 'copy', paste: 'paste',
        selectAll: 'selectionchange'
    };

    function snapshot() {
        var s = document.getSelection();
        if (!s || !s.rangeCount)
            return null;
        var r = s.getRangeAt(0);
        return [r.startContainer, r.startOffset, r.endContainer, r.endOffset];
    }

    function sameSelection(a, b) {
        if (!a || !b)
            return a === b;
        return a[0] === b[0] && a[1] === b[1] && a[2] === b[2] && a[3] === b[3];
    }

    function settle(e) {
        if (!armed || e.type !== armed.effect)
            return;
        // selectionchange is delivered late: one left over from an earlier caret move must not
        // count, so the selection has to differ from the one at arming time.
        if (e.type === 'selectionchange' && sameSelection(snapshot(), armed.selection))
            return;
        var token = armed.token;
        armed = null;
        quillora.host().actionSettled(token);
    }

    ['input', 'cut', 'copy', 'paste', 'selectionchange'].forEach(function (type) {
        document.addEventListener(type, settle, true);
    });

    quillora.define('armAction', function (token, action) {
        armed = {token: token, effect: effects[action], selection: snapshot()};
        return true;
    });
})();
