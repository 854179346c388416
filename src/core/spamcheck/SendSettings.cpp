#include "core/spamcheck/SendSettings.h"

#include "core/app/TextFile.h"
#include "core/editor/CommandTable.h"

#include <QHash>
#include <QRegularExpression>
#include <QStringList>

namespace quillora {

namespace {

using namespace Qt::StringLiterals;

constexpr qint64 kMaxFileBytes = 256 * 1024;
constexpr int kMaxSizeLimitMB = 1024;

// The field name of a token: ":::nom:::" → "nom".
QString fieldName(const char* token) {
    const QString t = QString::fromLatin1(token);
    return t.mid(3, t.size() - 6);
}

} // namespace

SendSettings SendSettings::read(const QString& path) {
    SendSettings s;
    QStringList lines;
    if (!TextFile::readLines(path, lines, kMaxFileBytes).ok())
        return s;
    for (const QString& line : lines) {
        const qsizetype colon = line.indexOf(u':');
        if (colon <= 0)
            continue;
        const QString key = line.first(colon).trimmed();
        const QString value = line.mid(colon + 1).trimmed();
        bool ok = false;
        if (key == u"size-limit-mb"_s) {
            const int mb = value.toInt(&ok);
            if (ok && mb > 0 && mb <= kMaxSizeLimitMB)
                s.sizeLimitMB = mb;
        } else if (key == u"test-address"_s) {
            s.testAddress = value;
        } else if (key == u"test-account"_s) {
            const qint64 id = value.toLongLong(&ok);
            if (ok)
                s.testAccount = id;
        } else if (key.startsWith(u"sample."_s) && !value.isEmpty()) {
            s.sample.insert(key.mid(7), value);
        }
    }
    return s;
}

bool SendSettings::write(const QString& path) const {
    QStringList lines{u"size-limit-mb: "_s + QString::number(sizeLimitMB),
                      u"test-address: "_s + testAddress,
                      u"test-account: "_s + QString::number(testAccount)};
    for (auto it = sample.cbegin(); it != sample.cend(); ++it) {
        // One line per value: line breaks in a value would start a new key.
        QString value = it.value();
        value.replace(u'\r', u' ').replace(u'\n', u' ');
        if (!value.trimmed().isEmpty())
            lines << u"sample."_s + it.key() + u": "_s + value.trimmed();
    }
    return TextFile::writeLines(path, lines);
}

QString fillSample(const QString& html, const QMap<QString, QString>& sample) {
    QHash<QString, QString> values; // token → escaped value
    for (const auto& f : editor::mergeFields()) {
        const QString value = sample.value(fieldName(f.token));
        if (!value.isEmpty())
            values.insert(QString::fromLatin1(f.token), value.toHtmlEscaped());
    }
    // One pass, so a value that happens to hold a token is not filled in turn.
    static const QRegularExpression token(u":::[a-z0-9]{1,10}:::"_s);
    QString out;
    out.reserve(html.size());
    qsizetype done = 0;
    for (auto it = token.globalMatch(html); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        const auto found = values.constFind(m.captured(0));
        if (found == values.cend())
            continue;
        out += QStringView(html).sliced(done, m.capturedStart() - done);
        out += *found;
        done = m.capturedEnd();
    }
    out += QStringView(html).sliced(done);
    return out;
}

} // namespace quillora
