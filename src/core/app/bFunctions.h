#pragma once

#include <QString>
#include <QVariant>
#include <optional>

// Small helpers used all over the program.
namespace quillora::bFunctions {

// True when a file (not a folder) of that path exists.
bool FileExist(const QString& path);

// Empty or null gives the fallback; text comes back trimmed (all blanks give the empty text);
// anything else is returned unchanged.
QVariant NVL(const QVariant& value, const QVariant& fallback);

// "#RRGGBB" (with or without "#", any case) to a colour value with red in the lowest byte.
// Text that is not hexadecimal gives 0.
qint32 HTMLtoRGB(const QString& colour);

// The reverse, "#RRGGBB" upper case; only the low 24 bits count.
QString RGBtoHTML(qint64 colour);

// The computer's name in lower case, or "PcNoName".
QString GetNamePC();
QString GetNamePC(const QString& hostName); // the rule itself, for a given host name

// Lenient numeric conversion: blanks, tabs and line feeds are ignored, the leading number
// is taken ("12abc" is 12), "&H" and "&O" prefixes are read as hexadecimal and octal,
// anything unparsable is 0.
double Val(QStringView text);

// Val converted the way a typed assignment would: empty when the number does not fit.
std::optional<float> ValSingle(QStringView text);
std::optional<qint16> ValInteger(QStringView text); // rounds half to even
std::optional<qint32> ValLong(QStringView text);    // rounds half to even

} // namespace quillora::bFunctions
