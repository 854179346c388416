#pragma once

#include <QMap>
#include <QString>

// What the check, the preview and the test send remember between runs: "Anteprima.dll" in the
// shared data folder, "key: value" lines.
namespace quillora {

struct SendSettings {
    static constexpr const char* kFileName = "Anteprima.dll";
    static constexpr int kDefaultSizeLimitMB = 10;

    int sizeLimitMB = kDefaultSizeLimitMB; // the check's limit for the whole message
    QString testAddress;                   // the last address a test went to
    qint64 testAccount = 0;                // the account it went through
    // The sample recipient: merge field name (as in ":::nom:::", without the colons) → value.
    QMap<QString, QString> sample;

    qint64 sizeLimitBytes() const { return qint64(sizeLimitMB) * 1024 * 1024; }

    // A missing or unreadable file gives the defaults; unknown keys and bad numbers are ignored.
    static SendSettings read(const QString& path);
    bool write(const QString& path) const;

    bool operator==(const SendSettings&) const = default;
};

// The body as the sample recipient would get it: each merge token with a value in `sample`
// replaced by that value, HTML-escaped (it may land in text or in an attribute). Tokens with
// no value stay as written, so the author sees what is not filled.
QString fillSample(const QString& html, const QMap<QString, QString>& sample);

} // namespace quillora
