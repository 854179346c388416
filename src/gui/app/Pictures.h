#pragma once

#include <QIcon>
#include <QImage>
#include <QString>
#include <QStyle>

// Pictures that every start shows, read without Qt's picture readers: to find the decoder for a
// file, even a PNG, Qt first loads every picture plugin it has, which on a desktop with many of
// them costs a start far more than the pictures themselves.
namespace quillora::gui {

// A PNG file (or resource) decoded by FreeImage; null when it cannot be read or decoded.
QImage decodePng(const QString& file);

// Qt's own pictures for the standard pixmaps a window shows at once (the toolbar's and the menu
// bar's overflow chevron, a line edit's clear button), as a program that ignores the desktop's
// settings gets them, decoded as above. A null icon for any other pixmap, and for right-to-left
// layouts: Qt's own then applies.
QIcon qtGlyphIcon(QStyle::StandardPixmap sp, Qt::LayoutDirection direction);

} // namespace quillora::gui
