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
            if (e.button === 0 && editable)
                quillora.call(['fitImageSize', e.clientX, e.clientY]);
            host.mouseUp(e.button, e.clientX, e.clientY, state());
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

    return {
        define: function (name, fn) { ops[name] = fn; },
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
