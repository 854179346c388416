#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>
#include <optional>
#include <utility>
#include <vector>

// The local files a message body refers to: found with an HTML parser, normalised to paths,
// and pointed elsewhere by editing attribute values in place, so that everything the user
// wrote outside those values stays exactly as written.
namespace quillora::References {

// Windows: the historic rules (lower case, "\" separators, drive letters).
// Posix: the same rules for a case-sensitive file system with "/" separators; a drive path
// from a message made on Windows still counts as absolute.
enum class PathStyle { Windows, Posix };

constexpr PathStyle native() {
#ifdef Q_OS_WIN
    return PathStyle::Windows;
#else
    return PathStyle::Posix;
#endif
}

enum class Kind {
    None,   // empty, blank, or not a file at all (data:, cid:, mailto:, //host, other schemes)
    Remote, // http:// or https://, left alone
    Local,  // a file on this computer (or on the one the message was made on)
};

struct Resolved {
    Kind kind = Kind::None;
    QString path; // Local: the full path; Remote: the cleaned reference; None: empty
    bool isLocal() const { return kind == Kind::Local; }
};

// Turns an attribute value into a full path. Relative references are appended to baseFolder
// as they are (the folder carries its own trailing separator). In the Posix style, when the
// path does not exist but its percent-decoded form, or the form without "?query" / "#fragment",
// does, that form is taken; nothing else touches the file system.
Resolved normalise(QStringView reference, QStringView baseFolder, PathStyle style = native());

// The part after the last "\" or "/".
QString fileNameOf(QStringView path);

// The file name of a stored path, refused when it could name anything but a file in the folder
// it is joined to: empty, ".", "..", or holding NUL or another control character.
std::optional<QString> safeFileName(QStringView storedPath);

// Where a reference is written: an attribute value that is the reference itself, or the text of
// one url(...) inside a style attribute or a <style> element.
enum class Attribute { Src, Background, CssUrl };
enum class Syntax { Html, Css };

struct Reference {
    QString tag; // as the DOM names it: "img", "td", "v:fill"; "style" for a <style> block
    Attribute attribute = Attribute::Src;
    QString value; // character references decoded
    // The value's place in the walked text, in UTF-16 code units, quotes excluded. -1 when the
    // attribute is not in the text (the parser made it), so it cannot be rewritten.
    qsizetype start = -1;
    qsizetype length = 0;
    char16_t quote = 0; // '"', '\'' or 0 for an unquoted value (for a CssUrl, the CSS quote)

    bool inSource() const { return start >= 0; }
    Syntax syntax() const { return attribute == Attribute::CssUrl ? Syntax::Css : Syntax::Html; }
};

// A new value for the range of a Reference.
struct Edit {
    qsizetype start = 0;
    qsizetype length = 0;
    char16_t quote = 0;
    QString value;
    Syntax syntax = Syntax::Html;

    static Edit of(const Reference& reference, QString value) {
        return {reference.start, reference.length, reference.quote, std::move(value),
                reference.syntax()};
    }
};

// Parses a whole document once and lists, in document (tree) order, for every element the
// attribute that names its resource: "src" on the elements that load one through it (img,
// input, script, iframe, frame, embed, bgsound, audio, video, source, and the VML v:image,
// v:fill and v:imagedata), "background" on every other element; then each url(...) of its
// style attribute; and each url(...) of a <style> element. The content of a conditional comment
// ("<!--[if mso]>...<![endif]-->") is parsed as HTML and walked the same way. Empty and missing
// values are left out, and so are CSS urls naming a fragment ("#id").
class ReferenceWalker {
public:
    explicit ReferenceWalker(QString html);

    const QString& html() const { return m_html; }
    const std::vector<Reference>& references() const { return m_references; }

    // The walked text with the edited values replaced and every other code unit unchanged.
    QString rewrite(const std::vector<Edit>& edits) const { return rewrite(m_html, edits); }

    // A quoted value keeps its quotes ("&", ">" and the quote character become character
    // references); an unquoted one is written in double quotes. A CSS url keeps its quotes or
    // their absence, and its value is written in CSS escapes where needed (CssUrls::escaped). Edits
    // outside the text are ignored, and so is an edit overlapping an earlier one (the parser can
    // clone an element, and with it the range of its attribute).
    static QString rewrite(QStringView html, std::vector<Edit> edits);

private:
    QString m_html;
    std::vector<Reference> m_references;
};

// The objects a saved message embeds: each local reference normalised, in document order,
// first occurrence kept (compared exactly, case included).
QStringList objectList(const QString& html, const QString& baseFolder, PathStyle style = native());

struct LoadResult {
    QString html;
    bool changed = false; // some value in the text is different
    QStringList copied;   // files written into the restore folder, each once
};

// After opening a message: copies each local file into restoreFolder (same file name, the last
// copy of a name wins; a copy that fails is ignored because the file may already be there from
// the message) and points its reference there. A name refused by safeFileName is neither copied
// nor rewritten. New values are plain paths: the page is loaded from a file: URL, so an absolute
// path resolves against it as is.
LoadResult redirectForLoad(const QString& html, const QString& baseFolder,
                           const QString& restoreFolder, PathStyle style = native());

// Points each local reference at restoreFolder + its file name, copying nothing.
QString redirectForPreview(const QString& html, const QString& restoreFolder,
                           PathStyle style = native());

} // namespace quillora::References
