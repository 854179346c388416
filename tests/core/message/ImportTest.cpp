#include "core/TestFiles.h"
#include "core/app/TextFile.h"
#include "core/message/DocumentConverter.h"
#include "core/message/EncapsulatedRtf.h"
#include "core/message/MailImport.h"
#include "core/message/TextImport.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace quillora;
using namespace Qt::StringLiterals;

namespace {

// --- The rebuild of a converted mail --------------------------------------------------------

struct RebuildCase {
    const char* name;
    QString converted;
    QString rebuilt;
};

void PrintTo(const RebuildCase& c, std::ostream* os) {
    *os << c.name;
}

class MailRebuildTest : public testing::TestWithParam<RebuildCase> {};

TEST_P(MailRebuildTest, GivesTheDocumentWithItsHeaderInPlace) {
    EXPECT_EQ(DocumentConverter::rebuildMailHtml(GetParam().converted), GetParam().rebuilt);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MailRebuildTest,
    testing::Values(
        RebuildCase{
            "two_line_msg_body_rule_loses_its_border",
            u"<html >\r\n<STYLE>\r\n#msg_body {\r\n  border-width: 1px;\r\n  color: red;\r\n"
            "}\r\n</STYLE>\r\n</html>\r\n"_s,
            u"<html >\r\n<STYLE>\r\n#msg_body {\r\n  border-width: 0px;\r\n  color: red;\r\n"
            "}\r\n</STYLE>\r\n</html>\r\n"_s},
        RebuildCase{"one_line_msg_body_rule_is_left_alone",
                    u"<html >\r\n<STYLE>#msg_body { border-width: 1px; }</STYLE>\r\n</html>\r\n"_s,
                    u"<html >\r\n<STYLE>#msg_body { border-width: 1px; }</STYLE>\r\n</html>\r\n"_s},
        RebuildCase{
            "header_block_replaces_head_and_generator_goes",
            u"<meta charset=\"utf-8\">\n<title>Offer</title>\n<!DOCTYPE html>\n<HTML>\n<HEAD>"
            "<META content=\"MSHTML 6.00.2900.2802\" name=GENERATOR><STYLE></STYLE>\n"
            "</HEAD>\n<BODY>Hi</BODY>\n</HTML>\nafter the end\n"_s,
            u"<!DOCTYPE html>\r\n<HTML>\r\n<meta charset=\"utf-8\">\r\n<title>Offer</title>"
            "\r\n\r\n\r\n\r\n<BODY>Hi</BODY>\r\n</HTML>\r\n"_s},
        RebuildCase{"lower_case_head_takes_the_header_too",
                    u"<title>S</title>\r\n<html lang=\"it\"><head><style>p{}</style></head>\r\n"
                    "<body>x</body>\r\n</html>"_s,
                    u"<html lang=\"it\"><title>S</title>\r\n\r\n<style>p{}</style>\r\n"
                    "<body>x</body>\r\n</html>\r\n"_s},
        RebuildCase{"headless_mail_gets_the_header_after_its_html_tag",
                    u"<title>S</title>\n<html><body>x</body></html>"_s,
                    u"<html><title>S</title>\r\n<body>x</body></html>\r\n"_s},
        RebuildCase{"fragment_without_document_start_is_kept_whole", u"<p>one</p>\n<p>two</p>"_s,
                    u"<p>one</p>\r\n<p>two</p>\r\n"_s}));

TEST(MailRebuild, IsWrittenBackAsUtf16) {
    QTemporaryDir dir;
    const QString path = dir.filePath(u"OUTLOOK.HTML"_s);
    writeBytes(
        path,
        "<title>\xE2\x82\xAC</title>\n<html >\n<HEAD></HEAD><body>\xC3\xA8</body>\n</html>\n");
    ASSERT_TRUE(DocumentConverter::RicostruisciOutlook(path));
    const QByteArray bytes = readBytes(path);
    EXPECT_TRUE(bytes.startsWith("\xFF\xFE")) << bytes.toHex().left(8).toStdString();
    EXPECT_EQ(TextFile::decode(bytes).text,
              u"<html >\r\n<title>\u20AC</title>\r\n\r\n<body>\u00E8</body>\r\n</html>\r\n"_s);
}

// --- Text import ----------------------------------------------------------------------------

TEST(TextImport, TagsAndEntitiesStayText) {
    const QString html = TextImport::htmlFromText(u"a <b>bold</b> & &amp;\r\nnext\nlast"_s);
    EXPECT_TRUE(html.contains(u"<body>a &lt;b&gt;bold&lt;/b&gt; &amp; &amp;amp;<br>\r\nnext<br>\r\n"
                              "last</body>"_s))
        << html.toStdString();
    EXPECT_FALSE(html.contains(u"<b>"_s));
}

// --- HTML wrapped in RTF --------------------------------------------------------------------

struct RtfCase {
    const char* name;
    QByteArray rtf;
    QString html;
};

void PrintTo(const RtfCase& c, std::ostream* os) {
    *os << c.name;
}

class EncapsulatedRtfTest : public testing::TestWithParam<RtfCase> {};

TEST_P(EncapsulatedRtfTest, GivesTheHtmlBack) {
    const std::optional<QString> html = EncapsulatedRtf::extractHtml(GetParam().rtf);
    ASSERT_TRUE(html);
    EXPECT_EQ(*html, GetParam().html);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, EncapsulatedRtfTest,
    testing::Values(
        RtfCase{"tags_text_and_rtf_only_runs",
                R"({\rtf1\ansi\ansicpg1252\fromhtml1 \deff0{\fonttbl{\f0 Arial;}})"
                R"({\*\htmltag19 <html>}{\*\htmltag34 <head>}\htmlrtf {\b RTF only}\htmlrtf0 )"
                R"({\*\htmltag64 <p class="a">}Caf\'e9 \{x\}\par{\*\htmltag72 </p>}})",
                u"<html><head><p class=\"a\">Caf\u00E9 {x}\r\n</p>"_s},
        RtfCase{"unicode_escapes_skip_their_stand_in",
                R"({\rtf1\ansi\fromhtml1 {\*\htmltag64 <p>}\u8364?\uc2\u-3844\'3f\'3f!})",
                u"<p>\u20AC\uF0FC!"_s},
        RtfCase{"code_page_932_bytes",
                "{\\rtf1\\ansi\\ansicpg932\\fromhtml1 {\\*\\htmltag64 <p>}\\'82\\'a0\\'93\\'fa}",
                u"<p>\u3042\u65E5"_s},
        RtfCase{
            "line_breaks_inside_tag_groups",
            R"({\rtf1\ansi\fromhtml1 {\*\htmltag241 <style>\par p \{color:red\}\par </style>}})",
            u"<style>\r\np {color:red}\r\n</style>"_s}));

TEST(EncapsulatedRtf, PlainRtfCarriesNoHtml) {
    EXPECT_FALSE(EncapsulatedRtf::extractHtml(R"({\rtf1\ansi {\b bold}\par})"));
    EXPECT_FALSE(EncapsulatedRtf::extractHtml("<html>not rtf</html>"));
}

// --- Mails ----------------------------------------------------------------------------------

QByteArray dataFile(const char* relative) {
    return readBytes(QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/") + QLatin1String(relative));
}

struct MailCase {
    const char* file;
    MailImport::Mail::BodyFrom bodyFrom;
    int pictures;
    int attachments;
    QString words;      // found in the body
    QString attachment; // one attachment's file name ("" when none)
};

void PrintTo(const MailCase& c, std::ostream* os) {
    *os << c.file;
}

class MailParseTest : public testing::TestWithParam<MailCase> {};

TEST_P(MailParseTest, FindsBodyPicturesAndAttachments) {
    const MailCase& c = GetParam();
    const std::optional<MailImport::Mail> mail = MailImport::parse(dataFile(c.file));
    ASSERT_TRUE(mail);
    EXPECT_EQ(mail->bodyFrom, c.bodyFrom);
    EXPECT_TRUE(mail->html.contains(c.words)) << mail->html.left(2000).toStdString();
    EXPECT_FALSE(mail->html.contains(QChar(0xFFFD)));
    ASSERT_EQ(int(mail->pictures.size()), c.pictures);
    for (const MailImport::Resource& p : mail->pictures) {
        // Every picture is shown by its own file name, never by its content id any more.
        EXPECT_TRUE(mail->html.contains(u"\""_s + p.fileName + u'"')) << p.fileName.toStdString();
        EXPECT_FALSE(p.bytes.isEmpty());
    }
    EXPECT_FALSE(mail->html.contains(u"cid:"_s, Qt::CaseInsensitive));
    ASSERT_EQ(int(mail->attachments.size()), c.attachments);
    if (!QString(c.attachment).isEmpty()) {
        const bool found = std::any_of(mail->attachments.begin(), mail->attachments.end(),
                                       [&](const auto& a) { return a.fileName == c.attachment; });
        EXPECT_TRUE(found) << c.attachment.toStdString();
    }
}

using From = MailImport::Mail::BodyFrom;
INSTANTIATE_TEST_SUITE_P(
    DataFiles, MailParseTest,
    testing::Values(MailCase{"eml/inline-cid-images-iso-8859-1.eml", From::Html, 2, 1,
                             u"MIME E-mail message composing"_s, u"attachment.txt"_s},
                    MailCase{"eml/attachments-docx-pdf-odt-png-eml.eml", From::Html, 0, 5,
                             u"ligne 2"_s, u"Cours-Tutoriels-Serge-Tah\u00E9-1568x268.png"_s},
                    MailCase{"eml/windows-1252-qp-inline-and-attachments.eml", From::Html, 1, 6,
                             u"Test email"_s, u"attachment4f.txt"_s},
                    MailCase{"eml/iso-8859-1-newsletter-2002.eml", From::Html, 0, 0,
                             u"Manage Your Finances Better"_s, u""_s},
                    MailCase{"eml/related-cid-watch-html-attachment.eml", From::Html, 2, 1,
                             u"nyan cat"_s, u"notes.txt"_s},
                    MailCase{"eml/multipart-alternative-utf8-newsletter.eml", From::Html, 0, 0,
                             u"overwhelmed by the selection of multivitamins"_s, u""_s}));

// Legacy charsets with transfer-encoding names no standard knows; the text part alone.
struct CharsetCase {
    const char* name;
    QByteArray mail;
    QString words;
};

void PrintTo(const CharsetCase& c, std::ostream* os) {
    *os << c.name;
}

class MailCharsetTest : public testing::TestWithParam<CharsetCase> {};

TEST_P(MailCharsetTest, KeepsEveryLetter) {
    const std::optional<MailImport::Mail> mail = MailImport::parse(GetParam().mail);
    ASSERT_TRUE(mail);
    EXPECT_TRUE(mail->html.contains(GetParam().words)) << mail->html.toStdString();
    EXPECT_FALSE(mail->html.contains(QChar(0xFFFD)));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MailCharsetTest,
    testing::Values(
        CharsetCase{"windows_1251_8bits",
                    "Subject: x\r\nMIME-Version: 1.0\r\nContent-Type: text/plain; "
                    "charset=windows-1251\r\nContent-Transfer-Encoding: 8bits\r\n\r\n"
                    "\xCF\xF0\xE8\xE2\xE5\xF2 <\xEC\xE8\xF0>\r\n",
                    u"\u041F\u0440\u0438\u0432\u0435\u0442 &lt;\u043C\u0438\u0440&gt;"_s},
        CharsetCase{"iso_8859_1_7_bit_html",
                    "Subject: x\r\nContent-Type: text/html; charset=\"ISO-8859-1\"\r\n"
                    "Content-Transfer-Encoding: 7-bit\r\n\r\n<p>Caf\xE9 \xE0 la cr\xE8me</p>\r\n",
                    u"<p>Caf\u00E9 \u00E0 la cr\u00E8me</p>"_s},
        CharsetCase{"windows_1252_quoted_printable_euro",
                    "Content-Type: text/html; charset=windows-1252\r\n"
                    "Content-Transfer-Encoding: quoted-printable\r\n\r\n<b>=80 10</b>\r\n",
                    u"<b>\u20AC 10</b>"_s}));

TEST(MailParse, NamelessAndCraftedFileNamesStayInTheFolder) {
    const QByteArray eml =
        "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Type: text/html\r\n\r\n"
        "<img src=\"cid:p1\"><img src=\"cid:p2\">\r\n--b\r\nContent-Type: image/gif\r\n"
        "Content-ID: <p1>\r\nContent-Disposition: inline; filename=\"../../etc/x.gif\"\r\n\r\n"
        "GIF89a\r\n--b\r\nContent-Type: image/png\r\nContent-ID: <p2>\r\n\r\nPNG\r\n--b\r\n"
        "Content-Type: application/octet-stream\r\nContent-Disposition: attachment\r\n\r\n"
        "data\r\n--b--\r\n";
    const std::optional<MailImport::Mail> mail = MailImport::parse(eml);
    ASSERT_TRUE(mail);
    ASSERT_EQ(mail->pictures.size(), 2u);
    EXPECT_EQ(mail->pictures[0].fileName, u"x.gif"_s);
    EXPECT_EQ(mail->pictures[1].fileName, u"image002.png"_s);
    ASSERT_EQ(mail->attachments.size(), 1u);
    EXPECT_EQ(mail->attachments[0].fileName, u"part1.bin"_s);

    QTemporaryDir dir;
    const MailImport::Written w = MailImport::writeFiles(*mail, dir.path());
    ASSERT_TRUE(w.ok()) << w.error.toStdString();
    EXPECT_EQ(w.pictures.first(), dir.path() + u"/x.gif"_s);
    EXPECT_EQ(readBytes(dir.path() + u"/attachments/part1.bin"_s), QByteArray("data"));
}

struct NameCase {
    QString proposed;
    QString name;
};

class SafeNameTest : public testing::TestWithParam<NameCase> {};

TEST_P(SafeNameTest, NamesAFileInTheFolder) {
    EXPECT_EQ(MailImport::safeName(GetParam().proposed, u"image001"_s, u"image/jpeg"_s),
              GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Cases, SafeNameTest,
                         testing::Values(NameCase{u"C:\\Mail\\logo.jpg"_s, u"logo.jpg"_s},
                                         NameCase{u".."_s, u"image001.jpg"_s},
                                         NameCase{u""_s, u"image001.jpg"_s},
                                         NameCase{u".profile"_s, u"profile"_s},
                                         NameCase{u"a:b?*.jpg"_s, u"a_b__.jpg"_s},
                                         NameCase{u"50% & #1's.jpg"_s, u"50_ _ _1_s.jpg"_s},
                                         NameCase{u"outlook.html"_s, u"_outlook.html"_s},
                                         NameCase{u"x\u0001.jpg"_s, u"image001.jpg"_s}));

// --- The converter's answers that need no outside program ------------------------------------

TEST(DocumentConverter, ReportsWhatItCannotDo) {
    QTemporaryDir dir;
    const QString doc = dir.filePath(u"letter.docx"_s);
    writeBytes(doc, "PK");
    DocumentConverter::Settings missing;
    missing.soffice = dir.filePath(u"no-such-office"_s);
    missing.msgconvert = dir.filePath(u"no-such-msgconvert"_s);
    const QString out = dir.filePath(u"out/WORD.HTML"_s);

    DocumentConverter::Result r =
        DocumentConverter::Converti(doc, out, u"-cHTML -tc3 -DPI75"_s, missing);
    EXPECT_EQ(r.failure, DocumentConverter::Failure::ToolMissing);
    EXPECT_EQ(r.package, u"libreoffice-writer-nogui"_s);
    EXPECT_TRUE(DocumentConverter::describe(r).contains(u"libreoffice-writer-nogui"_s));

    const QString msg = dir.filePath(u"mail.msg"_s);
    writeBytes(msg, "x");
    r = DocumentConverter::Converti(msg, out, u"-c HTML -body "_s, missing);
    EXPECT_EQ(r.failure, DocumentConverter::Failure::ToolMissing);
    EXPECT_EQ(r.package, u"libemail-outlook-message-perl"_s);

    r = DocumentConverter::Converti(doc, out, u"-cPDF"_s, missing);
    EXPECT_EQ(r.failure, DocumentConverter::Failure::BadOptions);
    r = DocumentConverter::Converti(dir.filePath(u"photo.psd"_s), out, u"-cHTML"_s, missing);
    EXPECT_EQ(r.failure, DocumentConverter::Failure::UnknownType);
    r = DocumentConverter::Converti(dir.filePath(u"gone.eml"_s), out, u"-c HTML -body "_s, missing);
    EXPECT_EQ(r.failure, DocumentConverter::Failure::Unreadable);
    EXPECT_FALSE(QFileInfo::exists(out));
}

TEST(DocumentConverter, MailBecomesUtf16HtmlWithPicturesBeside) {
    QTemporaryDir dir;
    const DocumentConverter::Result r = DocumentConverter::Converti(
        QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/eml/inline-cid-images-iso-8859-1.eml"),
        dir.filePath(u"OUTLOOK.HTML"_s), u"-c HTML -body "_s);
    ASSERT_TRUE(r.ok()) << DocumentConverter::describe(r).toStdString();
    EXPECT_TRUE(readBytes(r.output).startsWith("\xFF\xFE"));
    EXPECT_EQ(r.subject, u"Testing MIME E-mail composing with cid"_s);
    ASSERT_EQ(r.pictures.size(), 2);
    for (const QString& p : r.pictures)
        EXPECT_TRUE(QFileInfo(p).isFile()) << p.toStdString();
    ASSERT_EQ(r.attachments.size(), 1);
    EXPECT_TRUE(r.attachments.first().endsWith(u"/attachments/attachment.txt"_s));
}

} // namespace
