#include "core/message/References.h"

#include "core/message/CssUrls.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <algorithm>
#include <cstring>
#include <gumbo.h>
#include <memory>
#include <string_view>

namespace quillora::References {

namespace {

using namespace Qt::StringLiterals;

bool isAsciiLetter(QChar c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

bool isSchemeChar(QChar c) {
    return isAsciiLetter(c) || (c >= u'0' && c <= u'9') || c == u'+' || c == u'-' || c == u'.';
}

// "c:" is a drive; "ab:" and longer, like "data:", "cid:", "mailto:", "ftp:" or "javascript:",
// name something that is not a file.
bool hasUrlScheme(QStringView text) {
    if (text.isEmpty() || !isAsciiLetter(text[0]))
        return false;
    qsizetype i = 1;
    while (i < text.size() && isSchemeChar(text[i]))
        ++i;
    return i >= 2 && i < text.size() && text[i] == u':';
}

bool isDrivePath(QStringView text, PathStyle style) {
    if (text.size() < 2 || text[1] != u':')
        return false;
    // The Windows style has lower-cased the text already.
    return style == PathStyle::Windows ? (text[0] >= u'a' && text[0] <= u'z')
                                       : isAsciiLetter(text[0]);
}

// The steps before the base folder comes in: what kind of reference this is, and its text.
Resolved classify(QStringView reference, PathStyle style) {
    const bool windows = style == PathStyle::Windows;
    QString text = windows ? reference.toString().toLower() : reference.toString();
    const Qt::CaseSensitivity schemeCase = windows ? Qt::CaseSensitive : Qt::CaseInsensitive;
    text.remove(u"file://"_s, schemeCase);
    // CR LF, then CR, then LF: together, every CR and every LF.
    text.removeIf([](QChar c) { return c == u'\r' || c == u'\n'; });
    // Fixed passes from nine blanks down to two, the rule messages have always been read by;
    // not a general collapse (a run of many thousand blanks can keep two).
    for (int run = 9; run >= 2; --run)
        text.replace(QString(run, u' '), u" "_s);

    // Browsers drop blanks around a URL, so a value of blanks refers to the page itself.
    if (std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c == u' '; }))
        return {};
    if (text.startsWith(u"http://"_s, schemeCase) || text.startsWith(u"https://"_s, schemeCase))
        return {Kind::Remote, text};
    if (text.startsWith(u"//"_s) || hasUrlScheme(text))
        return {};
    return {Kind::Local, text};
}

QString percentDecoded(const QString& path) {
    return QString::fromUtf8(QByteArray::fromPercentEncoding(path.toUtf8()));
}

QString withoutQueryOrFragment(const QString& path) {
    const auto cut =
        std::find_if(path.cbegin(), path.cend(), [](QChar c) { return c == u'?' || c == u'#'; });
    return path.first(cut - path.cbegin());
}

// Pages written for the web escape names ("my%20pic.png") or add cache busters ("a.png?v=2")
// that the file name does not have. The literal reading wins whenever it exists; the others
// are tried only then, so the file system is not touched for ordinary names.
template <typename Place> QString firstExisting(const QString& path, Place place) {
    const bool escaped = path.contains(u'%');
    const bool suffixed = path.contains(u'?') || path.contains(u'#');
    if (!escaped && !suffixed)
        return path;
    if (QFileInfo::exists(place(path)))
        return path;
    QStringList readings;
    if (escaped)
        readings << percentDecoded(path);
    if (suffixed) {
        readings << withoutQueryOrFragment(path);
        if (escaped)
            readings << percentDecoded(readings.back());
    }
    for (const QString& reading : readings) {
        if (reading != path && QFileInfo::exists(place(reading)))
            return reading;
    }
    return path;
}

QString placeAsIs(const QString& path) {
    return path;
}

QString withSeparator(const QString& folder, PathStyle style) {
    if (folder.endsWith(u'/') || (style == PathStyle::Windows && folder.endsWith(u'\\')))
        return folder;
    return folder + (style == PathStyle::Windows ? u'\\' : u'/');
}

// gumbo allocates and frees many small blocks. A walk only needs the tree until it has read
// it, so everything goes into a few large blocks released together: about a fifth less time
// on large pages. Memory is freed only at the end, some seven times the page's size.
class Arena {
public:
    static void* allocate(void* self, size_t size) { return static_cast<Arena*>(self)->take(size); }
    static void release(void*, void*) {}

private:
    static constexpr size_t kAlign = alignof(std::max_align_t);
    static constexpr size_t kLargestBlock = size_t(4) << 20;

