#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

// Mail programs show PNG, JPEG and GIF; documents and old mails also carry TIFF, BMP and others.
namespace quillora::PictureFormat {

// True for PNG, JPEG and GIF (judged by the bytes, not by a name).
bool showableInMail(QByteArrayView bytes);

// True when the bytes are a picture in a format this program can read.
bool readable(QByteArrayView bytes);

// The picture as PNG; nothing when it cannot be read.
std::optional<QByteArray> toPng(QByteArrayView bytes);

// "name.tif" -> "name.png".
QString withPngExtension(const QString& fileName);

} // namespace quillora::PictureFormat
