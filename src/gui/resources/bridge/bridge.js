// The editor's side of the visual page and the preview. It runs in its own script world: page
// JavaScript is switched off, so a message's scripts never run, and nothing defined here is
// visible to the page. Each operation lives in its own file under ops/ and registers itself
// with quillora.define; C++ calls them with quillora.call([name, args...]).
//
// Timers never fire in this world: with page JavaScript off the engine drops every setTimeout
// and setInterval callback, whatever the world. Debouncing is therefore done in C++, and the
// mouse-move throttle uses requestAnimationFrame, which still runs (a pointer only moves over a
// visible page).
'use strict';

var quillora = (function () {
    var ops = Object.create(null);
    var host = null; // the C++ object on the web channel
    var busy = 0; // > 0 while one of our operations runs: its input events are not the user's
    var started = false;
    var editable = false;
    var changes = 0;
    var stateOwed = false; // C++ was told the state changed and has not read it yet
    var pointer = null; // the last pointer position not yet reported

    function markDirty() {
        if (host && started && !stateOwed) {
            stateOwed = true;
            host.dirty();
        }
    }

    // The state goes along with the events whose handlers read the mirror at once (the tag bar
    // on a click), so they never see the state before the event.
    function state() {
        return quillora.call(['editorState']);
    }

    function carriesFiles(e) {
        var types = e.dataTransfer ? Array.prototype.slice.call(e.dataTransfer.types) : [];
        return types.indexOf('Files') >= 0 || types.indexOf('text/uri-list') >= 0;
    }

    function listen() {
        new MutationObserver(function (records) {
            changes += records.length;
            markDirty();
        }).observe(document, {subtree: true, childList: true, attributes: true, characterData: true});
        document.addEventListener('selectionchange', markDirty);
        document.addEventListener('input', function () {
            if (editable && !busy)
                host.edited(state());
            else
                markDirty();
        });
        document.addEventListener('keyup', function () {
            if (editable)
                host.edited(state());
            else
                markDirty();
        });
        document.addEventListener('click', function () { host.clicked(state()); });
        document.addEventListener('mousemove', function (e) {
            var first = pointer === null;
            pointer = [e.clientX, e.clientY];
            if (first) {
                requestAnimationFrame(function () {
                    host.mouseMoved(pointer[0], pointer[1]);
                    pointer = null;
                });
            }
        });
        document.addEventListener('mouseup', function (e) {
            if (e.button !== 0 || !editable) {
                host.mouseUp(e.button, e.clientX, e.clientY, state());
                return;
            }
            // After the click: an image replaced during its own mouseup gets no click event.
            var x = e.clientX;
            var y = e.clientY;
            requestAnimationFrame(function () {
                quillora.call(['fitImageSize', x, y]);
                host.mouseUp(0, x, y, state());
            });
        }, true);
        document.addEventListener('dblclick', function (e) {
            if (e.target && e.target.tagName === 'IMG')
                host.imageDoubleClicked();
        });
        // A file or address dropped from outside is not content: without this the engine
        // writes its address into the page.
        document.addEventListener('drop', function (e) {
            if (carriesFiles(e)) {
                e.preventDefault();
                e.stopPropagation();
            }
        }, true);
    }

    // Our own edits of a table or an image go through the page's editing path, so that its
    // undo takes each one back in one step: the edited copy replaces the original through
    // insertHTML (no copy: the original is deleted). Left to itself the page tidies up around
    // what it removes: it drops a wrapper or whitespace left empty, adds a <br> to hold an empty
    // line open and turns neighbouring spaces into &nbsp;. Two stand-ins keep the surroundings
    // as they are while it works: a span before the element, removed afterwards, and a
    // zero-width text after it, emptied afterwards but left in the tree (empty text is never
    // written out), because the page's undo puts the original back before that very node.
    // A marker attribute finds the new element and is removed at once, on the node the page's
    // undo and redo take out and put back, so it never reaches the document.
    function replaceElement(original, copy) {
        var parent = original.parentNode;
        var before = document.createElement('span');
        before.textContent = 'x';
        var after = document.createTextNode('\u200b');
        parent.insertBefore(before, original);
        parent.insertBefore(after, original.nextSibling);
        var sel = document.getSelection();
        var r = document.createRange();
        r.selectNode(original);
        sel.removeAllRanges();
        sel.addRange(r);
        var mark = 'data-quillora-replaced';
        var placed = null;
        if (copy) {
            copy.setAttribute(mark, '');
            document.execCommand('insertHTML', false, copy.outerHTML);
            placed = document.querySelector('[' + mark + ']');
            if (placed)
                placed.removeAttribute(mark);
        } else {
            document.execCommand('delete', false, '');
        }
        before.remove();
        after.data = after.data.replace(/\u200b/g, '');
        return placed;
    }

    return {
        define: function (name, fn) { ops[name] = fn; },
        replaceElement: replaceElement,
        call: function (message) {
            var fn = ops[message[0]];
            if (!fn)
                throw new Error('no bridge operation ' + message[0]);
            busy++;
            try {
                return fn.apply(null, message.slice(1));
            } finally {
                busy--;
            }
        },
        connected: function (surface) {
            host = surface;
            host.ready(location.href);
        },
        // Once per document, when C++ has seen both the load and our ready call.
        start: function (config) {
            if (started)
                return true;
            started = true;
            editable = !!config.editable;
            if (editable)
                document.designMode = 'on';
            quillora.call(['viewSheets', !!config.borders, !!config.details]);
            listen();
            markDirty();
            return true;
        },
        host: function () { return host; },
        changes: function () { return changes; },
        stateTaken: function () { stateOwed = false; }
    };
})();

new QWebChannel(qt.webChannelTransport, function (channel) {
    quillora.connected(channel.objects.surface);
});
