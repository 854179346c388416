#include "core/message/CssUrls.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quillora::CssUrls {

namespace {

using namespace Qt::StringLiterals;

bool isCssSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

bool isNameChar(char c) {
    const auto u = static_cast<unsigned char>(c);
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '\\' || u >= 0x80;
}

bool startsWithNoCase(std::string_view text, size_t at, std::string_view word) {
    if (text.size() - at < word.size())
        return false;
    for (size_t i = 0; i < word.size(); ++i) {
        char c = text[at + i];
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
        if (c != word[i])
            return false;
    }
    return true;
}

struct Quote {
    char quote = 0; // 0: no quote here
    size_t length = 0;
};

// In an attribute's source text a CSS quote may be spelled as a character reference, the only
// way to put the attribute's own quote character inside it.
Quote quoteAt(std::string_view text, size_t at, Context context) {
    const char c = text[at];
    if (c == '"' || c == '\'')
        return {c, 1};
    if (c != '&' || context != Context::Attribute)
        return {};
    static constexpr std::array<std::pair<std::string_view, char>, 6> kSpelled{{{"&quot;", '"'},
                                                                                {"&#34;", '"'},
                                                                                {"&#x22;", '"'},
                                                                                {"&apos;", '\''},
                                                                                {"&#39;", '\''},
                                                                                {"&#x27;", '\''}}};
    for (const auto& [spelling, quote] : kSpelled) {
        if (startsWithNoCase(text, at, spelling))
            return {quote, spelling.size()};
    }
    return {};
}

// The position of the quote that closes a string opened with `quote`, or npos.
size_t closingQuote(std::string_view text, size_t from, char quote, Context context) {
    for (size_t i = from; i < text.size(); ++i) {
        if (const Quote q = quoteAt(text, i, context); q.quote == quote)
            return i;
    }
    return std::string_view::npos;
}

size_t skipSpaces(std::string_view text, size_t at) {
    while (at < text.size() && isCssSpace(text[at]))
        ++at;
    return at;
}

// Reads the url whose "url(" ends at `open`; sets `next` to where scanning goes on.
bool readUrl(std::string_view text, size_t open, Context context, Url& url, size_t& next) {
    const size_t n = text.size();
    size_t at = skipSpaces(text, open);
    if (at == n)
        return false;
    if (const Quote q = quoteAt(text, at, context); q.quote) {
        const size_t from = at + q.length;
        const size_t close = closingQuote(text, from, q.quote, context);
        if (close == std::string_view::npos)
            return false;
        const size_t after = skipSpaces(text, close + quoteAt(text, close, context).length);
        next = after;
        if (after == n || text[after] != ')')
            return false;
        next = after + 1;
        url = {from, close, q.quote};
        return from < close;
    }
    size_t end = at;
    while (end < n && text[end] != ')') {
        if (text[end] == '(' || quoteAt(text, end, context).quote)
            break;
        ++end;
    }
    next = end;
    if (end == n || text[end] != ')')
        return false;
    next = end + 1;
    size_t last = end;
    while (last > at && isCssSpace(text[last - 1]))
        --last;
    url = {at, last, 0};
    return at < last;
}

int hexValue(QChar c) {
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    if (u >= u'A' && u <= u'F')
        return u - u'A' + 10;
    return -1;
}

bool needsEscape(char32_t c) {
    return c <= 0x20 || c == 0x7F || c == '"' || c == '\'' || c == '(' || c == ')' || c == '&' ||
           c == '<' || c == '>';
}

// "&amp;", "&quot;", "&apos;", "&lt;", "&gt;" and numeric references: what file names and CSS
// quotes need. Anything else stays as written.
QString decodeReferences(const QString& text) {
    if (!text.contains(u'&'))
        return text;
    static const std::array<std::pair<QStringView, char16_t>, 5> kNamed{{{u"&amp;", u'&'},
                                                                         {u"&quot;", u'"'},
                                                                         {u"&apos;", u'\''},
                                                                         {u"&lt;", u'<'},
                                                                         {u"&gt;", u'>'}}};
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size();) {
        if (text[i] != u'&') {
            out += text[i++];
            continue;
        }
        const QStringView rest = QStringView(text).sliced(i);
        bool done = false;
        for (const auto& [name, c] : kNamed) {
            if (rest.startsWith(name, Qt::CaseInsensitive)) {
                out += QChar(c);
                i += name.size();
                done = true;
                break;
            }
        }
        if (!done && rest.size() > 3 && rest[1] == u'#') {
            const bool hex = rest[2] == u'x' || rest[2] == u'X';
            const qsizetype digits = hex ? 3 : 2;
            const qsizetype semicolon = rest.indexOf(u';');
            if (semicolon > digits && semicolon <= digits + 7) {
                bool ok = false;
                const uint code =
                    rest.sliced(digits, semicolon - digits).toUInt(&ok, hex ? 16 : 10);
                if (ok && code > 0 && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF)) {
                    out += QString::fromUcs4(reinterpret_cast<const char32_t*>(&code), 1);
                    i += semicolon + 1;
                    done = true;
                }
            }
        }
        if (!done)
            out += text[i++];
    }
    return out;
}

} // namespace

std::vector<Url> scan(std::string_view css, Context context) {
    std::vector<Url> urls;
    const size_t n = css.size();
    size_t i = 0;
    while (i < n) {
        const char c = css[i];
        if (c == '/' && i + 1 < n && css[i + 1] == '*') {
            const size_t end = css.find("*/", i + 2);
            if (end == std::string_view::npos)
                break;
            i = end + 2;
            continue;
        }
        if (const Quote q = quoteAt(css, i, context); q.quote) {
            const size_t close = closingQuote(css, i + q.length, q.quote, context);
            if (close == std::string_view::npos)
                break; // an unclosed string runs to the end
            i = close + quoteAt(css, close, context).length;
            continue;
        }
        if (c == '\\') {
            i += 2; // an escaped character is part of a name, never the start of anything
            continue;
        }
        if ((c == 'u' || c == 'U') && (i == 0 || !isNameChar(css[i - 1])) &&
            startsWithNoCase(css, i, "url(")) {
            Url url;
            size_t next = i + 4;
            if (readUrl(css, i + 4, context, url, next))
                urls.push_back(url);
            i = std::max(next, i + 4);
            continue;
        }
        ++i;
    }
    return urls;
}

QString valueOf(std::string_view text, Context context) {
    QString value = QString::fromUtf8(text.data(), qsizetype(text.size()));
    if (context == Context::Attribute)
        value = decodeReferences(value);
    if (!value.contains(u'\\'))
        return value;
    QString out;
    out.reserve(value.size());
    for (qsizetype i = 0; i < value.size();) {
        if (value[i] == u'\\' && i + 7 <= value.size()) {
            char32_t code = 0;
            bool hex = true;
            for (qsizetype k = 1; k <= 6 && hex; ++k) {
                const int h = hexValue(value[i + k]);
                hex = h >= 0;
                code = code * 16 + char32_t(std::max(h, 0));
            }
            if (hex && needsEscape(code)) {
                out += QChar(char16_t(code));
                i += 7;
                continue;
            }
        }
        out += value[i++];
    }
    return out;
}

QString escaped(QStringView value) {
    QString out;
    out.reserve(value.size());
    for (QChar c : value) {
        if (needsEscape(c.unicode()))
            out += u'\\' + QString::number(c.unicode(), 16).rightJustified(6, u'0');
        else
            out += c;
    }
    return out;
}

} // namespace quillora::CssUrls
