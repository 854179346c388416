#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>
#include <array>

// The web-site, support and read-counter addresses: "key: value" lines in "Links.dll" in the
// program folder, so that each team ships its own values.
namespace quillora {

struct Links {
    // The languages that have a site of their own, in the order of the file's keys.
    static constexpr std::array<const char16_t*, 3> kSiteLanguages = {u"Italiano", u"English",
                                                                      u"Español"};
    static constexpr qint64 kMaxFileBytes = 64 * 1024;

    std::array<QString, 3> sites; // by kSiteLanguages
    QString support;              // the support mail address
    QString readCounter;          // the read-counter host address

    // The site for a language name, compared exactly; empty for any other language.
    QString siteFor(QStringView language) const;
    // The video guide of a language on that language's site; empty when the language has no
    // guide page or the file gives no site for it.
    QString guidePage(QStringView language) const;

    // Later lines win; unknown keys, lines without ":", web addresses that are not http(s) and
    // a support address that is not a plain mail address are ignored.
    static Links parse(const QStringList& lines);
    // A missing, unreadable or oversized file gives empty addresses.
    static Links read(const QString& path);

    // The lines that parse() reads back into these values.
    QStringList lines() const;

    bool operator==(const Links&) const = default;
};

} // namespace quillora
