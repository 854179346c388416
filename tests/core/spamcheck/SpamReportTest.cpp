#include "core/spamcheck/SpamReport.h"

#include "core/TestFiles.h"

using namespace quillora;

namespace {

struct Status {
    const char* header; // the status header as the filter writes it, folds included
    bool spam;
    double score, required;
    std::optional<int> cover;
    const char* label;
};

class StatusHeader : public ::testing::TestWithParam<Status> {};

TEST_P(StatusHeader, GivesVerdictBarAndLabel) {
    const Status& s = GetParam();
    const QByteArray eml =
        QByteArray("Received: from x\r\n") + s.header + "\r\nSubject: a\r\n\r\nbody\r\n";
    const SpamReport::Report r = SpamReport::parse(eml);
    EXPECT_TRUE(r.statusFound);
    EXPECT_EQ(r.spam, s.spam);
    EXPECT_DOUBLE_EQ(r.score, s.score);
    EXPECT_DOUBLE_EQ(r.required, s.required);
    EXPECT_EQ(SpamReport::coverExtent(r.score, r.required), s.cover);
    EXPECT_EQ(SpamReport::scoreLabel(r.score, r.required), QString::fromUtf8(s.label));
}

INSTANTIATE_TEST_SUITE_P(
    Headers, StatusHeader,
    ::testing::Values(
        Status{"X-Spam-Status: Yes, score=7.3 required=5.0 tests=ALL_CAPS", true, 7.3, 5.0, 0,
               "7.30 / 5.00"},
        Status{"X-Spam-Status: No, score=-0.1 required=5.0 tests=HTML_MESSAGE", false, -0.1, 5.0,
               102, "-0.10 / 5.00"},
        Status{"X-Spam-Status: No, score=2.5 required=5.0", false, 2.5, 5.0, 50, "2.50 / 5.00"},
        // folded before the numbers: the continuation line belongs to the header
        Status{"X-Spam-Status: YES,\r\n\tscore=5.2 required=5.0 tests=A,\r\n\tB autolearn=no", true,
               5.2, 5.0, 0, "5.20 / 5.00"},
        // lenient numbers: the leading number of the text after "="
        Status{"X-Spam-Status: no, score=1.5x required=", false, 1.5, 0.0, 0, "1.50 / 0.00"},
        Status{"X-Spam-Status: No, score=0 required=0", false, 0, 0, std::nullopt, "0.00 / 0.00"}));

TEST(SpamReport, FirstStatusHeaderWinsAndItsTestsAreListed) {
    const SpamReport::Report r = SpamReport::parse(
        QByteArrayView("X-Spam-Status: No, score=0.8 required=5.0 tests=DKIM_ADSP_NXDOMAIN,\n"
                       "\tDMARC_MISSING,HTML_MESSAGE autolearn=no\n"
                       "X-Spam-Status: Yes, score=9 required=5.0\n\nbody"));
    EXPECT_FALSE(r.spam);
    EXPECT_DOUBLE_EQ(r.score, 0.8);
    EXPECT_EQ(r.tests,
              QStringList({QStringLiteral("DKIM_ADSP_NXDOMAIN"), QStringLiteral("DMARC_MISSING"),
                           QStringLiteral("HTML_MESSAGE")}));
    EXPECT_TRUE(r.details.isEmpty()) << "a ham report has no details block";
    EXPECT_EQ(SpamReport::logText(r),
              QStringLiteral("Spam Status.....: NO\r\nSpam Score......: 0.8\r\n"
                             "Spam Required...: 5\r\n"));
}

TEST(SpamReport, DetailsBlockEndsAtTheFirstEmptyLine) {
    const SpamReport::Report r = SpamReport::parse(QByteArrayView(
        "X-Spam-Status: Yes, score=1000.0 required=5.0 tests=GTUBE\r\n\r\n"
        "Content analysis details:   (1000.0 points, 5.0 required)\r\n"
        "\r\n"
        " pts rule name              description\r\n"
        "---- ---------------------- --------------------------------------------------\r\n"
        "1000 GTUBE                  BODY: Generic Test for Unsolicited Bulk Email\r\n"
        "-0.0 NO_RELAYS              Informational: message was not relayed via SMTP\r\n"
        " 0.5 LONG_RULE              A description the filter wrapped over\r\n"
        "                            two lines\r\n"
        "   \r\n"
        " 9.9 AFTER_THE_BLOCK        not part of the report\r\n"));
    EXPECT_EQ(r.details.size(), 4);
    EXPECT_EQ(r.details.first(),
              QStringLiteral("1000 GTUBE                  BODY: Generic Test for Unsolicited "
                             "Bulk Email"));
    ASSERT_EQ(r.rules.size(), 3);
    EXPECT_EQ(r.rules[1], (SpamReport::Rule{-0.0, QStringLiteral("NO_RELAYS"),
                                            QStringLiteral("Informational: message was not "
                                                           "relayed via SMTP")}));
    EXPECT_EQ(r.rules[2].description,
              QStringLiteral("A description the filter wrapped over two lines"));
    EXPECT_TRUE(SpamReport::summary(r).startsWith(
        QStringLiteral("Spam Status.....: YES\r\nSpam Score......: 1000\r\n")));
    EXPECT_TRUE(SpamReport::logText(r).endsWith(QStringLiteral("\r\ntwo lines")));
}

TEST(SpamReport, MissingStatusLeavesNotSpamAndZero) {
    const SpamReport::Report r =
        SpamReport::parse(QByteArrayView("Subject: x\n\nX-Spam-Flag: YES"));
    EXPECT_FALSE(r.statusFound);
    EXPECT_FALSE(r.spam);
    EXPECT_EQ(r.score, 0);
    EXPECT_EQ(r.required, 0);
}

} // namespace
