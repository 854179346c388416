#include "core/TestFiles.h"

#include "core/app/Texts.h"
#include "core/spamcheck/PreSendCheck.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <gmock/gmock.h>

namespace quillora::check {
namespace {

using namespace Qt::StringLiterals;

// A folder beside the pages: "present.png" (2 KB) and "pic one.png" exist, nothing else does.
class Folder {
public:
    Folder() {
        writeBytes(path(u"present.png"_s), QByteArray(2048, 'x'));
        writeBytes(path(u"pic one.png"_s), QByteArray(10, 'x'));
    }
    QString base() const { return m_dir.path() + u'/'; }
    QString path(const QString& name) const { return base() + name; }

private:
    QTemporaryDir m_dir;
};

struct RuleCase {
    const char* name;
    const char* rule;
    const char* html;
    int found; // findings of that rule
    Severity severity = Severity::Warning;
    const char* tag = ""; // the element of the first finding
    int index = -1;
    const char* subject = "May news";
    qint64 limit = 10 * 1024 * 1024;
};

void PrintTo(const RuleCase& c, std::ostream* os) {
    *os << c.name;
}

class EachRule : public testing::TestWithParam<RuleCase> {};

TEST_P(EachRule, FindsWhatBreaksItAndNothingElse) {
    const RuleCase& c = GetParam();
    const Folder folder;
    CheckInput input;
    input.subject = QString::fromUtf8(c.subject);
    input.html = QString::fromUtf8(c.html);
    // A page past Gmail's limit: the marker becomes 103 KB of text.
    input.html.replace(u"{103KB}"_s, QString(103 * 1024, u'a'));
    input.baseFolder = folder.base();
    input.sizeLimitBytes = c.limit;
    std::vector<Finding> mine;
    for (const Finding& f : runCheck(input)) {
        if (f.rule == QLatin1String(c.rule))
            mine.push_back(f);
    }
    ASSERT_EQ(int(mine.size()), c.found);
    if (c.found == 0)
        return;
    EXPECT_EQ(mine[0].severity, c.severity);
    EXPECT_EQ(mine[0].element, (ElementRef{QString::fromLatin1(c.tag), c.index}));
    EXPECT_FALSE(describe(mine[0], Texts::builtIn(u"English"_s)).contains(u'%'));
}

constexpr Severity E = Severity::Error;
constexpr Severity W = Severity::Warning;
constexpr Severity H = Severity::Hint;

INSTANTIATE_TEST_SUITE_P(
    Pages, EachRule,
    testing::Values(
        RuleCase{"EmptySubject", "empty-subject", "<p>x</p>", 1, E, "", -1, "  "},
        RuleCase{"Subject", "empty-subject", "<p>x</p>", 0},
        RuleCase{"ImageWithoutAlt", "missing-alt",
                 R"(<img alt="logo" src="present.png"><p><img src="present.png"></p>)", 1, W, "img",
                 1},
        RuleCase{"SpacerWithoutAlt", "missing-alt", R"(<img src="present.png" width="1">)", 1, H,
                 "img", 0},
        RuleCase{"DecorativeImage", "missing-alt", R"(<img src="present.png" alt="">)", 0},
        RuleCase{"MissingImage", "missing-file", R"(<img alt="" src="absent.png">)", 1, E, "img",
                 0},
        RuleCase{"MissingBackground", "missing-file",
                 R"(<table><tr><td>a</td><td background="gone.jpg">b</td></tr></table>)", 1, E,
                 "td", 1},
        RuleCase{"FilesThatExist", "missing-file",
                 R"(<img alt="" src="present.png"><img alt="" src="pic%20one.png">
                    <img alt="" src="https://example.com/a.png"><img alt="" src="cid:a1">
                    <img alt="" src="data:image/gif;base64,R0lGOD">)",
                 0},
        RuleCase{
            "HttpImage", "insecure-image",
            R"(<img alt="" src="https://example.com/a.png"><img alt="" src=" HTTP://example.com/b.png">)",
            1, W, "img", 1},
        RuleCase{"HttpBackground", "insecure-image",
                 R"(<table background="http://example.com/bg.jpg"><tr><td>x</td></tr></table>)", 1,
                 W, "table", 0},
        RuleCase{
            "HttpLinkIsNoImage", "insecure-image",
            R"(<a href="http://example.com">site</a><script src="http://example.com/a.js"></script>)",
            0},
        RuleCase{"EmptyTargets", "empty-link",
                 R"x(<a href="https://example.com">ok</a><a href="">a</a><a href="#">b</a>
                    <a href=" javascript:void(0)">c</a>)x",
                 3, W, "a", 1},
        RuleCase{
            "AnchorsAndRealLinks", "empty-link",
            R"(<a name="top">top</a><a href="#top">back</a><a href="mailto:a@example.com">m</a>)",
            0},
        RuleCase{"NoUnsubscribe", "no-unsubscribe", R"(<a href="https://example.com">shop</a>)", 1,
                 W},
        RuleCase{"InsertedRemoveLink", "no-unsubscribe",
                 R"(<a href="mailto:list@example.com?subject=REMOVE">x</a>)", 0},
        RuleCase{"ItalianText", "no-unsubscribe",
                 R"(<a href="https://example.com/l?id=3">Per <b>cancellarti</b> clicca qui</a>)",
                 0},
        RuleCase{"SpanishText", "no-unsubscribe",
                 R"(<a href="https://example.com/x">Para anular su suscripción</a>)", 0},
        RuleCase{"UnsubscribeTarget", "no-unsubscribe",
                 R"(<a href="https://example.com/Unsubscribe?u=1">leave</a>)", 0},
        RuleCase{"TypoInText", "unknown-token",
                 R"(<p>Dear :::nom:::,</p><table><tr><td>:::Nme::: :::cog:::</td></tr></table>)", 1,
                 E, "td", 0},
        RuleCase{"TypoInAttribute", "unknown-token",
                 R"(<p>:::email:::</p><a href="mailto::::emial:::">write</a>)", 1, E, "a", 0},
        RuleCase{"KnownTokens", "unknown-token",
                 R"(<p>:::rgs::: :::campo9::: :::ora3:::</p><a href="mailto::::email:::">m</a>)",
                 0},
        RuleCase{"OverGmailLimit", "gmail-clip-102kb", "<p>{103KB}</p>", 1, W},
        RuleCase{"UnderGmailLimit", "gmail-clip-102kb", "<p>short</p>", 0},
        RuleCase{"OverSizeLimit", "message-too-large", R"(<img alt="" src="present.png">)", 1, E,
                 "", -1, "May news", 2048},
        RuleCase{"UnderSizeLimit", "message-too-large", R"(<img alt="" src="present.png">)", 0},
        RuleCase{"Script", "stripped-element", "<p>x</p><script>alert(1)</script>", 1, W, "script",
                 0},
        RuleCase{"Iframe", "stripped-element", R"(<iframe src="https://example.com"></iframe>)", 1,
                 W, "iframe", 0},
        RuleCase{
            "HttpForm", "stripped-element",
            R"(<form action="https://example.com/a"></form><form action="http://example.com/b"></form>)",
            1, W, "form", 1},
        RuleCase{"PlainPage", "stripped-element", "<p>x</p><form></form>", 0}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(PreSendCheck, ListsErrorsThenWarningsThenHints) {
    CheckInput input;
    input.html = uR"(<img src="x.png" width="1"><img src="https://e.com/a.png"><p>:::nmo:::</p>)"_s;
    const std::vector<Finding> all = runCheck(input);
    ASSERT_GE(all.size(), 4u);
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end(), [](const Finding& a, const Finding& b) {
        return a.severity < b.severity;
    }));
    EXPECT_EQ(all.front().severity, Severity::Error);
    EXPECT_EQ(all.back().severity, Severity::Hint);
    EXPECT_TRUE(hasErrors(all));
}

TEST(PreSendCheck, SuggestsTheNearestTokenInTheUsersLanguage) {
    CheckInput input;
    input.subject = u"x"_s;
    input.html = u"<p>:::Nme:::</p>"_s;
    for (const Finding& f : runCheck(input)) {
        if (f.rule != u"unknown-token"_s)
            continue;
        EXPECT_EQ(describe(f, Texts::builtIn(u"Italiano"_s)),
                  u":::Nme::: non è un campo di unione (forse :::nom:::?): arriverà ai lettori "
                  u"così com'è."_s);
        return;
    }
    FAIL() << "no unknown-token finding";
}

TEST(PreSendCheck, CountsAttachmentsAndFilesOnceInBase64) {
    const Folder folder;
    CheckInput input;
    input.html = uR"(<img src="present.png"><img src="present.png">)"_s;
    input.baseFolder = folder.base();
    input.attachments = {folder.path(u"pic one.png"_s)};
    // 2048 bytes → 2732 characters in 36 lines; 10 bytes → 16 characters in one line.
    EXPECT_EQ(estimatedMailSize(input), input.html.size() + 2732 + 36 * 2 + 16 + 2);
    input.attachments << folder.path(u"nowhere.pdf"_s);
    std::vector<Finding> missing;
    for (const Finding& f : runCheck(input))
        if (f.rule == u"missing-file"_s)
            missing.push_back(f);
    ASSERT_EQ(missing.size(), 1u);
    EXPECT_THAT(missing[0].args, testing::ElementsAre(folder.path(u"nowhere.pdf"_s)));
}

// Real newsletters with their pictures beside them: every local reference resolves.
TEST(PreSendCheck, CorpusNewslettersHaveNoMissingFiles) {
    QDirIterator pages(QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/html"), {u"index.html"_s},
                       QDir::Files, QDirIterator::Subdirectories);
    int checked = 0;
    while (pages.hasNext()) {
        const QString page = pages.next();
        CheckInput input;
        input.subject = u"x"_s;
        input.html = QString::fromUtf8(readBytes(page));
        input.baseFolder = QFileInfo(page).absolutePath() + u'/';
        for (const Finding& f : runCheck(input))
            EXPECT_NE(f.rule, u"missing-file"_s)
                << page.toStdString() << ": " << f.args.join(u' ').toStdString();
        ++checked;
    }
    EXPECT_GE(checked, 8);
}

TEST(PreSendCheck, EveryRuleHasAStableDistinctId) {
    QStringList ids;
    for (const auto& r : rules())
        ids << QString::fromLatin1(r->id());
    EXPECT_THAT(ids, testing::UnorderedElementsAre(u"empty-subject"_s, u"missing-alt"_s,
                                                   u"missing-file"_s, u"insecure-image"_s,
                                                   u"empty-link"_s, u"no-unsubscribe"_s,
                                                   u"unknown-token"_s, u"gmail-clip-102kb"_s,
                                                   u"message-too-large"_s, u"stripped-element"_s));
}

} // namespace
} // namespace quillora::check
