#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>

// Every text file the program reads or writes goes through here.
// Written: UTF-16LE with a byte-order mark, CR LF after every line.
// Read: UTF-16LE/BE with a byte-order mark, UTF-8 with or without one, else Windows-1252.
namespace quillora::TextFile {

enum class Encoding { Utf16LE, Utf16BE, Utf8, Windows1252 };

enum class ReadError {
    None,
    Missing,       // no such file, or a folder
    Unreadable,    // exists but cannot be opened or read
    TooLarge,      // larger than the caller's limit
    OddUtf16Bytes, // a UTF-16 byte-order mark followed by an odd number of bytes
};

struct Decoded {
    QString text;
    Encoding encoding = Encoding::Windows1252;
    ReadError error = ReadError::None;
    bool ok() const { return error == ReadError::None; }
};

// Decodes raw bytes by the rules above. An odd UTF-16 byte count is reported,
// never silently repaired: a half code unit means the file was cut short.
Decoded decode(QByteArrayView bytes);

// Encodes text as UTF-16LE, with the byte-order mark when asked.
QByteArray encodeUtf16LE(QStringView text, bool withBom = true);

// Reads and decodes a whole file. maxBytes guards small settings readers against huge files.
Decoded read(const QString& path, qint64 maxBytes = -1);

// Splits at CR LF, LF or CR. A final line ending does not start another (empty) line.
QStringList splitLines(QStringView text);

// Reads a file's lines (empty list and the error when it cannot be read).
Decoded readLines(const QString& path, QStringList& lines, qint64 maxBytes = -1);

// Joins lines with CR LF after every one, the last included.
QString joinLines(const QStringList& lines);

// Creates or truncates the file and writes the lines; false when it cannot be written.
// The write goes to a temporary file in the same folder renamed over the target,
// so an interrupted write never leaves a half file behind.
bool writeLines(const QString& path, const QStringList& lines);
bool writeText(const QString& path, QStringView text);

// Appends lines, creating the file (with its byte-order mark) when missing.
bool appendLines(const QString& path, const QStringList& lines);

// Human-readable reason for a read failure, for messages and step lines.
QString describe(ReadError error);

} // namespace quillora::TextFile
