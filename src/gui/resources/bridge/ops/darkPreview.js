// The preview as dark-mode mail programs show it, on the preview's own copy of the message.
// Programs that honour the message's dark styles apply its "prefers-color-scheme: dark" rules;
// the others (and all of them for a message without such rules) darken the colours
// themselves: light backgrounds become dark, dark text becomes light, pictures stay as they
// are. Returns whether the message has dark rules of its own.
(function () {
    var kDark = /\(\s*prefers-color-scheme\s*:\s*dark\s*\)/gi;
    var kLight = /\(\s*prefers-color-scheme\s*:\s*light\s*\)/gi;

    // Media rules, nested ones included, switched as a dark-mode client would see them.
    function applyScheme(rules) {
        var found = false;
        for (var i = 0; i < rules.length; i++) {
            var r = rules[i];
            if (r.type !== CSSRule.MEDIA_RULE)
                continue;
            var text = r.media.mediaText;
            if (kDark.test(text) || kLight.test(text)) {
                found = found || /dark/i.test(text);
                // Always true and always false conditions keep the rest of the query valid.
                r.media.mediaText = text.replace(kDark, '(min-width: 0px)')
                                        .replace(kLight, '(max-width: 0px)');
            }
            kDark.lastIndex = 0;
            kLight.lastIndex = 0;
            found = applyScheme(r.cssRules) || found;
        }
        return found;
    }

    function rgba(text) {
        var m = /rgba?\(([^)]+)\)/.exec(text);
        if (!m)
            return null;
        var p = m[1].split(',').map(parseFloat);
        return {r: p[0], g: p[1], b: p[2], a: p.length > 3 ? p[3] : 1};
    }

    function toHsl(c) {
        var r = c.r / 255, g = c.g / 255, b = c.b / 255;
        var max = Math.max(r, g, b), min = Math.min(r, g, b);
        var l = (max + min) / 2, h = 0, s = 0;
        if (max !== min) {
            var d = max - min;
            s = l > 0.5 ? d / (2 - max - min) : d / (max + min);
            h = max === r ? (g - b) / d + (g < b ? 6 : 0) : max === g ? (b - r) / d + 2 : (r - g) / d + 4;
            h *= 60;
        }
        return {h: h, s: s * 100, l: l};
    }

    function css(hsl, l, a) {
        return 'hsla(' + hsl.h.toFixed(1) + ',' + hsl.s.toFixed(1) + '%,' + (l * 100).toFixed(1) +
               '%,' + a + ')';
    }

    function darken() {
        var all = document.body ? document.body.getElementsByTagName('*') : [];
        var changes = [];
        // Read every colour first: each element gets its own, so no change feeds another.
        for (var i = 0; i < all.length; i++) {
            var el = all[i];
            var cs = getComputedStyle(el);
            var bg = rgba(cs.backgroundColor);
            var fg = rgba(cs.color);
            var change = {el: el};
            if (bg && bg.a > 0) {
                var hb = toHsl(bg);
                if (hb.l > 0.5)
                    change.bg = css(hb, 0.08 + (1 - hb.l) * 0.4, bg.a);
            }
            if (fg) {
                var hf = toHsl(fg);
                if (hf.l < 0.5)
                    change.fg = css(hf, Math.max(0.78, 1 - hf.l), fg.a);
            }
            changes.push(change);
        }
        changes.forEach(function (c) {
            if (c.bg)
                c.el.style.setProperty('background-color', c.bg, 'important');
            if (c.fg)
                c.el.style.setProperty('color', c.fg, 'important');
        });
        var root = document.documentElement.style;
        root.setProperty('background-color', '#121212', 'important');
        if (document.body) {
            var body = rgba(getComputedStyle(document.body).backgroundColor);
            if (!body || body.a === 0)
                document.body.style.setProperty('background-color', '#121212', 'important');
            document.body.style.setProperty('color', '#e6e6e6', 'important');
        }
    }

    quillora.define('darkPreview', function (force) {
        var own = false;
        for (var i = 0; i < document.styleSheets.length; i++) {
            try {
                own = applyScheme(document.styleSheets[i].cssRules) || own;
            } catch (e) {
                // A sheet from another origin cannot be read; mail programs do not load it.
            }
        }
        document.documentElement.style.setProperty('color-scheme', 'dark');
        if (force || !own)
            darken();
        return own;
    });
})();