    void* take(size_t size) {
        size = (std::max<size_t>(size, 1) + kAlign - 1) & ~(kAlign - 1);
        if (size > m_left) {
            const size_t block = std::max(size, m_nextBlock);
            m_blocks.push_back(std::make_unique_for_overwrite<std::byte[]>(block));
            m_next = m_blocks.back().get();
            m_left = block;
            m_nextBlock = std::min(m_nextBlock * 2, kLargestBlock);
        }
        void* p = m_next;
        m_next += size;
        m_left -= size;
        return p;
    }

    std::vector<std::unique_ptr<std::byte[]>> m_blocks;
    std::byte* m_next = nullptr;
    size_t m_left = 0;
    size_t m_nextBlock = size_t(64) << 10;
};

// The elements whose resource is named by "src"; every other element is read for "background".
// HTML elements only: an SVG <script> has no src. VML elements are unknown to the parser and
// matched by name.
struct SrcElement {
    GumboTag tag;
    const char* name; // for GUMBO_TAG_UNKNOWN, in lower case
};

constexpr SrcElement kSrcElements[] = {
    {GUMBO_TAG_IMG, nullptr},           {GUMBO_TAG_INPUT, nullptr},
    {GUMBO_TAG_SCRIPT, nullptr},        {GUMBO_TAG_IFRAME, nullptr},
    {GUMBO_TAG_FRAME, nullptr},         {GUMBO_TAG_EMBED, nullptr},
    {GUMBO_TAG_BGSOUND, nullptr},       {GUMBO_TAG_AUDIO, nullptr},
    {GUMBO_TAG_VIDEO, nullptr},         {GUMBO_TAG_SOURCE, nullptr},
    {GUMBO_TAG_UNKNOWN, "v:image"},     {GUMBO_TAG_UNKNOWN, "v:fill"},
    {GUMBO_TAG_UNKNOWN, "v:imagedata"},
};

// The tag name as written, without "<", for elements the parser does not know.
std::string_view originalName(const GumboElement& element) {
    GumboStringPiece name = element.original_tag;
    if (name.length == 0)
        return {};
    gumbo_tag_from_original_text(&name);
    return {name.data, name.length};
}

bool sameNoCase(std::string_view a, const char* lower) {
    const size_t n = std::strlen(lower);
    if (a.size() != n)
        return false;
    for (size_t i = 0; i < n; ++i) {
        char c = a[i];
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
        if (c != lower[i])
            return false;
    }
    return true;
}

bool hasSrcProperty(const GumboElement& element) {
    if (element.tag_namespace != GUMBO_NAMESPACE_HTML)
        return false;
    for (const SrcElement& e : kSrcElements) {
        if (e.tag != element.tag)
            continue;
        if (!e.name || sameNoCase(originalName(element), e.name))
            return true;
    }
    return false;
}

QString tagName(const GumboElement& element) {
    if (element.tag != GUMBO_TAG_UNKNOWN)
        return QString::fromLatin1(gumbo_normalized_tagname(element.tag));
    const std::string_view name = originalName(element);
    return QString::fromUtf8(name.data(), qsizetype(name.size())).toLower();
}

const GumboAttribute* findAttribute(const GumboElement& element, const char* name) {
    for (unsigned i = 0; i < element.attributes.length; ++i) {
        const auto* attribute = static_cast<const GumboAttribute*>(element.attributes.data[i]);
        if (attribute->attr_namespace == GUMBO_ATTR_NAMESPACE_NONE &&
            std::strcmp(attribute->name, name) == 0)
            return attribute;
    }
    return nullptr;
}

bool isHtmlSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}

