// Makes a change the page's editing commands cannot express (attributes of a paragraph, a list,
// the body, the background sound) one step of the page's own undo history. The page records
// only what its commands do, so the change is carried by a command that leaves the text as it
// was: one character is put in again in place of itself. When an undo or redo of the page
// changes text only and leaves every text it touched as it found it, it was such a carrier,
// and the latest recorded change is taken back or put back with it. change(el) does the edit;
// gives false when nothing changed.
(function () {
    var done = []; // recorded changes in force, latest last
    var undone = []; // taken back by the page's undo, latest last
    var kLimit = 500;
    var carrierPending = false;

    function attributes(el) {
        var out = Object.create(null);
        Array.prototype.forEach.call(el.attributes, function (a) { out[a.name] = a.value; });
        return out;
    }
    function same(a, b) {
        var ka = Object.keys(a);
        return ka.length === Object.keys(b).length &&
            ka.every(function (k) { return k in b && a[k] === b[k]; });
    }
    function restore(el, values) {
        Array.prototype.slice.call(el.attributes).forEach(function (a) {
            if (!(a.name in values))
                el.removeAttribute(a.name);
        });
        Object.keys(values).forEach(function (k) {
            if (el.getAttribute(k) !== values[k])
                el.setAttribute(k, values[k]);
        });
    }
    // The page's input event comes after the observer has been handed the records: they are
    // kept until the next input event reads them.
    var seen = [];
    var watch = new MutationObserver(function (records) {
        seen.push.apply(seen, records);
    });
    function taken() {
        var out = seen.concat(watch.takeRecords());
        seen = [];
        return out;
    }
    watch.observe(document, {subtree: true, childList: true, attributes: true,
        characterData: true, characterDataOldValue: true});
    // The texts the records changed, when they are text changes only and each text ends as it
    // began; null otherwise.
    function untouchedTexts(records) {
        var first = new Map();
        for (var i = 0; i < records.length; ++i) {
            if (records[i].type !== 'characterData')
                return null;
            if (!first.has(records[i].target))
                first.set(records[i].target, records[i].oldValue);
        }
        var unchanged = true;
        first.forEach(function (old, node) { unchanged = unchanged && node.data === old; });
        return unchanged ? first : null;
    }
    // The page's undo or redo of a carrier leaves its text as it was, or touches nothing.
    function carried(records, step) {
        var texts = untouchedTexts(records);
        return !!texts && (texts.size === 0 || texts.has(step.text));
    }
    document.addEventListener('input', function (e) {
        var records = taken();
        if (e.inputType === 'historyUndo') {
            if (done.length && carried(records, done[done.length - 1])) {
                var step = done.pop();
                restore(step.el, step.before);
                undone.push(step);
            }
        } else if (e.inputType === 'historyRedo') {
            if (undone.length && carried(records, undone[undone.length - 1])) {
                var again = undone.pop();
                restore(again.el, again.after);
                done.push(again);
            }
        } else if (!carrierPending) {
            undone = []; // a new edit: the page forgets what it could redo
        }
        taken();
    });

    function texts(root) {
        var out = [];
        var walk = document.createTreeWalker(root, NodeFilter.SHOW_TEXT);
        for (var n = walk.nextNode(); n; n = walk.nextNode())
            out.push(n);
        return out;
    }
    // A visible character the page can put in again unchanged: not a space (those the page
    // turns into &nbsp;) and, where there is a choice, not at either end of its text, where
    // the page would put the new text outside a link.
    function carrierPlace(root) {
        var best = null;
        texts(root).some(function (t) {
            if (!t.parentElement || !t.parentElement.isContentEditable)
                return false;
            for (var i = 0; i < t.length; ++i) {
                if (/[\s\u00a0\u200b]/.test(t.data[i]))
                    continue;
                var inner = i > 0 && i < t.length - 1;
                if (inner || !best)
                    best = {node: t, offset: i};
                if (inner)
                    return true;
            }
            return false;
        });
        return best;
    }
    // The selection as character counts through the body, which the carrier leaves unchanged.
    function bookmark() {
        var sel = document.getSelection();
        if (!sel || sel.rangeCount === 0)
            return null;
        var r = sel.getRangeAt(0);
        function at(container, offset) {
            if (container.nodeType !== Node.TEXT_NODE)
                return {node: container, offset: offset};
            var pre = document.createRange();
            pre.setStart(document.body, 0);
            pre.setEnd(container, offset);
            return {chars: pre.toString().length};
        }
        return {start: at(r.startContainer, r.startOffset), end: at(r.endContainer, r.endOffset)};
    }
    function goTo(mark) {
        if (!mark || !mark.start)
            return;
        function place(p) {
            if (p.node)
                return p.node.isConnected ? p : null;
            var left = p.chars;
            var all = texts(document.body);
            for (var i = 0; i < all.length; ++i) {
                if (left <= all[i].length)
                    return {node: all[i], offset: left};
                left -= all[i].length;
            }
            return null;
        }
        var s = place(mark.start);
        var e = place(mark.end);
        if (!s || !e)
            return;
        var r = document.createRange();
        try {
            r.setStart(s.node, s.offset);
            r.setEnd(e.node, e.offset);
        } catch (x) {
            return;
        }
        var sel = document.getSelection();
        sel.removeAllRanges();
        sel.addRange(r);
    }

    quillora.define('recordedChange', function (el, change) {
        var before = attributes(el);
        var mark = bookmark();
        var place = carrierPlace(el) || carrierPlace(document.body);
        var carrier = null;
        if (place) {
            var ch = place.node.data[place.offset];
            var r = document.createRange();
            r.setStart(place.node, place.offset);
            r.setEnd(place.node, place.offset + 1);
            var sel = document.getSelection();
            sel.removeAllRanges();
            sel.addRange(r);
            var escaped = ch.replace(/&/g, '&amp;').replace(/</g, '&lt;').replace(/>/g, '&gt;');
            taken();
            carrierPending = true;
            try {
                if (document.execCommand('insertHTML', false, escaped) &&
                    untouchedTexts(taken()))
                    carrier = place.node;
            } finally {
                carrierPending = false;
            }
        }
        change(el);
        taken(); // our own attribute records are no undo's
        var after = attributes(el);
        goTo(mark);
        if (same(before, after))
            return false;
        // Without a carrier (a page with no text at all) the change stands outside the history.
        if (carrier) {
            undone = [];
            done.push({el: el, before: before, after: after, text: carrier});
            if (done.length > kLimit)
                done.shift();
        }
        return true;
    });
})();
