#pragma once

#include <QString>
#include <QStringView>
#include <string_view>
#include <vector>

// The url(...) references of CSS text: a <style> block or the value of a style attribute.
// Only what a reference walk needs: where each url's text is, and what it names. Values are
// read as written, so a "\" is the path separator of a page made on Windows, not an escape;
// the one exception is the escape form this program writes itself (see escaped()).
namespace quillora::CssUrls {

enum class Context {
    StyleSheet, // raw CSS: a <style> element's text
    Attribute,  // the source text of an HTML attribute value: "&quot;" can be a CSS quote
};

struct Url {
    size_t from = 0; // the url's text, quotes excluded, in bytes of the scanned text
    size_t to = 0;
    char quote = 0; // '"', '\'' or 0 for an unquoted url
};

// Every url(...) in the text, in order, outside comments and strings. A url without its
// closing parenthesis, an empty one and a broken one are left out.
std::vector<Url> scan(std::string_view css, Context context);

// What a url's text names: character references decoded in an attribute, and the escapes
// escaped() writes turned back into their characters.
QString valueOf(std::string_view text, Context context);

// The text that names value inside a url(...), quoted or not, in a style attribute with any
// quote or in a <style> block: every blank, quote, parenthesis, "&", "<" and ">" is written as
// a six-digit CSS escape, which needs no terminator.
QString escaped(QStringView value);

} // namespace quillora::CssUrls
