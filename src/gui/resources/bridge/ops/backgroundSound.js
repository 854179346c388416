// The message's background sound: the first BGSOUND of the document gets the new src and loop;
// without one, html goes in at the caret. The sound element shows nothing, so the page's
// editing path cannot select and replace it: it is changed in place as a recorded change, one
// step of the page's undo. Gives "changed", "inserted" or "" when nothing could be done.
//
// The HTML parser leaves a BGSOUND where it stands in the body; it is the page's insert command
// that moves a fragment ending in an element with nothing to show out of the caret's paragraph
// (the sound lands after </p>). A zero-width character after the sound keeps it at the caret;
// its text is emptied afterwards, and empty text is never written out.
quillora.define('backgroundSound', function (src, loop, html) {
    var all = document.getElementsByTagName('*');
    for (var i = 0; i < all.length; ++i) {
        if (all[i].tagName.trim().toUpperCase() === 'BGSOUND') {
            quillora.call(['recordedChange', all[i], function (el) {
                el.setAttribute('src', src);
                el.setAttribute('loop', loop);
            }]);
            return 'changed';
        }
    }
    var tail = '\u200b';
    if (!quillora.call(['insertHtml', html + tail]))
        return '';
    var sel = document.getSelection();
    var at = sel.rangeCount ? sel.getRangeAt(0).startContainer : null;
    // After the sound the character is a text of its own. Were it part of a longer text, the
    // page's undo would take a character too many off it: it is then left as it is.
    if (at && at.nodeType === Node.TEXT_NODE && at.data === tail) {
        at.data = '';
        sel.collapse(at, 0);
    }
    return 'inserted';
});
