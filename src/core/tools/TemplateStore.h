#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>
#include <vector>

// The template store: "Professional" then "Simple" inside the template folder. Each template is
// a thumbnail "<name>.jpg" in its category folder beside a folder "<name>" that holds the page
// "<name>.html" and the files the page refers to.
namespace quillora::TemplateStore {

// The category folders, in the order the chooser lists them.
const QStringList& categories();

struct Entry {
    QString category;
    QString name;      // the thumbnail's file name without the text from its last "."
    QString thumbnail; // full path
    QString page;      // full path of the page the thumbnail opens (may be missing)
};

// A thumbnail file: the text after the first "." is "jpg" in any letter case, so "Offer.JPG"
// is one and "Offer.png" and "Offer.v2.jpg" are not.
bool isThumbnail(QStringView fileName);

// The page a thumbnail opens: Template/Simple/Offer.jpg -> Template/Simple/Offer/Offer.html.
QString pagePath(const QString& thumbnailPath);
// The template's name: the file name without the text from its last ".".
QString templateName(const QString& thumbnailPath);

// The thumbnails of one category folder, in the order the file system lists them. A missing
// folder gives none.
std::vector<Entry> list(const QString& templateFolder, const QString& category);
// Every category in order.
std::vector<Entry> listAll(const QString& templateFolder);

} // namespace quillora::TemplateStore