bool inBuffer(const GumboStringPiece& piece, const char* begin, const char* end) {
    return piece.data && piece.data >= begin && piece.data < end && piece.length > 0 &&
           piece.length <= size_t(end - piece.data);
}

struct ValueBytes {
    size_t from; // the value without its quotes, in bytes of the parsed text
    size_t to;
    char16_t quote;
};

// Where an attribute's value is in the parsed text. gumbo's own start of an unquoted value is
// wrong when the value begins with a character reference ("src=&amp;x" starts after "&amp;"),
// while the name and the end of the value are right. So the value is taken to start where the
// attribute syntax puts it (name, blanks, "=", blanks) and gumbo's pieces must agree with that.
// Attributes the parser makes up point outside the text and have no place.
std::optional<ValueBytes> placeOf(const GumboAttribute& attribute, const char* begin,
                                  const char* end) {
    const GumboStringPiece& name = attribute.original_name;
    const GumboStringPiece& value = attribute.original_value;
    if (!inBuffer(name, begin, end) || !inBuffer(value, begin, end))
        return std::nullopt;
    const char* at = name.data + name.length;
    const char* const valueEnd = value.data + value.length;
    while (at < valueEnd && isHtmlSpace(*at))
        ++at;
    if (at == valueEnd || *at != '=')
        return std::nullopt;
    ++at;
    while (at < valueEnd && isHtmlSpace(*at))
        ++at;
    if (at == valueEnd || value.data < at)
        return std::nullopt;
    if (*at == '"' || *at == '\'') {
        if (value.data != at || value.length < 2 || valueEnd[-1] != *at)
            return std::nullopt;
        return ValueBytes{size_t(at + 1 - begin), size_t(valueEnd - 1 - begin), char16_t(*at)};
    }
    if (std::any_of(at, valueEnd, [](char c) { return isHtmlSpace(c) || c == '>'; }))
        return std::nullopt;
    return ValueBytes{size_t(at - begin), size_t(valueEnd - begin), 0};
}

struct ByteMark {
    size_t offset;
    size_t reference; // index in the walker's list
    bool end;         // the end of the value, else its start
    qsizetype unit = 0;
};

// gumbo counts UTF-8 bytes; the text is UTF-16. One pass up to the last mark converts them
// all: every UTF-8 sequence is one code unit, except the four-byte ones (two).
void mapToUtf16(const QByteArray& utf8, std::vector<ByteMark>& marks) {
    std::sort(marks.begin(), marks.end(),
              [](const ByteMark& a, const ByteMark& b) { return a.offset < b.offset; });
    const auto* bytes = reinterpret_cast<const unsigned char*>(utf8.constData());
    size_t at = 0;
    qsizetype units = 0;
    for (ByteMark& mark : marks) {
        while (at + 8 <= mark.offset) {
            std::uint64_t word;
            std::memcpy(&word, bytes + at, 8);
            if (word & 0x8080808080808080ULL)
                break;
            at += 8;
            units += 8;
        }
        for (; at < mark.offset; ++at) {
            const unsigned char b = bytes[at];
            units += ((b & 0xC0) != 0x80) + (b >= 0xF0);
        }
        mark.unit = units;
    }
}

void appendEscaped(QString& out, QStringView value, char16_t quote) {
    for (QChar c : value) {
        if (c == u'&')
            out += u"&amp;"_s;
        else if (c == u'>') // a value inside a conditional comment must not end it
            out += u"&gt;"_s;
        else if (c == quote)
            out += quote == u'"' ? u"&quot;"_s : u"&#39;"_s;
        else
            out += c;
    }
}

