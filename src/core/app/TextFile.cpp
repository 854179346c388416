#include "core/app/TextFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>

namespace quillora::TextFile {

namespace {

// Windows-1252 differs from Latin-1 in 0x80..0x9F; the five unassigned bytes map to
// the C1 control of the same value, as the system code page's converter does.
constexpr char16_t kCp1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

QString decodeWindows1252(QByteArrayView bytes) {
    QString out(bytes.size(), Qt::Uninitialized);
    char16_t* dst = reinterpret_cast<char16_t*>(out.data());
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        dst[i] = (b >= 0x80 && b < 0xA0) ? kCp1252High[b - 0x80] : char16_t(b);
    }
    return out;
}

QString decodeUtf16(QByteArrayView bytes, bool bigEndian) {
    const qsizetype units = bytes.size() / 2;
    QString out(units, Qt::Uninitialized);
    if (!bigEndian) {
        memcpy(out.data(), bytes.data(), size_t(units) * 2);
    } else {
        const auto* src = reinterpret_cast<const unsigned char*>(bytes.data());
        char16_t* dst = reinterpret_cast<char16_t*>(out.data());
        for (qsizetype i = 0; i < units; ++i)
            dst[i] = char16_t((src[2 * i] << 8) | src[2 * i + 1]);
    }
    return out;
}

// Pure ASCII is both valid UTF-8 and valid Windows-1252; check it with wide reads.
bool isAscii(QByteArrayView bytes) {
    const char* p = bytes.data();
    qsizetype n = bytes.size();
    quint64 acc = 0;
    while (n >= 8) {
        quint64 w;
        memcpy(&w, p, 8);
        acc |= w;
        p += 8;
        n -= 8;
    }
    while (n-- > 0)
        acc |= static_cast<unsigned char>(*p++);
    return (acc & 0x8080808080808080ULL) == 0;
}

} // namespace

Decoded decode(QByteArrayView bytes) {
    Decoded d;
    const auto* u = reinterpret_cast<const unsigned char*>(bytes.data());
    const qsizetype n = bytes.size();
    if (n >= 2 && ((u[0] == 0xFF && u[1] == 0xFE) || (u[0] == 0xFE && u[1] == 0xFF))) {
        const bool be = u[0] == 0xFE;
        d.encoding = be ? Encoding::Utf16BE : Encoding::Utf16LE;
        if ((n - 2) % 2 != 0) {
            d.error = ReadError::OddUtf16Bytes;
            return d;
        }
        d.text = decodeUtf16(bytes.sliced(2), be);
        return d;
    }
    QByteArrayView body = bytes;
    bool bom8 = n >= 3 && u[0] == 0xEF && u[1] == 0xBB && u[2] == 0xBF;
    if (bom8)
        body = bytes.sliced(3);
    if (isAscii(body)) {
        d.encoding = bom8 ? Encoding::Utf8 : Encoding::Windows1252;
        d.text = QString::fromLatin1(body);
        return d;
    }
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(body);
    if (bom8 || !utf8.hasError()) {
        d.encoding = Encoding::Utf8;
        d.text = std::move(text);
        return d;
    }
    d.encoding = Encoding::Windows1252;
    d.text = decodeWindows1252(body);
    return d;
}

QByteArray encodeUtf16LE(QStringView text, bool withBom) {
    const qsizetype head = withBom ? 2 : 0;
    QByteArray out(head + text.size() * 2, Qt::Uninitialized);
    if (withBom) {
        out[0] = char(0xFF);
        out[1] = char(0xFE);
    }
    static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "UTF-16LE output assumes a little-endian host");
    memcpy(out.data() + head, text.utf16(), size_t(text.size()) * 2);
    return out;
}

Decoded read(const QString& path, qint64 maxBytes) {
    Decoded d;
    QFileInfo info(path);
    if (!info.exists() || info.isDir()) {
        d.error = ReadError::Missing;
        return d;
    }
    if (maxBytes >= 0 && info.size() > maxBytes) {
        d.error = ReadError::TooLarge;
        return d;
    }
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        d.error = ReadError::Unreadable;
        return d;
    }
    const QByteArray bytes = f.readAll();
    if (f.error() != QFileDevice::NoError) {
        d.error = ReadError::Unreadable;
        return d;
    }
    return decode(bytes);
}

QStringList splitLines(QStringView text) {
    QStringList lines;
    qsizetype start = 0;
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = text[i];
        if (c == u'\r' || c == u'\n') {
            lines.append(text.sliced(start, i - start).toString());
            if (c == u'\r' && i + 1 < n && text[i + 1] == u'\n')
                ++i;
            start = i + 1;
        }
    }
    if (start < n)
        lines.append(text.sliced(start).toString());
    return lines;
}

Decoded readLines(const QString& path, QStringList& lines, qint64 maxBytes) {
    Decoded d = read(path, maxBytes);
    lines = d.ok() ? splitLines(d.text) : QStringList();
    d.text.clear();
    return d;
}

QString joinLines(const QStringList& lines) {
    qsizetype total = 0;
    for (const QString& l : lines)
        total += l.size() + 2;
    QString out;
    out.reserve(total);
    for (const QString& l : lines) {
        out += l;
        out += u"\r\n";
    }
    return out;
}

bool writeText(const QString& path, QStringView text) {
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly))
        return false;
    const QByteArray bytes = encodeUtf16LE(text);
    if (f.write(bytes) != bytes.size()) {
        f.cancelWriting();
        return false;
    }
    return f.commit();
}

bool writeLines(const QString& path, const QStringList& lines) {
    return writeText(path, joinLines(lines));
}

bool appendLines(const QString& path, const QStringList& lines) {
    QFile f(path);
    const bool fresh = !f.exists() || QFileInfo(path).size() == 0;
    if (!f.open(QIODevice::WriteOnly | QIODevice::Append))
        return false;
    const QByteArray bytes = encodeUtf16LE(joinLines(lines), fresh);
    return f.write(bytes) == bytes.size();
}

QString describe(ReadError error) {
    switch (error) {
    case ReadError::None:
        return QString();
    case ReadError::Missing:
        return QStringLiteral("File not found");
    case ReadError::Unreadable:
        return QStringLiteral("Permission denied or read error");
    case ReadError::TooLarge:
        return QStringLiteral("File too large");
    case ReadError::OddUtf16Bytes:
        return QStringLiteral("UTF-16 text with an odd number of bytes (file cut short)");
    }
    return QString();
}

} // namespace quillora::TextFile
