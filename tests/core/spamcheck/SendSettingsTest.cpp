#include "core/TestFiles.h"

#include "core/app/TextFile.h"
#include "core/spamcheck/SendSettings.h"

#include <QTemporaryDir>

namespace quillora {
namespace {

using namespace Qt::StringLiterals;

struct FillCase {
    const char* name;
    const char* html;
    const char* expected;
};

void PrintTo(const FillCase& c, std::ostream* os) {
    *os << c.name;
}

class SampleFill : public testing::TestWithParam<FillCase> {};

TEST_P(SampleFill, FillsOnlyKnownTokensWithEscapedValues) {
    const QMap<QString, QString> sample{{u"nom"_s, u"Anna"_s},
                                        {u"rgs"_s, u"Rossi & \"Figli\" <srl>"_s},
                                        {u"email"_s, u"anna@example.com"_s},
                                        {u"cog"_s, u":::nom:::"_s}};
    EXPECT_EQ(fillSample(QString::fromUtf8(GetParam().html), sample),
              QString::fromUtf8(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, SampleFill,
    testing::Values(FillCase{"Text", "<p>Dear :::nom:::,</p>", "<p>Dear Anna,</p>"},
                    FillCase{"Escaped", "<b>:::rgs:::</b>",
                             "<b>Rossi &amp; &quot;Figli&quot; &lt;srl&gt;</b>"},
                    FillCase{"Attribute", R"(<a href="mailto::::email:::">:::email:::</a>)",
                             R"(<a href="mailto:anna@example.com">anna@example.com</a>)"},
                    FillCase{"NoValueStays", "<p>:::loc::: :::Nom::: :::nom:::</p>",
                             "<p>:::loc::: :::Nom::: Anna</p>"},
                    FillCase{"ValueIsNotFilledAgain", "<p>:::cog:::</p>", "<p>:::nom:::</p>"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SendSettings, KeepsWhatWasWrittenAndIgnoresBadLines) {
    QTemporaryDir dir;
    const QString file = dir.filePath(QString::fromLatin1(SendSettings::kFileName));
    EXPECT_EQ(SendSettings::read(file), SendSettings{}) << "a missing file gives the defaults";

    SendSettings s;
    s.sizeLimitMB = 25;
    s.testAddress = u"me@example.com"_s;
    s.testAccount = 7;
    s.sample = {{u"nom"_s, u"Anna: the first"_s}, {u"loc"_s, u"Città\nalta"_s}};
    ASSERT_TRUE(s.write(file));
    SendSettings back = SendSettings::read(file);
    EXPECT_EQ(back.sizeLimitMB, 25);
    EXPECT_EQ(back.testAddress, u"me@example.com"_s);
    EXPECT_EQ(back.testAccount, 7);
    EXPECT_EQ(back.sample.value(u"nom"_s), u"Anna: the first"_s);
    EXPECT_EQ(back.sample.value(u"loc"_s), u"Città alta"_s) << "a line break would split the file";

    ASSERT_TRUE(TextFile::writeLines(file, {u"size-limit-mb: -4"_s, u"test-account: x"_s,
                                            u"no colon"_s, u"size-limit-mb: 99999"_s}));
    EXPECT_EQ(SendSettings::read(file), SendSettings{});
}

} // namespace
} // namespace quillora