// One pass over a parsed text, and over the content of its conditional comments, each parsed
// on its own. Offsets are bytes of the whole text (origin).
struct Walk {
    const char* origin;
    std::vector<ByteMark>& marks;
    std::vector<Reference>& references;

    // Comments inside a conditional comment's content cannot close, so they nest only as deep as
    // an unclosed "<!--" chain; the limit only bounds crafted input.
    static constexpr int kMaxDepth = 8;

    void mark(size_t from, size_t to) {
        marks.push_back({from, references.size(), false});
        marks.push_back({to, references.size(), true});
    }

    void add(Reference reference, const char* from, const char* to) {
        if (from)
            mark(size_t(from - origin), size_t(to - origin));
        references.push_back(std::move(reference));
    }

    // The urls of CSS text; `at` is where the text lies in the walked buffer, or null when it is
    // not there (a value the parser made), so the urls can be listed but not rewritten.
    void css(std::string_view text, const char* at, CssUrls::Context context, const QString& tag) {
        for (const CssUrls::Url& url : CssUrls::scan(text, context)) {
            Reference reference;
            reference.tag = tag;
            reference.attribute = Attribute::CssUrl;
            reference.value = CssUrls::valueOf(text.substr(url.from, url.to - url.from), context);
            reference.quote = char16_t(url.quote);
            if (reference.value.isEmpty() || reference.value.startsWith(u'#'))
                continue;
            add(std::move(reference), at ? at + url.from : nullptr, at ? at + url.to : nullptr);
        }
    }

    void element(const GumboElement& element, const char* begin, const char* end) {
        const bool src = hasSrcProperty(element);
        const GumboAttribute* attribute = findAttribute(element, src ? "src" : "background");
        std::optional<QString> tag;
        const auto name = [&]() -> const QString& {
            return tag ? *tag : tag.emplace(tagName(element));
        };
        if (attribute && attribute->value[0] != '\0') {
            Reference reference;
            reference.tag = name();
            reference.attribute = src ? Attribute::Src : Attribute::Background;
            reference.value = QString::fromUtf8(attribute->value);
            const std::optional<ValueBytes> place = placeOf(*attribute, begin, end);
            if (place)
                reference.quote = place->quote;
            add(std::move(reference), place ? begin + place->from : nullptr,
                place ? begin + place->to : nullptr);
        }
        if (const GumboAttribute* style = findAttribute(element, "style")) {
            if (const std::optional<ValueBytes> place = placeOf(*style, begin, end)) {
                const char* at = begin + place->from;
                if (std::string_view text(at, place->to - place->from);
                    text.find('(') != std::string_view::npos)
                    css(text, at, CssUrls::Context::Attribute, name());
            } else if (std::strchr(style->value, '(')) {
                css(style->value, nullptr, CssUrls::Context::StyleSheet, name());
            }
        }
        if (element.tag == GUMBO_TAG_STYLE && element.tag_namespace == GUMBO_NAMESPACE_HTML) {
            for (unsigned i = 0; i < element.children.length; ++i) {
                const auto* child = static_cast<const GumboNode*>(element.children.data[i]);
                if (child->type != GUMBO_NODE_TEXT && child->type != GUMBO_NODE_WHITESPACE)
                    continue;
                const GumboStringPiece& text = child->v.text.original_text;
                if (inBuffer(text, begin, end))
                    css({text.data, text.length}, text.data, CssUrls::Context::StyleSheet, name());
            }
        }
    }

    // "<!--[if mso]>content<![endif]-->": the content is HTML that some mail programs show.
    void comment(const GumboText& text, const char* begin, const char* end, int depth) {
        if (depth >= kMaxDepth || !inBuffer(text.original_text, begin, end))
            return;
        const std::string_view whole(text.original_text.data, text.original_text.length);
        if (whole.size() < 7 || !sameNoCase(whole.substr(0, 7), "<!--[if"))
            return;
        const size_t open = whole.find("]>", 7);
        if (open == std::string_view::npos)
            return;
        size_t close = whole.size();
        for (size_t at = whole.size(); at-- > open;) {
            if (whole.size() - at >= 9 && sameNoCase(whole.substr(at, 9), "<![endif]")) {
                close = at;
                break;
            }
        }
        if (close == whole.size() && whole.ends_with("-->"))
            close -= 3;
        if (close > open + 2)
            parse(whole.data() + open + 2, whole.data() + close, depth + 1);
    }

