#pragma once

#include <QString>
#include <QStringList>
#include <memory>
#include <span>
#include <vector>

namespace quillora {
class Texts;
}

// The check a message gets before it is sent: what readers' mail programs would show wrongly,
// strip, clip or refuse. Each rule is a small class with a stable identifier; the findings
// name the element they point at so the editor can select it.
namespace quillora::check {

enum class Severity { Error, Warning, Hint };

// "error", "warning", "hint".
QString severityName(Severity severity);

// An element of the body: the index-th element with this tag name in document order, which is
// what the page's getElementsByTagName(tag)[index] gives for the same HTML.
struct ElementRef {
    QString tag; // lower case; empty when the finding is about the whole message
    int index = -1;
    bool isSet() const { return !tag.isEmpty() && index >= 0; }
    bool operator==(const ElementRef&) const = default;
};

struct Finding {
    QString rule; // "missing-alt"...
    Severity severity = Severity::Warning;
    QString messageKey; // the text in the user's language, with %1, %2 for args
    QStringList args;
    ElementRef element;
};

// What is checked.
struct CheckInput {
    QString subject;
    QString html;
    // Relative references resolve against this folder (with its trailing separator).
    QString baseFolder;
    QStringList attachments; // full paths
    qint64 sizeLimitBytes = 10 * 1024 * 1024;
};

// One element of the parsed body, as the rules see it.
struct Element {
    QString tag;
    int index = 0;                                 // among the elements with the same tag
    QList<std::pair<QString, QString>> attributes; // names lower case, values decoded
    QString text;                                  // the text inside, blanks collapsed
    bool has(const QString& name) const;
    QString value(const QString& name) const;
};

// A merge token written in the body (":::name:::") and the element around it.
struct TokenUse {
    QString token;
    ElementRef element;
};

// The body parsed once for every rule.
struct ParsedMessage {
    const CheckInput& input;
    std::vector<Element> elements; // document order
    std::vector<TokenUse> tokens;
    qint64 htmlBytes = 0;
};

class Rule {
public:
    virtual ~Rule() = default;
    virtual const char* id() const = 0;
    virtual void check(const ParsedMessage& message, std::vector<Finding>& out) const = 0;
};

// Every rule, in the order their findings are listed.
std::span<const std::unique_ptr<Rule>> rules();

// The whole check: every rule's findings, errors first, then warnings, then hints, each group
// in rule order and document order.
std::vector<Finding> runCheck(const CheckInput& input);

// The finding's message in the language of the texts.
QString describe(const Finding& finding, const Texts& texts);

bool hasErrors(const std::vector<Finding>& findings);

// Gmail shows "[Message clipped]" and hides the rest past this many bytes of HTML.
inline constexpr qint64 kGmailClipBytes = 102 * 1024;

// The size the message will have on the wire: the HTML and every distinct local file of the
// body and every attachment, the files in Base64 with line breaks.
qint64 estimatedMailSize(const CheckInput& input);

} // namespace quillora::check
