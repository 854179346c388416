#include "core/message/Charset.h"

#include <QStringDecoder>

#include <vmime/charset.hpp>
#include <vmime/charsetConverterOptions.hpp>
#include <vmime/exception.hpp>

namespace quillora::Charset {

std::optional<QString> decode(QByteArrayView bytes, const QByteArray& charset) {
    const QByteArray name = charset.trimmed().toLower();
    if (name.isEmpty())
        return std::nullopt;
    if (name == "utf-8" || name == "utf8" || name == "us-ascii" || name == "ascii") {
        QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        QString text = utf8(bytes);
        if (utf8.hasError())
            return std::nullopt;
        return text;
    }
    vmime::charsetConverterOptions options;
    options.silentlyReplaceInvalidSequences = false;
    std::string out;
    try {
        vmime::charset::convert(std::string(bytes.data(), size_t(bytes.size())), out,
                                vmime::charset(name.toStdString()),
                                vmime::charset(vmime::charsets::UTF_8), options);
    } catch (const vmime::exception&) {
        return std::nullopt;
    }
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(QByteArrayView(out.data(), qsizetype(out.size())));
    if (utf8.hasError())
        return std::nullopt;
    return text;
}

QString decodeBestEffort(QByteArrayView bytes, const QByteArray& declared) {
    // Mails re-encoded to UTF-8 on their way often keep their old Latin-1 label; UTF-8 with
    // letters beyond ASCII is almost never valid by chance, so it wins over such a label.
    const QByteArray label = declared.trimmed().toLower();
    const bool latinLabel = label.isEmpty() || label == "iso-8859-1" || label == "latin1" ||
                            label == "windows-1252" || label == "us-ascii";
    if (latinLabel && QByteArray::fromRawData(bytes.data(), bytes.size()).isValidUtf8()) {
        bool ascii = true;
        for (char c : bytes)
            ascii = ascii && uchar(c) < 0x80;
        if (!ascii)
            return *decode(bytes, "utf-8");
    }
    if (std::optional<QString> text = decode(bytes, declared))
        return *text;
    if (std::optional<QString> text = decode(bytes, "utf-8"))
        return *text;
    if (std::optional<QString> text = decode(bytes, "windows-1252"))
        return *text;
    // Five bytes are undefined in Windows-1252; Latin-1 maps them to the C1 controls.
    return QString::fromLatin1(bytes.data(), bytes.size());
}

} // namespace quillora::Charset
