#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <span>

// The element property grid's rules: which rows each tag shows, how a row's text becomes an
// attribute write, and the class names a style sheet offers.
namespace quillora::editor {

enum class RowKind {
    Text,   // free text
    Choice, // one of the allowed values, or free text
    Colour, // "red;green;blue" in the grid, "#rrggbb" on the element
    YesNo,  // a check box: the attribute is present or not
};

struct PropertyRow {
    const char* caption;
    const char* attribute; // as the element names it ("bgColor", "maxLength"...)
    RowKind kind = RowKind::Text;
    std::span<const char* const> choices = {};
    bool fileButtons = false; // "..." (choose a file) and "Edit" (open it in its program)
};

enum class TagGroup { None, Control, Text };

// The group of an upper-case tag name; None for a tag the grid does not show (H1, TR...).
TagGroup tagGroup(QStringView tag);

// The rows of a tag, in order; empty for a tag of no group.
std::span<const PropertyRow> propertyRows(QStringView tag);

// How the selection chooses its element: a selected control is itself the element; for a text
// selection the element holding the whole range, never one of its ancestors.
enum class SelectionType { None, Control, Text };
SelectionType selectionType(QStringView bridgeName); // "None", "Control", "Text"

// A colour row's text: "255;0;128" gives "#ff0080". Also accepted: "#rrggbb" as typed by
// hand. Empty text gives an empty colour (the attribute goes away); anything else is no colour.
std::optional<QString> colourRowToHtml(const QString& row);
// An attribute's colour as its row shows it: "#FF0080" or "ff0080" gives "255;0;128"; a
// named or otherwise unreadable colour is shown as written.
QString htmlToColourRow(const QString& html);

// One write of an edited row onto the element.
struct AttributeWrite {
    enum class Kind {
        Attribute,       // setAttribute(name, value)
        Remove,          // removeAttribute(name)
        TextProperty,    // element[name] = value
        NumberProperty,  // element[name] = Number(value) (0 for non-numbers)
        BooleanProperty, // element[name] = value != ""
    };
    Kind kind = Kind::Attribute;
    QString name;
    QString value;
};

// The write for a row of `tag` edited to `value` (for a colour row already "#rrggbb");
// id, class and title go through the element's own properties, INPUT and SELECT elements
// through their typed properties, the rest as attributes. An empty value removes an attribute.
AttributeWrite attributeWrite(QStringView tag, const QString& attribute, const QString& value);

// The class names defined by style sheets, from their rules' selector texts: a selector that
// begins with "." gives the text after the dot ("p.note" gives nothing). Each name once, in
// order of first appearance.
QStringList classNamesFromSelectors(const QStringList& selectors);

} // namespace quillora::editor
