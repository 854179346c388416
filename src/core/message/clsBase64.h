#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>
#include <functional>
#include <optional>

namespace quillora {

// Base64 with the RFC 4648 alphabet and "=" padding, broken into MIME lines of 76 characters
// joined by CR LF. The embedded files of a message file are stored this way, so the output must
// match the old files byte for byte, and the decoder must take back whatever older versions and
// hand edits produced: CR LF pairs and "=" are dropped wherever they are, every other character
// outside the alphabet (a blank, a lone CR or LF, a stray byte) counts as the value 0, and a
// last group of a single character is ignored. Nothing is ever reported as an error.
//
// The raw entry points (encode/decode on pointers) are what the message file writer and reader
// use on tens of megabytes; they pick an AVX2 implementation at run time when the processor has
// it, with output identical to the portable one.
class clsBase64 {
public:
    // Raised by the encoding member functions (not the raw encode) with the value 57, the input
    // bytes of one line, once for every line break written. The calls are made between chunks
    // of lines, not inside the encoding loop, so a listener sees the same number of calls and
    // the same total as one call per line.
    using Progress = std::function<void(float)>;

    // What ConvertiInFile may find and decline, for a reader that guessed where the text ends
    // and must be able to take everything back when the guess was wrong.
    struct WriteChecks {
        bool newFileOnly = false; // an existing file is left untouched
        bool noBracket = false;   // a "[" in the text stops the write
    };
    enum class Declined { No, FileExists, Bracket };

    struct WriteResult {
        QString error;
        qint64 bytes = 0; // decoded bytes written
        // Set, with no error, when a check declined. After Bracket the file exists (made by
        // this call when newFileOnly) and holds some of the bytes.
        Declined declined = Declined::No;
        bool ok() const { return error.isEmpty() && declined == Declined::No; }
    };

    static constexpr qsizetype kLineChars = 76;
    static constexpr qsizetype kLineBytes = 57;
    static constexpr float kProgressStep = 57.0f;

    clsBase64() = default;
    explicit clsBase64(Progress progress) : m_progress(std::move(progress)) {}
    void setProgress(Progress progress) { m_progress = std::move(progress); }

    QString EncodeByteArray(QByteArrayView bytes) const;
    // The text as Windows-1252 bytes (anything else becomes "?"), then encoded.
    QString EncodeString(QStringView text) const;
    // The whole file's bytes, encoded; nullopt and the reason when it cannot be read.
    std::optional<QString> EncodeFile(const QString& path, QString* error = nullptr) const;
    std::optional<QString> ConvertiInBase64(const QString& path, QString* error = nullptr) const;

    static QByteArray DecodeToByteArray(QStringView text);
    // The decoded bytes read as Windows-1252 text.
    static QString DecodeToString(QStringView text);
    // Writes the decoded bytes over the file from its first byte, creating it when missing.
    // A longer existing file keeps its bytes past the new length: two embedded files with the
    // same name restore onto one file this way, and old messages rely on it. A symbolic link
    // or anything but a regular file at the path is refused rather than written through.
    static WriteResult ConvertiInFile(QStringView text, const QString& path);
    static WriteResult ConvertiInFile(QStringView text, const QString& path, WriteChecks checks);

    // Characters the encoder writes for n bytes, line breaks included.
    static qsizetype encodedLength(qsizetype n);
    // Write exactly encodedLength(n) characters to out, nothing past them.
    static void encode(const uchar* in, qsizetype n, char* out);
    static void encode(const uchar* in, qsizetype n, char16_t* out);

    // Room the pointer decoders need for n input characters: a little more than the decoded
    // length, because the fast paths store whole words and vectors past the last byte.
    static qsizetype decodeCapacity(qsizetype n);
    // Decode n characters into out (decodeCapacity(n) bytes) and return the decoded length.
    // UTF-16 units above 255 count as "?" (a surrogate pair as one), like a code-page conversion.
    static qsizetype decode(const char* in, qsizetype n, uchar* out);
    static qsizetype decode(const char16_t* in, qsizetype n, uchar* out);
    static QByteArray decode(QByteArrayView ascii);
    static QByteArray decode(QStringView utf16);

    // Whether the processor and system can run the AVX2 paths.
    static bool avx2Supported();
    // Makes every call in the process use the portable code, so tests and benchmarks can compare
    // the two; not meant to be switched while other threads are encoding.
    static void setForcePortable(bool force);
    static bool forcePortable();

private:
    Progress m_progress;
};

} // namespace quillora
