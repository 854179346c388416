// The message's background sound: the first BGSOUND of the document gets the new src and loop;
// without one, html goes in at the caret. The sound element shows nothing, so the page's
// editing path cannot select and replace it: it is changed in place. Gives "changed",
// "inserted" or "" when nothing could be done.
quillora.define('backgroundSound', function (src, loop, html) {
    var all = document.getElementsByTagName('*');
    for (var i = 0; i < all.length; ++i) {
        if (all[i].tagName.trim().toUpperCase() === 'BGSOUND') {
            all[i].setAttribute('src', src);
            all[i].setAttribute('loop', loop);
            return 'changed';
        }
    }
    return quillora.call(['insertHtml', html]) ? 'inserted' : '';
});