    void parse(const char* begin, const char* end, int depth) {
        Arena arena;
        GumboOptions options = kGumboDefaultOptions;
        options.allocator = &Arena::allocate;
        options.deallocator = &Arena::release;
        options.userdata = &arena;
        options.max_errors = 0; // we never read them
        // The whole tree lives in the arena: dropping it frees the tree, no gumbo_destroy_output.
        const GumboOutput* output = gumbo_parse_with_options(&options, begin, size_t(end - begin));

        // Iterative, depth first: a page of deeply nested elements must not exhaust the stack.
        std::vector<const GumboNode*> pending{output->document};
        while (!pending.empty()) {
            const GumboNode* node = pending.back();
            pending.pop_back();
            const GumboVector* children = nullptr;
            if (node->type == GUMBO_NODE_DOCUMENT) {
                children = &node->v.document.children;
            } else if (node->type == GUMBO_NODE_ELEMENT || node->type == GUMBO_NODE_TEMPLATE) {
                children = &node->v.element.children;
                element(node->v.element, begin, end);
            } else if (node->type == GUMBO_NODE_COMMENT) {
                comment(node->v.text, begin, end, depth);
            }
            if (children) {
                for (unsigned i = children->length; i-- > 0;)
                    pending.push_back(static_cast<const GumboNode*>(children->data[i]));
            }
        }
    }
};

} // namespace

Resolved normalise(QStringView reference, QStringView baseFolder, PathStyle style) {
    Resolved resolved = classify(reference, style);
    if (!resolved.isLocal())
        return resolved;
    QString& path = resolved.path;
    const bool absolute =
        isDrivePath(path, style) || (style == PathStyle::Posix && path.startsWith(u'/'));
    if (!absolute)
        path.prepend(baseFolder);
    if (style == PathStyle::Windows) {
        path.replace(u'/', u'\\');
    } else {
        path.replace(u'\\', u'/');
        path = firstExisting(path, placeAsIs);
    }
    return resolved;
}

QString fileNameOf(QStringView path) {
    qsizetype i = path.size();
    while (i > 0 && path[i - 1] != u'/' && path[i - 1] != u'\\')
        --i;
    return path.sliced(i).toString();
}

std::optional<QString> safeFileName(QStringView storedPath) {
    QString name = fileNameOf(storedPath);
    if (name.isEmpty() || name == u"."_s || name == u".."_s)
        return std::nullopt;
    for (QChar c : name) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7F)
            return std::nullopt;
    }
    return name;
}

ReferenceWalker::ReferenceWalker(QString html) : m_html(std::move(html)) {
    const QByteArray utf8 = m_html.toUtf8();
    std::vector<ByteMark> marks;
    Walk walk{utf8.constData(), marks, m_references};
    walk.parse(utf8.constData(), utf8.constData() + utf8.size(), 0);

    mapToUtf16(utf8, marks);
    for (const ByteMark& mark : marks) {
        Reference& reference = m_references[mark.reference];
        (mark.end ? reference.length : reference.start) = mark.unit;
    }
    for (Reference& reference : m_references) {
        if (reference.inSource())
            reference.length -= reference.start; // it held the end until now
    }
}

