#include "core/spamcheck/ReadCounter.h"

#include "core/TestFiles.h"

using namespace quillora;

namespace {

const QString kHost = QStringLiteral("https://www.quillora.example/");
const QString kImage = QStringLiteral(
    "<img height=\"0\" hspace=\"0\" width=\"0\" align=\"absMiddle\" border=\"0\" "
    "SRC=\"https://www.quillora.example/readcount.asp?KEY_INVIO_RND=0000&KEY_INVIO_MITT=000"
    "&KEY_INVIO_IDINV=000&KEY_INVIO_DEST=000\" "
    "style=\"width:0px; height:0px; visibility:hidden;\" />");

// The three operations in the order the test e-mail applies them.
QString counterPass(const QString& html, bool counter) {
    QString out = ReadCounter::InserisciTag_READCOUNTER(html, counter);
    out = ReadCounter::EliminaTag_DESIGNTIMESP(out);
    return ReadCounter::SostituisciTag_READCOUNTER(out, counter, kHost);
}

struct Closing {
    const char* html;
    const char* expected; // %IMG% stands for the counter image
};

class ClosingBody : public ::testing::TestWithParam<Closing> {};

TEST_P(ClosingBody, GetsTheCounterOnlyForTheThreeSpellings) {
    QString expected = QString::fromUtf8(GetParam().expected);
    expected.replace(QStringLiteral("%IMG%"), kImage);
    EXPECT_EQ(counterPass(QString::fromUtf8(GetParam().html), true), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Spellings, ClosingBody,
    ::testing::Values(Closing{"<p>x</p></body></html>", "<p>x</p>%IMG%</body></html>"},
                      Closing{"<P>x</P></BODY></HTML>", "<P>x</P>%IMG%</BODY></HTML>"},
                      Closing{"<p>x</p></Body>", "<p>x</p>%IMG%</Body>"},
                      Closing{"<p>x</p></bOdY>", "<p>x</p></bOdY>"},
                      // a marker already in the text is removed first, never doubled
                      Closing{"<READCOUNTER><p>x</p><READCOUNTER></body>",
                              "<p>x</p>%IMG%</body>"}));

TEST(ReadCounter, WithoutTheCounterTheMarkerNeverReachesTheFilter) {
    EXPECT_EQ(counterPass(QStringLiteral("<p><READCOUNTER>a</p><READCOUNTER></body>"), false),
              QStringLiteral("<p>a</p></body>"));
}

TEST(ReadCounter, HostWithoutTrailingSlashGivesTheSameImage) {
    EXPECT_EQ(ReadCounter::counterImage(QStringLiteral("https://www.quillora.example")), kImage);
}

class DesignTime : public ::testing::TestWithParam<const char*> {};

TEST_P(DesignTime, AttributeIsRemovedAndItsBlankStays) {
    const QString html = QStringLiteral("<td %1 width=\"5\">").arg(QString::fromUtf8(GetParam()));
    EXPECT_EQ(ReadCounter::EliminaTag_DESIGNTIMESP(html), QStringLiteral("<td  width=\"5\">"));
}

INSTANTIATE_TEST_SUITE_P(SixForms, DesignTime,
                         ::testing::Values("DESIGNTIMESP=\"-1\"", "designtimesp=\"-1\"",
                                           "DESIGNTIMESP='-1'", "designtimesp='-1'",
                                           "DESIGNTIMESP=-1", "designtimesp=-1"));

TEST(ReadCounter, OtherDesignTimeValuesAndCasesStay) {
    const QString html = QStringLiteral("<td DesignTimeSp=-1 designtimesp=\"12\">");
    EXPECT_EQ(ReadCounter::EliminaTag_DESIGNTIMESP(html), html);
}

} // namespace
