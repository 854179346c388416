#include "core/app/bFunctions.h"

#include <QFileInfo>
#include <QSysInfo>
#include <cmath>
#include <limits>

namespace quillora::bFunctions {

bool FileExist(const QString& path) {
    if (path.isEmpty())
        return false;
    const QFileInfo info(path);
    return info.exists() && !info.isDir();
}

QVariant NVL(const QVariant& value, const QVariant& fallback) {
    if (!value.isValid() || value.isNull())
        return fallback;
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString();
        if (text.isEmpty())
            return fallback;
        return text.trimmed();
    }
    return value;
}

qint32 HTMLtoRGB(const QString& colour) {
    QString hex = colour;
    hex.remove(u'#');
    hex = hex.toUpper();
    if (hex.isEmpty())
        return 0;
    // Red is the first two characters, green the third and fourth, blue the last two;
    // short texts overlap exactly as the substring rule makes them.
    const QString red = hex.left(2);
    const QString green = hex.mid(2, 2);
    const QString blue = hex.right(2);
    const QString bgr = blue + green + red;
    bool ok = false;
    const qulonglong v = bgr.toULongLong(&ok, 16);
    if (!ok || v > 0xFFFFFFFFULL)
        return 0;
    return static_cast<qint32>(static_cast<quint32>(v));
}

QString RGBtoHTML(qint64 colour) {
    const quint32 v = static_cast<quint32>(colour) & 0xFFFFFF;
    const QString hex = QStringLiteral("%1").arg(v, 6, 16, QLatin1Char('0')).toUpper();
    // hex is BBGGRR
    return u'#' + hex.mid(4, 2) + hex.mid(2, 2) + hex.left(2);
}

QString GetNamePC(const QString& hostName) {
    QString name = hostName;
    name.remove(u'#');
    name = name.toLower().trimmed();
    return name.isEmpty() ? QStringLiteral("PcNoName") : name;
}

QString GetNamePC() {
    return GetNamePC(QSysInfo::machineHostName());
}

// Val's parser; empty when the number overflows a double (the old conversion raised an
// overflow there, which made the assignment be skipped).
static std::optional<double> ValChecked(QStringView text) {
    std::string s;
    s.reserve(std::min<qsizetype>(text.size(), 512));
    for (QChar c : text) {
        if (c == u' ' || c == u'\t' || c == u'\n')
            continue;
        if (c.unicode() > 0x7F)
            break;
        s.push_back(char(c.unicode()));
        if (s.size() > 1024) // longer than any double's text: keeps a huge line cheap
            return std::nullopt;
    }
    if (s.size() >= 2 && s[0] == '&' &&
        (s[1] == 'H' || s[1] == 'h' || s[1] == 'O' || s[1] == 'o')) {
        const int base = (s[1] == 'H' || s[1] == 'h') ? 16 : 8;
        quint64 v = 0;
        size_t i = 2;
        for (; i < s.size() && i < 2 + 16; ++i) {
            const int d = QChar::fromLatin1(s[i]).isDigit() ? s[i] - '0'
                          : (base == 16 && std::isxdigit(static_cast<unsigned char>(s[i])))
                              ? std::tolower(static_cast<unsigned char>(s[i])) - 'a' + 10
                              : -1;
            if (d < 0 || d >= base)
                break;
            v = v * base + quint64(d);
        }
        // Up to four hex digits read as a 16-bit value, more as 32-bit, both signed.
        if (i - 2 <= 4 && base == 16)
            return double(qint16(quint16(v)));
        return double(qint32(quint32(v)));
    }
    // Sign, digits, one decimal point, an exponent introduced by E or D.
    size_t i = 0;
    std::string num;
    if (i < s.size() && (s[i] == '+' || s[i] == '-'))
        num.push_back(s[i++]);
    bool digits = false;
    while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) {
        num.push_back(s[i++]);
        digits = true;
    }
    if (i < s.size() && s[i] == '.') {
        num.push_back(s[i++]);
        while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) {
            num.push_back(s[i++]);
            digits = true;
        }
    }
    if (!digits)
        return 0;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E' || s[i] == 'd' || s[i] == 'D')) {
        std::string exp = "e";
        size_t j = i + 1;
        if (j < s.size() && (s[j] == '+' || s[j] == '-'))
            exp.push_back(s[j++]);
        bool expDigits = false;
        while (j < s.size() && std::isdigit(static_cast<unsigned char>(s[j]))) {
            exp.push_back(s[j++]);
            expDigits = true;
        }
        if (expDigits)
            num += exp;
    }
    const double v = std::strtod(num.c_str(), nullptr);
    if (!std::isfinite(v))
        return std::nullopt;
    return v;
}

double Val(QStringView text) {
    return ValChecked(text).value_or(0.0);
}

std::optional<float> ValSingle(QStringView text) {
    const auto checked = ValChecked(text);
    if (!checked)
        return std::nullopt;
    const double v = *checked;
    if (std::fabs(v) > double(std::numeric_limits<float>::max()))
        return std::nullopt;
    return float(v);
}

template <typename Int> static std::optional<Int> roundToInt(double v) {
    const double r = std::nearbyint(v); // the default rounding mode is half to even
    if (r < double(std::numeric_limits<Int>::min()) || r > double(std::numeric_limits<Int>::max()))
        return std::nullopt;
    return Int(r);
}

std::optional<qint16> ValInteger(QStringView text) {
    return roundToInt<qint16>(Val(text));
}
std::optional<qint32> ValLong(QStringView text) {
    return roundToInt<qint32>(Val(text));
}

} // namespace quillora::bFunctions