QString ReferenceWalker::rewrite(QStringView html, std::vector<Edit> edits) {
    std::erase_if(edits, [&](const Edit& e) {
        return e.start < 0 || e.length < 0 || e.start > html.size() - e.length;
    });
    std::stable_sort(edits.begin(), edits.end(),
                     [](const Edit& a, const Edit& b) { return a.start < b.start; });
    qsizetype grown = 0;
    for (const Edit& e : edits)
        grown += e.value.size() + 8;
    QString out;
    out.reserve(html.size() + grown);
    qsizetype at = 0;
    for (const Edit& e : edits) {
        if (e.start < at)
            continue;
        out += html.sliced(at, e.start - at);
        if (e.syntax == Syntax::Css) {
            out += CssUrls::escaped(e.value);
        } else if (e.quote == 0) {
            out += u'"';
            appendEscaped(out, e.value, u'"');
            out += u'"';
        } else {
            appendEscaped(out, e.value, e.quote);
        }
        at = e.start + e.length;
    }
    out += html.sliced(at);
    return out;
}

QStringList objectList(const QString& html, const QString& baseFolder, PathStyle style) {
    const ReferenceWalker walker(html);
    QStringList objects;
    QSet<QString> seen;
    for (const Reference& reference : walker.references()) {
        Resolved resolved = normalise(reference.value, baseFolder, style);
        if (resolved.isLocal() && !seen.contains(resolved.path)) {
            seen.insert(resolved.path);
            objects << std::move(resolved.path);
        }
    }
    return objects;
}

namespace {

// Replaces target with a copy of source. Never writes through a link: an existing target is
// removed first, and QFile::copy writes a new file.
bool copyReplacing(const QString& source, const QString& target) {
    const QFileInfo from(source);
    if (!from.isFile())
        return false;
    const QFileInfo to(target);
    if (to.exists() && from.canonicalFilePath() == to.canonicalFilePath())
        return false; // the message's own copy: removing it would lose the file
    if ((to.exists() || to.isSymLink()) && !QFile::remove(target))
        return false;
    return QFile::copy(source, target);
}

} // namespace

LoadResult redirectForLoad(const QString& html, const QString& baseFolder,
                           const QString& restoreFolder, PathStyle style) {
    const ReferenceWalker walker(html);
    const QString folder = withSeparator(restoreFolder, style);
    LoadResult result;
    std::vector<Edit> edits;
    // The source each target holds now: copying it again would change nothing.
    QHash<QString, QString> heldBy;
    for (const Reference& reference : walker.references()) {
        const Resolved resolved = normalise(reference.value, baseFolder, style);
        if (!resolved.isLocal())
            continue;
        const std::optional<QString> name = safeFileName(resolved.path);
        if (!name)
            continue;
        const QString target = folder + *name;
        if (resolved.path != target && heldBy.value(target) != resolved.path &&
            copyReplacing(resolved.path, target)) {
            heldBy.insert(target, resolved.path);
            if (!result.copied.contains(target))
                result.copied << target;
        }
        if (reference.inSource() && reference.value != target)
            edits.push_back(Edit::of(reference, target));
    }
    result.changed = !edits.empty();
    result.html = result.changed ? walker.rewrite(edits) : html;
    return result;
}

QString redirectForPreview(const QString& html, const QString& restoreFolder, PathStyle style) {
    const ReferenceWalker walker(html);
    const QString folder = withSeparator(restoreFolder, style);
    const auto inRestoreFolder = [&](const QString& path) {
        const std::optional<QString> name = safeFileName(path);
        return name ? folder + *name : QString();
    };
    std::vector<Edit> edits;
    for (const Reference& reference : walker.references()) {
        Resolved resolved = classify(reference.value, style);
        if (!resolved.isLocal())
            continue;
        QString& path = resolved.path;
        if (style == PathStyle::Windows) {
            path.replace(u'/', u'\\');
        } else {
            path.replace(u'\\', u'/');
            // The load copied the file under the name of the reading that existed.
            path = firstExisting(path, inRestoreFolder);
        }
        const QString target = inRestoreFolder(path);
        if (!target.isEmpty() && reference.inSource() && reference.value != target)
            edits.push_back(Edit::of(reference, target));
    }
    return edits.empty() ? html : walker.rewrite(edits);
}

} // namespace quillora::References
