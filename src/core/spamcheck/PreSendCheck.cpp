#include "core/spamcheck/PreSendCheck.h"

#include "core/app/Texts.h"
#include "core/editor/CommandTable.h"
#include "core/message/References.h"

#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <algorithm>
#include <gumbo.h>

namespace quillora::check {

namespace {

using namespace Qt::StringLiterals;

QString tagName(const GumboElement& element) {
    if (element.tag != GUMBO_TAG_UNKNOWN)
        return QString::fromLatin1(gumbo_normalized_tagname(element.tag));
    GumboStringPiece name = element.original_tag;
    if (name.length == 0)
        return {};
    gumbo_tag_from_original_text(&name);
    return QString::fromUtf8(name.data, qsizetype(name.length)).toLower();
}

// The elements that load their resource through "src"; every other one through "background".
bool loadsThroughSrc(const QString& tag) {
    static const QSet<QString> kSrc{u"img"_s,   u"input"_s, u"script"_s,  u"iframe"_s,
                                    u"frame"_s, u"embed"_s, u"bgsound"_s, u"audio"_s,
                                    u"video"_s, u"source"_s};
    return kSrc.contains(tag);
}

QString resourceAttribute(const Element& e) {
    return loadsThroughSrc(e.tag) ? u"src"_s : u"background"_s;
}

const QRegularExpression& tokenPattern() {
    static const QRegularExpression re(u":::([^:\\s<>\"']{1,40}):::"_s);
    return re;
}

void collectTokens(const QString& text, const ElementRef& where, std::vector<TokenUse>& out) {
    if (!text.contains(u":::"_s))
        return;
    auto it = tokenPattern().globalMatch(text);
    while (it.hasNext())
        out.push_back({it.next().captured(0), where});
}

ElementRef refOf(const Element& e) {
    return {e.tag, e.index};
}

ParsedMessage parse(const CheckInput& input) {
    ParsedMessage m{input, {}, {}, 0};
    const QByteArray utf8 = input.html.toUtf8();
    m.htmlBytes = utf8.size();
    GumboOptions options = kGumboDefaultOptions;
    options.max_errors = 0;
    GumboOutput* output = gumbo_parse_with_options(&options, utf8.constData(), size_t(utf8.size()));

    QHash<QString, int> counts;
    std::vector<size_t> open;      // the elements being walked, outermost first
    std::vector<size_t> openLinks; // the links among them, whose text is gathered
    // Iterative, depth first, with a step that closes each element: a deeply nested page must
    // not exhaust the stack.
    struct Step {
        const GumboNode* node; // null: close the innermost open element
    };
    std::vector<Step> pending{{output->document}};
    while (!pending.empty()) {
        const GumboNode* node = pending.back().node;
        pending.pop_back();
        if (!node) {
            if (!openLinks.empty() && openLinks.back() == open.back())
                openLinks.pop_back();
            open.pop_back();
            continue;
        }
        const GumboVector* children = nullptr;
        if (node->type == GUMBO_NODE_DOCUMENT) {
            children = &node->v.document.children;
        } else if (node->type == GUMBO_NODE_ELEMENT) {
            const GumboElement& g = node->v.element;
            Element e;
            e.tag = tagName(g);
            e.index = counts[e.tag]++;
            for (unsigned i = 0; i < g.attributes.length; ++i) {
                const auto* a = static_cast<const GumboAttribute*>(g.attributes.data[i]);
                e.attributes.append(
                    {QString::fromUtf8(a->name).toLower(), QString::fromUtf8(a->value)});
                collectTokens(e.attributes.back().second, {e.tag, e.index}, m.tokens);
            }
            // A picture inside a link speaks for it with its alternative text.
            if (e.tag == u"img"_s) {
                for (size_t link : openLinks)
                    m.elements[link].text += u' ' + e.value(u"alt"_s);
            }
            const size_t at = m.elements.size();
            if (e.tag == u"a"_s || e.tag == u"area"_s)
                openLinks.push_back(at);
            m.elements.push_back(std::move(e));
            open.push_back(at);
            pending.push_back({nullptr});
            children = &g.children;
        } else if (node->type == GUMBO_NODE_TEXT || node->type == GUMBO_NODE_WHITESPACE ||
                   node->type == GUMBO_NODE_CDATA) {
            const QString text = QString::fromUtf8(node->v.text.text);
            for (size_t link : openLinks)
                m.elements[link].text += text;
            collectTokens(text, open.empty() ? ElementRef{} : refOf(m.elements[open.back()]),
                          m.tokens);
        }
        // <template> contents are not part of the document the page shows.
        if (children) {
            for (unsigned i = children->length; i-- > 0;)
                pending.push_back({static_cast<const GumboNode*>(children->data[i])});
        }
    }
    gumbo_destroy_output(&options, output);
    for (Element& e : m.elements)
        e.text = e.text.simplified();
    return m;
}

Finding make(const char* rule, Severity severity, const char* key, QStringList args = {},
             ElementRef element = {}) {
    return {QString::fromLatin1(rule), severity, QString::fromLatin1(key), std::move(args),
            std::move(element)};
}

bool isLink(const Element& e) {
    return e.tag == u"a"_s || e.tag == u"area"_s;
}

// A short form of a reference for a message: long data and paths cut in the middle.
QString shortened(const QString& text, qsizetype max = 80) {
    if (text.size() <= max)
        return text;
    return text.first(max / 2 - 1) + u"…"_s + text.last(max / 2 - 1);
}

class EmptySubject : public Rule {
public:
    const char* id() const override { return "empty-subject"; }
    void check(const ParsedMessage& m, std::vector<Finding>& out) const override {
        if (m.input.subject.trimmed().isEmpty())
            out.push_back(make(id(), Severity::Error, "chkEmptySubject"));
    }
};

class MissingAlt : public Rule {
public:
    const char* id() const override { return "missing-alt"; }
    void check(const ParsedMessage& m, std::vector<Finding>& out) const override {
        for (const Element& e : m.elements) {
            if (e.tag != u"img"_s || e.has(u"alt"_s))
                continue;
            // A spacer or a counter pixel carries no content: a hint that alt="" is wanted.
            const auto tiny = [&](const char* name) {
                bool ok = false;
                const int v = e.value(QString::fromLatin1(name)).toInt(&ok);
                return ok && v <= 2;
            };
            const bool spacer = tiny("width") || tiny("height");
            out.push_back(make(id(), spacer ? Severity::Hint : Severity::Warning,
                               spacer ? "chkMissingAltSpacer" : "chkMissingAlt",
                               {shortened(e.value(u"src"_s))}, refOf(e)));
        }
    }
};

class MissingFile : public Rule {
public:
    const char* id() const override { return "missing-file"; }
    void check(const ParsedMessage& m, std::vector<Finding>& out) const override {
        for (const Element& e : m.elements) {
            const QString value = e.value(resourceAttribute(e));
            if (value.isEmpty())
                continue;
            const References::Resolved r = References::normalise(value, m.input.baseFolder);
            if (r.isLocal() && !QFileInfo(r.path).isFile())
                out.push_back(
                    make(id(), Severity::Error, "chkMissingFile", {shortened(value)}, refOf(e)));
        }
        for (const QString& a : m.input.attachments) {
            if (!QFileInfo(a).isFile())
                out.push_back(make(id(), Severity::Error, "chkMissingAttachment", {a}));
        }
    }
};

class InsecureImage : public Rule {
public:
    const char* id() const override { return "insecure-image"; }
    void check(const ParsedMessage& m, std::vector<Finding>& out) const override {
        for (const Element& e : m.elements) {
            const bool src = loadsThroughSrc(e.tag);
            // Images only: a script or a frame over http is the stripped-element rule's.
            if (src && e.tag != u"img"_s && e.tag != u"input"_s)
                continue;
            const QString value = e.value(src ? u"src"_s : u"background"_s).trimmed();
            if (value.startsWith(u"http://"_s, Qt::CaseInsensitive))
                out.push_back(make(id(), Severity::Warning, "chkInsecureImage", {shortened(value)},
                                   refOf(e)));
        }
    }
};

class EmptyLink : public Rule {
public:
    const char* id() const override { return "empty-link"; }
    void check(const ParsedMessage& m, std::vector<Finding>& out) const override {
        for (const Element& e : m.elements) {
            if (!isLink(e) || !e.has(u"href"_s))
                continue;
            QString href = e.value(u"href"_s);
            href.removeIf([](QChar c) { return c.isSpace(); });
            if (href.isEmpty() || href == u"#"_s ||
                href.startsWith(u"javascript:"_s, Qt::CaseInsensitive))
                out.push_back(make(id(), Severity::Warning, "chkEmptyLink",
                                   {shortened(e.text, 40), shortened(e.value(u"href"_s), 40)},
                                   refOf(e)));
        }
    }
};

class NoUnsubscribe : public Rule {
public:
    const char* id() const override { return "no-unsubscribe"; }
    void check(const ParsedMessage& m, std::vector<Finding>& out) const override {
        // The words readers and list programs use in their leave links: English, Italian
        // ("cancellarti"), Spanish ("anular"), German, French, and the subject of the mail link
        // the editor inserts ("?subject=REMOVE").
        static const char* const kWords[] = {"unsub",    "cancell",  "anular",   "opt-out",
                                             "optout",   "opt out",  "abmelden", "desabonn",
                                             "désabonn", "desuscri", "disiscri"};
        for (const Element& e : m.elements) {
            if (!isLink(e) || !e.has(u"href"_s))
                continue;
            const QString href = e.value(u"href"_s).toLower();
            if (href.startsWith(u"mailto:"_s) && href.contains(u"subject=remove"_s))
                return;
            const QString text = e.text.toLower();
            for (const char* w : kWords) {
                const QString word = QString::fromUtf8(w);
                if (href.contains(word) || text.contains(word))
                    return;
            }
        }
        out.push_back(make(id(), Severity::Warning, "chkNoUnsubscribe"));
    }
};

int editDistance(const QString& a, const QString& b) {
    std::vector<int> row(size_t(b.size()) + 1);
    for (qsizetype j = 0; j <= b.size(); ++j)
        row[size_t(j)] = int(j);
    for (qsizetype i = 1; i <= a.size(); ++i) {
        int diagonal = row[0];
        row[0] = int(i);
        for (qsizetype j = 1; j <= b.size(); ++j) {
            const int up = row[size_t(j)];
            row[size_t(j)] = std::min(
                {up + 1, row[size_t(j) - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = up;
        }
    }
    return row.back();
}

class UnknownToken : public Rule {
public:
    const char* id() const override { return "unknown-token"; }
    void check(const ParsedMessage& m, std::vector<Finding>& out) const override {
        QSet<QString> known;
        for (const auto& f : editor::mergeFields())
            known.insert(QString::fromLatin1(f.token));
        for (const TokenUse& use : m.tokens) {
            if (known.contains(use.token))
                continue;
            QString best;
            int bestDistance = 3; // further than two edits is no longer a typo
            for (const auto& f : editor::mergeFields()) {
                const QString token = QString::fromLatin1(f.token);
                const int d = editDistance(use.token.toLower(), token);
                if (d < bestDistance) {
                    bestDistance = d;
                    best = token;
                }
            }
            if (best.isEmpty())
                out.push_back(
                    make(id(), Severity::Error, "chkUnknownToken", {use.token}, use.element));
            else
                out.push_back(make(id(), Severity::Error, "chkUnknownTokenLike", {use.token, best},
                                   use.element));
        }
    }
};

QString kilobytes(qint64 bytes) {
    return QString::number(double(bytes) / 1024.0, 'f', 1);
}

QString megabytes(qint64 bytes) {
    return QString::number(double(bytes) / (1024.0 * 1024.0), 'f', 1);
}

class GmailClip : public Rule {
public:
    const char* id() const override { return "gmail-clip-102kb"; }
    void check(const ParsedMessage& m, std::vector<Finding>& out) const override {
        if (m.htmlBytes > kGmailClipBytes)
            out.push_back(make(id(), Severity::Warning, "chkGmailClip", {kilobytes(m.htmlBytes)}));
    }
};

class MessageTooLarge : public Rule {
public:
    const char* id() const override { return "message-too-large"; }
    void check(const ParsedMessage& m, std::vector<Finding>& out) const override {
        const qint64 size = estimatedMailSize(m.input);
        if (m.input.sizeLimitBytes > 0 && size > m.input.sizeLimitBytes)
            out.push_back(make(id(), Severity::Error, "chkTooLarge",
                               {megabytes(size), megabytes(m.input.sizeLimitBytes)}));
    }
};

class StrippedElement : public Rule {
public:
    const char* id() const override { return "stripped-element"; }
    void check(const ParsedMessage& m, std::vector<Finding>& out) const override {
        for (const Element& e : m.elements) {
            if (e.tag == u"script"_s || e.tag == u"iframe"_s) {
                out.push_back(make(id(), Severity::Warning, "chkStripped",
                                   {u"<"_s + e.tag + u">"_s}, refOf(e)));
            } else if (e.tag == u"form"_s && e.value(u"action"_s)
                                                 .trimmed()
                                                 .startsWith(u"http://"_s, Qt::CaseInsensitive)) {
                out.push_back(make(id(), Severity::Warning, "chkInsecureForm",
                                   {shortened(e.value(u"action"_s))}, refOf(e)));
            }
        }
    }
};

std::vector<std::unique_ptr<Rule>> makeRules() {
    std::vector<std::unique_ptr<Rule>> r;
    r.push_back(std::make_unique<EmptySubject>());
    r.push_back(std::make_unique<MissingFile>());
    r.push_back(std::make_unique<UnknownToken>());
    r.push_back(std::make_unique<MessageTooLarge>());
    r.push_back(std::make_unique<NoUnsubscribe>());
    r.push_back(std::make_unique<MissingAlt>());
    r.push_back(std::make_unique<InsecureImage>());
    r.push_back(std::make_unique<EmptyLink>());
    r.push_back(std::make_unique<StrippedElement>());
    r.push_back(std::make_unique<GmailClip>());
    return r;
}

qint64 base64Size(qint64 bytes) {
    const qint64 encoded = (bytes + 2) / 3 * 4;
    return encoded + (encoded + 75) / 76 * 2; // CR LF after every 76 characters
}

} // namespace

bool Element::has(const QString& name) const {
    return std::any_of(attributes.cbegin(), attributes.cend(),
                       [&](const auto& a) { return a.first == name; });
}

QString Element::value(const QString& name) const {
    for (const auto& a : attributes) {
        if (a.first == name)
            return a.second;
    }
    return {};
}

QString severityName(Severity severity) {
    switch (severity) {
    case Severity::Error:
        return u"error"_s;
    case Severity::Warning:
        return u"warning"_s;
    case Severity::Hint:
        break;
    }
    return u"hint"_s;
}

std::span<const std::unique_ptr<Rule>> rules() {
    static const std::vector<std::unique_ptr<Rule>> kRules = makeRules();
    return kRules;
}

std::vector<Finding> runCheck(const CheckInput& input) {
    const ParsedMessage message = parse(input);
    std::vector<Finding> all;
    for (const auto& rule : rules())
        rule->check(message, all);
    std::stable_sort(all.begin(), all.end(),
                     [](const Finding& a, const Finding& b) { return a.severity < b.severity; });
    return all;
}

QString describe(const Finding& finding, const Texts& texts) {
    QString text = texts.get(finding.messageKey);
    if (text.isEmpty())
        text = Texts::builtIn(u"English"_s).get(finding.messageKey);
    for (const QString& a : finding.args)
        text = text.arg(a);
    return text;
}

bool hasErrors(const std::vector<Finding>& findings) {
    return std::any_of(findings.cbegin(), findings.cend(),
                       [](const Finding& f) { return f.severity == Severity::Error; });
}

qint64 estimatedMailSize(const CheckInput& input) {
    qint64 size = input.html.toUtf8().size();
    QSet<QString> counted;
    for (const QString& path : References::objectList(input.html, input.baseFolder)) {
        if (!counted.contains(path)) {
            counted.insert(path);
            const QFileInfo info(path);
            if (info.isFile())
                size += base64Size(info.size());
        }
    }
    for (const QString& a : input.attachments) {
        const QFileInfo info(a);
        if (info.isFile())
            size += base64Size(info.size());
    }
    return size;
}

} // namespace quillora::check
