#include "core/app/Links.h"
#include "core/TestFiles.h"
#include "core/app/TextFile.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace quillora;

namespace {

TEST(Links, ReadsTheShippedFile) {
    const Links links = Links::read(QStringLiteral(QUILLORA_SOURCE_DIR "/data/Links.dll"));
    EXPECT_EQ(links.siteFor(u"Italiano"), "https://www.quillora.example/it/");
    EXPECT_EQ(links.siteFor(u"English"), "https://www.quillora.example/en/");
    EXPECT_EQ(links.siteFor(QString::fromUtf8("Espa\xC3\xB1ol")),
              "https://www.quillora.example/es/");
    EXPECT_EQ(links.support, "support@quillora.example");
    EXPECT_EQ(links.readCounter, "https://www.quillora.example");
}

struct LanguageCase {
    const char* name;
    const char* language;
    const char* site;
    const char* guide;
};

void PrintTo(const LanguageCase& c, std::ostream* os) {
    *os << c.name;
}

class SiteAndGuide : public testing::TestWithParam<LanguageCase> {};

// Only the program's languages, spelt exactly, have a site. The guide's page name is the
// language's own; without a site there is no address at all (never a bare page name such as
// "video-tutorial.asp").
TEST_P(SiteAndGuide, ForTheLanguage) {
    const Links links =
        Links::parse({"site.Italiano: https://it.example/", "site.English: https://en.example/",
                      "site.Deutsch: https://de.example/"});
    const QString language = QString::fromUtf8(GetParam().language);
    EXPECT_EQ(links.siteFor(language), QString::fromUtf8(GetParam().site));
    EXPECT_EQ(links.guidePage(language), QString::fromUtf8(GetParam().guide));
}

INSTANTIATE_TEST_SUITE_P(Languages, SiteAndGuide,
                         testing::Values(LanguageCase{"Italian", "Italiano", "https://it.example/",
                                                      "https://it.example/GuideVideo.asp"},
                                         LanguageCase{"English", "English", "https://en.example/",
                                                      "https://en.example/video-tutorial.asp"},
                                         LanguageCase{"Spanish_without_site", "Espa\xC3\xB1ol", "",
                                                      ""},
                                         LanguageCase{"not_a_program_language", "Deutsch", "", ""},
                                         LanguageCase{"lower_case", "italiano", "", ""},
                                         LanguageCase{"trailing_blank", "Italiano ", "", ""},
                                         LanguageCase{"empty", "", "", ""}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Links, ToleratesGarbageAndRefusesUnsafeValues) {
    const Links links = Links::parse({
        "",
        "no colon here",
        ": https://nokey.example/",
        "  support :  help@team.example  ",
        "support: someone@x.example?cc=evil@y.example", // would add a recipient
        "support: two words@x.example",
        "site.English: javascript:alert(1)",
        "site.English: ftp://files.example/",
        "site.English: https://",
        "readcounter: https://count.example/readcount.asp",
        "readcounter: not a url",
        "SITE.English: https://upper.example/",
        "site.Español: https://es.example/?q=a:b",
    });
    EXPECT_EQ(links.support, "help@team.example");
    EXPECT_EQ(links.siteFor(u"English"), "");
    EXPECT_EQ(links.readCounter, "https://count.example/readcount.asp");
    EXPECT_EQ(links.siteFor(QString::fromUtf8("Espa\xC3\xB1ol")), "https://es.example/?q=a:b");
}

TEST(Links, LaterLinesWinAndLinesReadBack) {
    const Links links = Links::parse(
        {"site.English: https://a.example/", "site.English: https://b.example/", "support: a@b.c"});
    EXPECT_EQ(links.siteFor(u"English"), "https://b.example/");
    EXPECT_EQ(Links::parse(links.lines()), links);
    EXPECT_EQ(Links::parse({}).lines(), QStringList());
}

TEST(Links, MissingOrOversizedFileGivesNothing) {
    QTemporaryDir dir;
    EXPECT_EQ(Links::read(dir.filePath("Links.dll")), Links{});
    writeBytes(dir.filePath("big.dll"),
               "support: a@b.c\r\n" + QByteArray(Links::kMaxFileBytes, ' '));
    EXPECT_EQ(Links::read(dir.filePath("big.dll")), Links{});
    // Written by the program (UTF-16 with a byte-order mark) reads as well.
    ASSERT_TRUE(TextFile::writeLines(
        dir.filePath("u16.dll"), {QString::fromUtf8("site.Espa\xC3\xB1ol: https://es.example/")}));
    EXPECT_EQ(Links::read(dir.filePath("u16.dll")).siteFor(QString::fromUtf8("Espa\xC3\xB1ol")),
              "https://es.example/");
}

} // namespace
