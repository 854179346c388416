#pragma once

#include <QList>
#include <QString>
#include <QStringView>

#include <optional>

// The whole-document text of the visual page, put together from the top-level nodes the page
// reports. The page's DOM keeps no trace of how the doctype was written (the parser lowers its
// name and drops its line breaks), so the text the document was loaded from is consulted.
namespace quillora::editor {

struct Doctype {
    QString name; // as the DOM gives it: ASCII lower case
    QString publicId;
    QString systemId;
    bool operator==(const Doctype&) const = default;
};

struct TopLevelNode {
    enum class Kind { Doctype, Comment, Element };
    Kind kind = Kind::Element;
    QString text; // the comment's data, or the element's outer HTML
    Doctype doctype;
};

// The doctype as written at the head of a document's text, with the blanks that follow it.
struct SourceDoctype {
    QString text;
    QString trailingSpace;
    Doctype doctype; // what a parser makes of text
};

// A doctype rebuilt from its DOM values: <!DOCTYPE name PUBLIC "p" "s">, SYSTEM "s" or bare.
QString doctypeText(const Doctype& d);

// The doctype that opens html (after a byte order mark, blanks and comments), if any.
std::optional<SourceDoctype> sourceDoctype(QStringView html);

// The top-level nodes joined by CR LF. A doctype equal to the source's is given back as it was
// written, followed by the blanks that followed it.
QString composeDocument(const QList<TopLevelNode>& nodes,
                        const std::optional<SourceDoctype>& source);

} // namespace quillora::editor
