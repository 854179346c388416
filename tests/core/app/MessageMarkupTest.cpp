#include "core/app/MessageMarkup.h"
#include "core/TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace quillora;
using namespace quillora::bMessage;

namespace {

TEST(MessageMarkup, AreasHaveTheirFixedFonts) {
    EXPECT_EQ(instructionMarkup("Save?"),
              "<TextBlock FontSize='14pt' FontFamily='Open Sans' FontWeight='Bold'>Save?"
              "</TextBlock>");
    EXPECT_EQ(contentMarkup("one\r\ntwo\r\nthree"),
              "<TextBlock FontSize='9pt' FontFamily='Open Sans'>one<LineBreak/>two<LineBreak/>"
              "three</TextBlock>");
    EXPECT_EQ(footerMarkup("note"),
              "<TextBlock FontSize='10pt' FontFamily='Open Sans'>note</TextBlock>");
}

TEST(MessageMarkup, EscapingOrderAndScope) {
    // "&" first, or the references made for "<" would be escaped again.
    EXPECT_EQ(escapeText("a & <b>"), "a &amp; &lt;b&gt;");
    EXPECT_EQ(escapeText("&lt;"), "&amp;lt;");
    EXPECT_EQ(escapeTitle("R&D <draft>"), "R&D &lt;draft&gt;");
    EXPECT_EQ(footerMarkup("R&D <x>"),
              "<TextBlock FontSize='10pt' FontFamily='Open Sans'>R&D &lt;x&gt;</TextBlock>");
    EXPECT_EQ(instructionMarkup("<LineBreak/>"),
              "<TextBlock FontSize='14pt' FontFamily='Open Sans' FontWeight='Bold'>"
              "&lt;LineBreak/&gt;</TextBlock>");
    // Only the pair is a line break in the markup; single CR or LF stay as they are.
    EXPECT_EQ(contentMarkup("a\nb\rc"),
              "<TextBlock FontSize='9pt' FontFamily='Open Sans'>a\nb\rc</TextBlock>");
}

class ContentRoundTrip : public testing::TestWithParam<const char*> {};

// Whatever the caller typed is what the box shows, line breaks as "\n".
TEST_P(ContentRoundTrip, ParsedMarkupShowsTheTypedText) {
    const QString typed = QString::fromUtf8(GetParam());
    QString shown = typed;
    shown.replace("\r\n", "\n");
    EXPECT_EQ(parseTextBlock(contentMarkup(typed)).plainText(), shown);
    EXPECT_EQ(parseTextBlock(instructionMarkup(typed)).plainText(), shown);
}

INSTANTIATE_TEST_SUITE_P(Texts, ContentRoundTrip,
                         testing::Values("a & <b>", "&amp; stays &amp;", "x<LineBreak/>y",
                                         "one\r\ntwo\r\nthree", "\r\n\r\n", "<Hyperlink>",
                                         "caf\xC3\xA9 \xE2\x82\xAC 100", "&#65;", ""));

TEST(MessageMarkup, ParsesFontsLinksAndBrokenMarkup) {
    const TextBlock title = parseTextBlock(instructionMarkup("T"));
    EXPECT_EQ(title.pointSize, 14);
    EXPECT_TRUE(title.bold);
    EXPECT_EQ(title.fontFamily, "Open Sans");
    const TextBlock content = parseTextBlock(contentMarkup("c"));
    EXPECT_EQ(content.pointSize, 9);
    EXPECT_FALSE(content.bold);
    EXPECT_EQ(parseTextBlock(footerMarkup("f")).pointSize, 10);

    const TextBlock linked = parseTextBlock(
        u"<TextBlock>See <Hyperlink NavigateUri='https://x.example/?a=1&amp;b=2'>the site"
        "</Hyperlink>.</TextBlock>");
    ASSERT_EQ(linked.runs.size(), 3);
    EXPECT_EQ(linked.runs[1], (TextRun{"the site", "https://x.example/?a=1&b=2"}));
    EXPECT_EQ(linked.runs[2], (TextRun{".", ""}));

    // A footer keeps a bare "&"; an unterminated tag is text.
    EXPECT_EQ(parseTextBlock(footerMarkup("Tom & Jerry &co;")).plainText(), "Tom & Jerry &co;");
    EXPECT_EQ(parseTextBlock(u"<TextBlock>a <b").plainText(), "a <b");
    EXPECT_EQ(parseTextBlock(u"<TextBlock FontSize='huge'>x</TextBlock>").pointSize, 0);
    EXPECT_EQ(titleText(escapeTitle("A <b> & c")), "A <b> & c");
}

TEST(MessageMarkup, ImageToEditFollowsTheSource) {
    const QString work = QDir::cleanPath(QDir::tempPath()) + "/elab/";
    EXPECT_EQ(imageFileToEdit("http://x.example/a.jpg", work), "");
    EXPECT_EQ(imageFileToEdit("HTTP://x.example/a.jpg", work), "");
    EXPECT_EQ(imageFileToEdit("https://x.example/a.jpg", work), "");
    EXPECT_EQ(imageFileToEdit("", work), "");
    EXPECT_EQ(imageFileToEdit("images/pic.jpg", work),
              QDir::toNativeSeparators(work) + QDir::toNativeSeparators("images/pic.jpg"));
    EXPECT_EQ(imageFileToEdit("images\\pic.jpg", work),
              QDir::toNativeSeparators(work + "images/pic.jpg"));
    // The working folder may come without its final separator.
    EXPECT_EQ(imageFileToEdit("pic.jpg", QDir::tempPath() + "/elab"),
              QDir::toNativeSeparators(QDir::tempPath() + "/elab/pic.jpg"));
    EXPECT_EQ(imageFileToEdit("FILE://C:/img/a.png", work),
              QDir::toNativeSeparators("C:/img/a.png"));
    EXPECT_EQ(imageFileToEdit("\\\\server\\share\\a.png", work), "\\\\server\\share\\a.png");
#ifndef Q_OS_WIN
    EXPECT_EQ(imageFileToEdit("file:///home/u/a.png", work), "/home/u/a.png");
    EXPECT_EQ(imageFileToEdit("/home/u/a.png", work), "/home/u/a.png");
#endif
}

TEST(MessageMarkup, ImageFileUrlIsDecodedOnlyWhenThatFileExists) {
    QTemporaryDir dir;
    writeBytes(dir.filePath("my pic.png"));
    const QString encoded = "file://" + dir.path() + "/my%20pic.png";
#ifndef Q_OS_WIN
    EXPECT_EQ(imageFileToEdit(encoded, "/elsewhere/"), dir.path() + "/my pic.png");
    EXPECT_EQ(imageFileToEdit("file://" + dir.path() + "/100%25.png", "/w/"),
              dir.path() + "/100%25.png");
#endif
}

} // namespace
