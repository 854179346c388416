#include "core/message/References.h"
#include "core/TestFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <map>

using namespace quillora;
using namespace quillora::References;
using namespace Qt::StringLiterals;

namespace {

struct NormaliseCase {
    const char* name;
    PathStyle style;
    QString reference;
    Kind kind;
    QString path;
};

void PrintTo(const NormaliseCase& c, std::ostream* os) {
    *os << c.name;
}

class NormaliseTest : public testing::TestWithParam<NormaliseCase> {};

TEST_P(NormaliseTest, KindAndPath) {
    const NormaliseCase& c = GetParam();
    const QString base = c.style == PathStyle::Windows ? u"c:\\m\\"_s : u"/nowhere/m/"_s;
    const Resolved r = normalise(c.reference, base, c.style);
    EXPECT_EQ(r.kind, c.kind);
    EXPECT_EQ(r.path, c.path);
}

constexpr auto W = PathStyle::Windows;
constexpr auto P = PathStyle::Posix;

INSTANTIATE_TEST_SUITE_P(
    Windows, NormaliseTest,
    testing::Values(
        NormaliseCase{"prefix_removed_after_lower_case", W, "FILE://C:\\Img\\A.PNG", Kind::Local,
                      "c:\\img\\a.png"},
        NormaliseCase{"relative_after_base", W, "img/logo.png", Kind::Local,
                      "c:\\m\\img\\logo.png"},
        NormaliseCase{"leading_slash_is_relative", W, "file:///x.png", Kind::Local,
                      "c:\\m\\\\x.png"},
        NormaliseCase{"line_break_joined", W, "im\r\ng/a\r.p\nng", Kind::Local,
                      "c:\\m\\img\\a.png"},
        NormaliseCase{"blank_runs_collapse", W, "a            b  c", Kind::Local, "c:\\m\\a b c"},
        NormaliseCase{"remote_http", W, "HTTP://Host/A.png", Kind::Remote, "http://host/a.png"},
        NormaliseCase{"remote_https", W, "https://h/a.png", Kind::Remote, "https://h/a.png"},
        NormaliseCase{"data", W, "DATA:image/png;base64,AAAA", Kind::None, ""},
        NormaliseCase{"cid", W, "cid:part1@x", Kind::None, ""},
        NormaliseCase{"mailto", W, "mailto:a@b.c", Kind::None, ""},
        NormaliseCase{"protocol_relative", W, "//cdn.example.com/a.png", Kind::None, ""},
        NormaliseCase{"other_scheme", W, "javascript:void(0)", Kind::None, ""},
        NormaliseCase{"only_prefix", W, "file://", Kind::None, ""},
        NormaliseCase{"only_blanks", W, "   ", Kind::None, ""}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Posix, NormaliseTest,
    testing::Values(NormaliseCase{"case_kept_prefix_any_case", P, "File:///home/U/A.PNG",
                                  Kind::Local, "/home/U/A.PNG"},
                    NormaliseCase{"relative_backslashes", P, "img\\Logo.png", Kind::Local,
                                  "/nowhere/m/img/Logo.png"},
                    NormaliseCase{"windows_drive_is_absolute", P, "C:\\Pics\\A.png", Kind::Local,
                                  "C:/Pics/A.png"},
                    NormaliseCase{"line_break_and_blanks", P, "my\r\n   pic.png", Kind::Local,
                                  "/nowhere/m/my pic.png"},
                    NormaliseCase{"remote_any_case", P, "HTTPS://Host/A.png", Kind::Remote,
                                  "HTTPS://Host/A.png"},
                    NormaliseCase{"missing_escaped_name_kept", P, "my%20pic.png", Kind::Local,
                                  "/nowhere/m/my%20pic.png"},
                    NormaliseCase{"cid_any_case", P, "CID:part", Kind::None, ""},
                    NormaliseCase{"about", P, "about:blank", Kind::None, ""},
                    NormaliseCase{"protocol_relative", P, "//host/a.png", Kind::None, ""}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Normalise, PosixTakesTheReadingThatExists) {
    QTemporaryDir dir;
    const QString base = dir.path() + "/";
    for (const char* name : {"my pic.png", "a.png", "x%41.png", "xA.png"})
        writeBytes(base + name);
    EXPECT_EQ(normalise(u"my%20pic.png", base, P).path, base + "my pic.png");
    EXPECT_EQ(normalise(u"a.png?v=2", base, P).path, base + "a.png");
    EXPECT_EQ(normalise(u"a.png#top", base, P).path, base + "a.png");
    EXPECT_EQ(normalise(u"x%41.png", base, P).path, base + "x%41.png"); // literal first
    EXPECT_EQ(normalise(u"b.png?v=2", base, P).path, base + "b.png?v=2");
}

TEST(FileNames, NameAfterEitherSeparator) {
    EXPECT_EQ(fileNameOf(u"c:\\a\\b.png"), "b.png");
    EXPECT_EQ(fileNameOf(u"/a\\b/c.gif"), "c.gif");
    EXPECT_EQ(fileNameOf(u"plain.jpg"), "plain.jpg");
    EXPECT_EQ(safeFileName(u"a/../../x.png"), u"x.png"_s);
    EXPECT_EQ(safeFileName(u"c:\\dir\\...png"), u"...png"_s);
}

TEST(FileNames, NamesThatCouldLeaveTheFolderAreRefused) {
    for (const QString& stored : {u""_s, u"dir/"_s, u"."_s, u"a\\.."_s, u".."_s, u"a\tb.png"_s,
                                  u"a\x7F.png"_s, u"a\0b.png"_s})
        EXPECT_EQ(safeFileName(stored), std::nullopt) << stored.toStdString();
}

// ---- the walk ----------------------------------------------------------------------------

QString rawOf(const QString& html, const Reference& r) {
    return html.sliced(r.start, r.length);
}

TEST(Walker, SrcOrBackgroundByElement) {
    const QString html =
        "<html><body background='b.png'><table background=\"t.png\"><tr>"
        "<td background=c.png>x</td></tr></table><img src=\"i.png\" background=\"no.png\">"
        "<input type=image src=in.png><img background=\"only-bg.png\"><p background=p.png>"
        "<svg><script src=\"svg.js\"></script></svg><img src=\"\"><td background></body></html>";
    const ReferenceWalker w(html);
    std::vector<std::tuple<QString, Attribute, QString>> got;
    for (const Reference& r : w.references()) {
        got.emplace_back(r.tag, r.attribute, r.value);
        EXPECT_EQ(rawOf(html, r), r.value);
    }
    using A = Attribute;
    const std::vector<std::tuple<QString, Attribute, QString>> expected{
        {"body", A::Background, "b.png"}, {"table", A::Background, "t.png"},
        {"td", A::Background, "c.png"},   {"img", A::Src, "i.png"},
        {"input", A::Src, "in.png"},      {"p", A::Background, "p.png"}};
    EXPECT_EQ(got, expected);
}

TEST(Walker, RangesCountUtf16AfterNonAsciiText) {
    // é is two UTF-8 bytes and one code unit; the emoji is four bytes and two code units.
    const QString html = QString::fromUtf8("<p>é\xF0\x9F\x98\x80 text</p><img src='a&amp;b.png'>"
                                           "<p>\xF0\x9F\x98\x80</p><img src=c.png alt=x>");
    const ReferenceWalker w(html);
    ASSERT_EQ(w.references().size(), 2u);
    const Reference& entity = w.references()[0];
    EXPECT_EQ(entity.value, "a&b.png");
    EXPECT_EQ(rawOf(html, entity), "a&amp;b.png");
    EXPECT_EQ(entity.quote, u'\'');
    const Reference& unquoted = w.references()[1];
    EXPECT_EQ(rawOf(html, unquoted), "c.png");
    EXPECT_EQ(unquoted.quote, 0);
}

// gumbo starts an unquoted value after a leading character reference; the fuzzer found it.
TEST(Walker, UnquotedValueStartingWithEntityIsRangedWhole) {
    const QString html = "<img alt=x src = &amp;b&quot;.png title=t>";
    const ReferenceWalker w(html);
    ASSERT_EQ(w.references().size(), 1u);
    EXPECT_EQ(w.references()[0].value, "&b\".png");
    EXPECT_EQ(rawOf(html, w.references()[0]), "&amp;b&quot;.png");
    EXPECT_EQ(w.rewrite({Edit::of(w.references()[0], "n")}), "<img alt=x src = \"n\" title=t>");
}

TEST(Walker, RewriteEscapesAndQuotes) {
    const QString html = "<img src='a.png'><img src=b.png><table background=\"c.png\">";
    const ReferenceWalker w(html);
    ASSERT_EQ(w.references().size(), 3u);
    const QString out =
        w.rewrite({Edit::of(w.references()[0], "x'&y"), Edit::of(w.references()[1], "u v"),
                   Edit::of(w.references()[2], "q\"r")});
    EXPECT_EQ(out, "<img src='x&#39;&amp;y'><img src=\"u v\"><table background=\"q&quot;r\">");
    const ReferenceWalker again(out);
    ASSERT_EQ(again.references().size(), 3u);
    EXPECT_EQ(again.references()[0].value, "x'&y");
    EXPECT_EQ(again.references()[2].value, "q\"r");
}

TEST(Walker, ClonedElementSharesOneRangeAndIsRewrittenOnce) {
    // The parser reopens <b> in the second paragraph, attributes and source range included.
    const QString html = "<p><b background=q.png>a</p><p>b";
    const ReferenceWalker w(html);
    ASSERT_EQ(w.references().size(), 2u);
    EXPECT_EQ(w.references()[0].start, w.references()[1].start);
    const QString out = w.rewrite(
        {Edit::of(w.references()[0], "one"), Edit::of(w.references()[1], "two"), {99, 1, 0, "x"}});
    EXPECT_EQ(out, "<p><b background=\"one\">a</p><p>b");
}

QStringList corpusPages() {
    const QString root = QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data");
    QStringList pages;
    const QDir html(root + "/html");
    for (const QString& sub : html.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        pages << html.filePath(sub + "/index.html");
    return pages;
}

// The value range widened to its quotes, so unquoted and quoted values compare alike. A CSS url
// keeps its quotes, so its range is its text.
std::pair<qsizetype, qsizetype> withQuotes(const Reference& r) {
    return r.quote && r.syntax() == Syntax::Html ? std::pair(r.start - 1, r.start + r.length + 1)
                                                 : std::pair(r.start, r.start + r.length);
}

QStringList outsideValues(const QString& html, const std::vector<Reference>& refs) {
    std::map<qsizetype, qsizetype> ranges;
    for (const Reference& r : refs)
        ranges.insert(withQuotes(r));
    QStringList pieces;
    qsizetype at = 0;
    for (const auto& [from, to] : ranges) {
        pieces << html.sliced(at, from - at);
        at = to;
    }
    return pieces << html.sliced(at);
}

TEST(Walker, CorpusRewriteKeepsEverythingElse) {
    const QStringList pages = corpusPages();
    ASSERT_GE(pages.size(), 5) << "newsletter corpus not found";
    size_t total = 0;
    for (const QString& page : pages) {
        QFile file(page);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << page.toStdString();
        const QString html = QString::fromUtf8(file.readAll());
        const ReferenceWalker w(html);
        std::map<qsizetype, QString> markers; // a cloned element shares its range and marker
        std::vector<Edit> edits;
        for (const Reference& r : w.references()) {
            const QString marker = u"\"mark%1&'.png"_s.arg(r.start);
            markers.emplace(r.start, marker);
            edits.push_back(Edit::of(r, marker));
        }
        total += markers.size();
        const QString out = w.rewrite(edits);
        const ReferenceWalker again(out);
        ASSERT_EQ(again.references().size(), w.references().size()) << page.toStdString();
        for (size_t i = 0; i < w.references().size(); ++i)
            EXPECT_EQ(again.references()[i].value, markers[w.references()[i].start]);
        EXPECT_EQ(outsideValues(out, again.references()), outsideValues(html, w.references()))
            << page.toStdString();
    }
    EXPECT_GT(total, 30u);
}

// The references mail designers put where mail programs look for backgrounds: CSS and VML, in
// and out of conditional comments. Each row: the page, the objects a save embeds (relative to
// /m/), and the page as the preview gets it (R stands for the restore folder).
struct CssVmlCase {
    const char* name;
    QString html;
    QStringList objects;
    QString preview;
};

void PrintTo(const CssVmlCase& c, std::ostream* os) {
    *os << c.name;
}

class CssVmlTest : public testing::TestWithParam<CssVmlCase> {};

TEST_P(CssVmlTest, EmbeddedOnceAndRedirectedInPlace) {
    const CssVmlCase& c = GetParam();
    QStringList expected;
    for (const QString& o : c.objects)
        expected << "/m/" + o;
    EXPECT_EQ(objectList(c.html, "/m/", P), expected);
    QString preview = c.preview;
    EXPECT_EQ(redirectForPreview(c.html, "/r/", P), preview.replace("R/", "/r/"));
}

INSTANTIATE_TEST_SUITE_P(
    References, CssVmlTest,
    testing::Values(
        CssVmlCase{"style_attribute_local_and_https",
                   "<div style=\"background:#222 url(img/a.png) no-repeat, "
                   "URL('https://h/b.png')\">x</div>",
                   {"img/a.png"},
                   "<div style=\"background:#222 url(R/a.png) no-repeat, "
                   "URL('https://h/b.png')\">x</div>"},
        CssVmlCase{"style_block_quoted",
                   "<style>\n.hero { background-image: url(\"images/a.jpg\"); }\n</style><p>x",
                   {"images/a.jpg"},
                   "<style>\n.hero { background-image: url(\"R/a.jpg\"); }\n</style><p>x"},
        CssVmlCase{"vml_fill_in_conditional_comment",
                   "<td><!--[if gte mso 9]><v:rect fill=\"true\"><v:fill type=\"tile\" "
                   "src=\"img/bg.jpg\" color=\"#222\" /><v:textbox><![endif]--><p>Hi</td>",
                   {"img/bg.jpg"},
                   "<td><!--[if gte mso 9]><v:rect fill=\"true\"><v:fill type=\"tile\" "
                   "src=\"R/bg.jpg\" color=\"#222\" /><v:textbox><![endif]--><p>Hi</td>"},
        CssVmlCase{"vml_image_unquoted_and_revealed_comment",
                   "<!--[if mso]><V:Image src=v.png style='width:600px'/><![endif]-->"
                   "<!--[if !mso]><!--><div style=background:url(w.png)>x</div><!--<![endif]-->",
                   {"v.png", "w.png"},
                   "<!--[if mso]><V:Image src=\"R/v.png\" style='width:600px'/><![endif]-->"
                   "<!--[if !mso]><!--><div style=background:url(R/w.png)>x</div><!--<![endif]-->"},
        CssVmlCase{"windows_separators",
                   "<div style=\"background-image: url( images\\bg.jpg )\">",
                   {"images/bg.jpg"},
                   "<div style=\"background-image: url( R/bg.jpg )\">"},
        CssVmlCase{"same_file_from_attribute_css_and_vml",
                   "<table background=\"img/a.png\" style=\"background:url('img/a.png')\">"
                   "<tr><td><!--[if mso]><v:image src=\"img/a.png\"/><![endif]--></td></tr>"
                   "</table><style>b{background:url(img/a.png)}</style>",
                   {"img/a.png"},
                   "<table background=\"R/a.png\" style=\"background:url('R/a.png')\">"
                   "<tr><td><!--[if mso]><v:image src=\"R/a.png\"/><![endif]--></td></tr>"
                   "</table><style>b{background:url(R/a.png)}</style>"},
        CssVmlCase{"entity_quotes_and_names_that_need_escapes",
                   "<p style=\"background:url(&quot;my pic&amp;(1).png&quot;)\">",
                   {"my pic&(1).png"},
                   "<p style=\"background:url(&quot;R/my\\000020pic\\000026\\0000281\\000029"
                   ".png&quot;)\">"},
        CssVmlCase{"not_files_and_not_urls",
                   "<style>/* url(a.png) */ b{content:'url(b.png)'} i{x:myurl(c.png)} "
                   "u{mask:url(#m); background:url(data:image/png;base64,AA==), url(cid:x)}"
                   "</style><p style=\"background:url(//cdn/x.png)\">"
                   "<!-- plain comment <img src=d.png> -->",
                   {},
                   "<style>/* url(a.png) */ b{content:'url(b.png)'} i{x:myurl(c.png)} "
                   "u{mask:url(#m); background:url(data:image/png;base64,AA==), url(cid:x)}"
                   "</style><p style=\"background:url(//cdn/x.png)\">"
                   "<!-- plain comment <img src=d.png> -->"}),
    [](const auto& info) { return std::string(info.param.name); });

// A url written with escapes reads back as the name it stands for, in a style attribute and
// in a <style> block, whatever quote surrounds it.
TEST(Walker, CssValuesRoundTripThroughEscapes) {
    const QString name = u"/r/a \"b\" 'c' (d) <e>&f.png"_s;
    const QString html = "<p style='background:url(x.png)'><p style=\"x:url(&#39;y.png&#39;)\">"
                         "<style>a{b:url(\"z.png\")}</style>";
    const ReferenceWalker w(html);
    ASSERT_EQ(w.references().size(), 3u);
    std::vector<Edit> edits;
    for (const Reference& r : w.references())
        edits.push_back(Edit::of(r, name));
    const ReferenceWalker again(w.rewrite(edits));
    ASSERT_EQ(again.references().size(), 3u);
    for (const Reference& r : again.references())
        EXPECT_EQ(r.value, name);
}

// ---- what the program does with them ------------------------------------------------------

TEST(ObjectList, LocalFilesOnceInDocumentOrder) {
    const QString html = "<img src='b/Z.png'><div background='a.gif'><img src='http://h/x.png'>"
                         "<img src='b\\z.png'><img src='cid:1'><img src='B/z.png'>"
                         "<img src='b/Z.png'>";
    EXPECT_EQ(objectList(html, "/m/", P),
              QStringList({"/m/b/Z.png", "/m/a.gif", "/m/b/z.png", "/m/B/z.png"}));
    EXPECT_EQ(objectList(html, "c:\\m\\", W), QStringList({"c:\\m\\b\\z.png", "c:\\m\\a.gif"}));
}

class Redirect : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        ASSERT_TRUE(QDir(m_dir.path()).mkpath("base/img"));
        ASSERT_TRUE(QDir(m_dir.path()).mkpath("base/other"));
        ASSERT_TRUE(QDir(m_dir.path()).mkpath("restore"));
        base = m_dir.path() + "/base/";
        restore = m_dir.path() + "/restore/";
    }
    QStringList allFiles() const {
        QStringList files;
        QDirIterator it(m_dir.path(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            files << QDir(m_dir.path()).relativeFilePath(it.next());
        files.sort();
        return files;
    }

    QTemporaryDir m_dir;
    QString base;
    QString restore;
};

TEST_F(Redirect, LoadCopiesLastWinsAndRewritesOnlyValues) {
    writeBytes(base + "img/a.png", "first");
    writeBytes(base + "other/a.png", "second");
    writeBytes(base + "b.gif", "gif");
    const QString html =
        QString::fromUtf8("<p>Café</p>\n<img src=\"img/a.png\" alt=x>\n<div background=other/a.png>"
                          "<img src=\"https://h/a.png\"><img src='b.gif'>");
    const LoadResult r = redirectForLoad(html, base, restore, P);
    EXPECT_TRUE(r.changed);
    EXPECT_EQ(r.html, QString::fromUtf8("<p>Café</p>\n<img src=\"%1a.png\" alt=x>\n"
                                        "<div background=\"%1a.png\"><img src=\"https://h/a.png\">"
                                        "<img src='%1b.gif'>")
                          .arg(restore));
    EXPECT_EQ(readBytes(restore + "a.png"), "second");
    EXPECT_EQ(readBytes(restore + "b.gif"), "gif");
    EXPECT_EQ(r.copied, QStringList({restore + "a.png", restore + "b.gif"}));

    // Opening the result again: the files already are the targets and must survive.
    const LoadResult again = redirectForLoad(r.html, base, restore, P);
    EXPECT_FALSE(again.changed);
    EXPECT_EQ(again.html, r.html);
    EXPECT_EQ(readBytes(restore + "a.png"), "second");
    // The same file under another spelling of its path.
    const LoadResult dotted = redirectForLoad("<img src='./b.gif'>", restore, restore, P);
    EXPECT_EQ(dotted.html, "<img src='" + restore + "b.gif'>");
    EXPECT_EQ(readBytes(restore + "b.gif"), "gif");
}

TEST_F(Redirect, MissingSourceKeepsTheCopyFromTheMessage) {
    writeBytes(restore + "gone.png", "from message");
    const LoadResult r = redirectForLoad("<img src=gone.png>", base, restore, P);
    EXPECT_TRUE(r.changed);
    EXPECT_EQ(r.html, "<img src=\"" + restore + "gone.png\">");
    EXPECT_TRUE(r.copied.isEmpty());
    EXPECT_EQ(readBytes(restore + "gone.png"), "from message");
}

TEST_F(Redirect, CraftedNamesNeverWriteOutside) {
    writeBytes(m_dir.path() + "/x.png", "outside");
    writeBytes(base + "ok.png", "ok");
    const QStringList before = allFiles();
    const QString html = "<img src='..'><img src='a/../../x.png'><img src='img/..'>"
                         "<img src='../restore/../x.png'><img src='ok.png'>";
    const LoadResult r = redirectForLoad(html, base, restore.chopped(1), P);
    QStringList expected = before;
    expected << "restore/ok.png"
             << "restore/x.png";
    expected.sort();
    EXPECT_EQ(allFiles(), expected);
    EXPECT_TRUE(
        r.html.startsWith("<img src='..'><img src='" + restore + "x.png'><img src='img/..'>"));
}

TEST_F(Redirect, PreviewPointsAtTheRestoreFolderOnly) {
    writeBytes(restore + "my pic.png", "x");
    const QString html = "<img src='C:\\Pics\\A.png'><img src='my%20pic.png'>"
                         "<img src='http://h/A.png'><img src='data:,x'>";
    EXPECT_EQ(redirectForPreview(html, restore, P),
              "<img src='" + restore + "A.png'><img src='" + restore +
                  "my pic.png'><img src='http://h/A.png'><img src='data:,x'>");
    EXPECT_EQ(redirectForPreview("<img src='C:\\Pics\\A.png'>", "d:\\r", W),
              "<img src='d:\\r\\a.png'>");
    EXPECT_EQ(allFiles(), QStringList{"restore/my pic.png"});
}

} // namespace
