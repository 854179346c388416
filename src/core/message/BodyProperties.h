#pragma once

#include <QList>
#include <QString>
#include <QtGlobal>

// The page-wide settings of the message body: margins, the five document colours and the
// background image.
namespace quillora::BodyProperties {

// The colours in dialog order: background, text, link, active link, visited link.
enum Colour { Background, Text, Link, ActiveLink, VisitedLink, ColourCount };

// The body attribute that holds each colour ("bgcolor", "text", "link", "alink", "vlink").
const char* colourAttribute(Colour c);

// The colour a document shows when its body names none (white page, black text, blue links,
// purple visited links), as "#RRGGBB".
const char* defaultColour(Colour c);

struct Values {
    QString leftMargin, topMargin, marginWidth, marginHeight; // as typed
    QString background;                                       // image path or address
    qint32 colours[ColourCount] = {};                         // RGB numbers, red lowest
};

// Values read from the body: its attributes by name as written (absent ones empty). A colour
// the body does not name takes the document's default.
struct BodyAttributes {
    QString leftmargin, topmargin, marginwidth, marginheight, background;
    QString colours[ColourCount];
};
Values valuesFromBody(const BodyAttributes& body);

// One step of the write-back.
struct Step {
    bool remove = false; // removeAttribute(name), else setAttribute(name, value)
    QString name;
    QString value;
    bool operator==(const Step&) const = default;
};

// The write-back in its order: "leftmargin" and "topmargin" removed, the four margins set
// (empty ones too), the five colours as "#RRGGBB", then "background".
QList<Step> writeSteps(const Values& v);

} // namespace quillora::BodyProperties
