#pragma once

#include <QIcon>
#include <QString>

// Icons of the current icon theme, as QIcon::fromTheme gives them, whose pictures are kept once
// drawn: in memory, and as files of their pixels in the user's cache folder. The themes' pictures
// are drawings (SVG) that take a tenth of a millisecond or more each to read and draw, and the
// bars show dozens of them at every start; read back from the cache they cost a small file read
// each.
//
// The cache has a folder per theme, named after the theme, the date of its index file and the
// Qt version, so an updated theme or Qt draws its pictures afresh. Pictures of another mode
// (disabled, active, selected) are made from the normal one by the style, as Qt makes them for
// drawn icons. A name the theme lacks gives a null icon, as QIcon::fromTheme does; whether the
// theme has a name is kept in the cache as well, as finding out reads the theme's whole index.
namespace quillora::gui {

QIcon themeIcon(const QString& name);

// Where the cache lives: by default the "icons" folder in the user's cache folder. An empty
// path keeps pictures in memory only. The themes' dates are read once per process, and again
// after this is set.
void setThemeIconCacheFolder(const QString& folder);
QString themeIconCacheFolder();

} // namespace quillora::gui
