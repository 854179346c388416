#include "core/app/Links.h"

#include "core/app/TextFile.h"

#include <QUrl>

namespace quillora {

namespace {

const QString kSitePrefix = QStringLiteral("site.");
const QString kSupport = QStringLiteral("support");
const QString kReadCounter = QStringLiteral("readcounter");

bool hasBlankOrControl(QStringView s) {
    for (QChar c : s) {
        if (c.isSpace() || c.category() == QChar::Other_Control ||
            c.category() == QChar::Other_Format)
            return true;
    }
    return false;
}

bool isWebAddress(const QString& value) {
    if (value.isEmpty() || hasBlankOrControl(value))
        return false;
    const QUrl url(value, QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    return url.isValid() && (scheme == u"http" || scheme == u"https") && !url.host().isEmpty();
}

// "mailto:" + the address opens a new message to it: nothing that could add headers or a
// second recipient is taken.
bool isMailAddress(const QString& value) {
    if (value.isEmpty() || hasBlankOrControl(value))
        return false;
    for (QChar c : value) {
        if (QStringView(u"<>()[]\\,;:\"?&%").contains(c))
            return false;
    }
    const qsizetype at = value.indexOf(u'@');
    return at > 0 && at == value.lastIndexOf(u'@') && at < value.size() - 1;
}

} // namespace

QString Links::siteFor(QStringView language) const {
    for (size_t i = 0; i < kSiteLanguages.size(); ++i) {
        if (language == QStringView(kSiteLanguages[i]))
            return sites[i];
    }
    return {};
}

QString Links::guidePage(QStringView language) const {
    // The guide's page name differs by language, not only its site.
    static constexpr std::array<const char16_t*, 3> kGuidePages = {
        u"GuideVideo.asp", u"video-tutorial.asp", u"video-guias.asp"};
    for (size_t i = 0; i < kSiteLanguages.size(); ++i) {
        if (language == QStringView(kSiteLanguages[i]))
            return sites[i].isEmpty() ? QString() : sites[i] + QString::fromUtf16(kGuidePages[i]);
    }
    return {};
}

Links Links::parse(const QStringList& lines) {
    Links links;
    for (const QString& line : lines) {
        const qsizetype colon = line.indexOf(u':');
        if (colon <= 0)
            continue;
        const QString key = line.left(colon).trimmed();
        const QString value = line.mid(colon + 1).trimmed();
        if (key == kSupport) {
            if (isMailAddress(value))
                links.support = value;
        } else if (key == kReadCounter) {
            if (isWebAddress(value))
                links.readCounter = value;
        } else if (key.startsWith(kSitePrefix)) {
            const QStringView language = QStringView(key).sliced(kSitePrefix.size());
            for (size_t i = 0; i < kSiteLanguages.size(); ++i) {
                if (language == QStringView(kSiteLanguages[i]) && isWebAddress(value))
                    links.sites[i] = value;
            }
        }
    }
    return links;
}

Links Links::read(const QString& path) {
    QStringList lines;
    if (!TextFile::readLines(path, lines, kMaxFileBytes).ok())
        return {};
    return parse(lines);
}

QStringList Links::lines() const {
    QStringList out;
    for (size_t i = 0; i < kSiteLanguages.size(); ++i) {
        if (!sites[i].isEmpty())
            out << kSitePrefix + QString::fromUtf16(kSiteLanguages[i]) + QStringLiteral(": ") +
                       sites[i];
    }
    if (!support.isEmpty())
        out << kSupport + QStringLiteral(": ") + support;
    if (!readCounter.isEmpty())
        out << kReadCounter + QStringLiteral(": ") + readCounter;
    return out;
}

} // namespace quillora
