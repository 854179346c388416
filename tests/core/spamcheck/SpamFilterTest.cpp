#include "core/spamcheck/SpamFilter.h"
#include "core/spamcheck/TestMail.h"

#include "core/TestFiles.h"

#include <QTemporaryDir>

using namespace quillora;

namespace {

// The filter's standard test string: any working installation scores it as spam.
const char* const kGtube = "XJS*C4JDBQADN1.NSBN3*2IDNEN*GTUBE-STANDARD-ANTI-UBE-TEST-EMAIL*C.34X";

TEST(SpamFilter, ScriptChangesToTheFolderAndRedirectsTheFilter) {
    EXPECT_EQ(SpamFilter::scriptText(QStringLiteral("/d/it's here/"), false),
              QStringLiteral("#!/bin/sh\ncd '/d/it'\\''s here/' || exit 1\n"
                             "exec spamassassin < in.eml > out.eml\n"));
    EXPECT_TRUE(SpamFilter::scriptText(QStringLiteral("/d/"), true)
                    .contains(QStringLiteral("exec spamassassin -L < in.eml")));
}

class RealFilter : public ::testing::Test {
protected:
    void SetUp() override {
        if (SpamFilter::program().isEmpty())
            GTEST_SKIP() << "spamassassin is not installed (scripts/deps.sh installs it)";
        ASSERT_TRUE(dir.isValid());
        folder = dir.path() + QStringLiteral("/SPAMASS dir/");
    }
    void writeInput(const QString& html) {
        TestMail::Content c;
        c.subject = QStringLiteral("Monthly news");
        c.body = html;
        TestMail::Options o;
        o.sender.displayName = QStringLiteral("Anna Rossi");
        o.sender.address = QStringLiteral("anna@example.com");
        const TestMail::Result r = TestMail::compose(c, o);
        ASSERT_TRUE(r.ok()) << r.error.toStdString();
        ASSERT_TRUE(QDir().mkpath(folder));
        ASSERT_TRUE(TestMail::writeEml(*r.message, folder + QStringLiteral("in.eml")));
    }
    SpamFilter::Outcome runFilter() {
        SpamFilter::Run run;
        run.start(folder, !SpamFilter::dnsAnswers());
        EXPECT_TRUE(run.waitForFinished());
        return run.outcome();
    }
    QTemporaryDir dir;
    QString folder;
};

TEST_F(RealFilter, TestStringIsSpamAndTheReportNamesItsRule) {
    writeInput(QStringLiteral("<html><body><p>%1</p></body></html>").arg(QLatin1String(kGtube)));
    const SpamFilter::Outcome o = runFilter();
    ASSERT_TRUE(o.ok()) << o.detail.toStdString();
    EXPECT_TRUE(o.report.statusFound);
    EXPECT_TRUE(o.report.spam);
    EXPECT_GE(o.report.score, 1000.0);
    EXPECT_DOUBLE_EQ(o.report.required, 5.0);
    EXPECT_TRUE(
        std::any_of(o.report.rules.begin(), o.report.rules.end(), [](const SpamReport::Rule& r) {
            return r.name == u"GTUBE" && r.points >= 1000;
        }));
    EXPECT_TRUE(readBytes(folder + QStringLiteral("checkspam.sh")).startsWith("#!/bin/sh\n"));
}

TEST_F(RealFilter, PlainNewsletterIsNotSpam) {
    writeInput(QStringLiteral("<html><body><h1>Our garden in May</h1><p>The roses are out and "
                              "the tomatoes need staking. See you at the club on Saturday."
                              "</p></body></html>"));
    const SpamFilter::Outcome o = runFilter();
    ASSERT_TRUE(o.ok()) << o.detail.toStdString();
    EXPECT_TRUE(o.report.statusFound);
    EXPECT_FALSE(o.report.spam);
    EXPECT_LT(o.report.score, o.report.required);
}

TEST_F(RealFilter, NoInputGivesNoOutputAndCancelEndsTheFilter) {
    ASSERT_TRUE(QDir().mkpath(folder));
    writeBytes(folder + QStringLiteral("out.eml"), "stale result of an earlier check");
    EXPECT_EQ(runFilter().failure, SpamFilter::Failure::NoOutput);

    writeInput(QStringLiteral("<p>x</p>"));
    SpamFilter::Run run;
    run.start(folder, true);
    ASSERT_TRUE(run.isRunning());
    run.cancel();
    EXPECT_TRUE(run.waitForFinished());
    EXPECT_EQ(run.outcome().failure, SpamFilter::Failure::Cancelled);
}

} // namespace
