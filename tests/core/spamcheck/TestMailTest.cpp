#include "core/spamcheck/TestMail.h"

#include "core/TestFiles.h"

#include <QTemporaryDir>

using namespace quillora;

namespace {

const QString kPng =
    QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/html/colorlib-16/images/002-play-button.png");

Account sender() {
    Account a;
    a.displayName = QStringLiteral("Anna Rossi");
    a.address = QStringLiteral("anna@example.com");
    return a;
}

// The composed e-mail read back by vmime's parser, with its bytes.
struct Parsed {
    QByteArray eml;
    vmime::shared_ptr<vmime::message> msg = vmime::make_shared<vmime::message>();
    QString header(const char* name) const {
        auto f = msg->getHeader()->findField(name);
        return f ? QString::fromStdString(f->getValue()->generate()) : QString();
    }
};

Parsed roundTrip(const TestMail::Content& content, const TestMail::Options& options) {
    const TestMail::Result r = TestMail::compose(content, options);
    Parsed p;
    EXPECT_TRUE(r.ok()) << r.error.toStdString();
    if (!r.ok())
        return p;
    p.eml = TestMail::toEml(*r.message);
    p.msg->parse(p.eml.toStdString());
    return p;
}

TEST(TestMailRead, TakesLinesByPositionAndSection) {
    const QStringList lines = {
        QStringLiteral("[<INI-SUBJ>]  Spring offer  [<END-SUBJ>]"),
        QStringLiteral("[<INI-PRIO>] HI [<END-PRIO>]"),
        QStringLiteral("[<INI-ALLG>]"),
        QStringLiteral("C:\\docs\\price list.pdf"),
        QStringLiteral("  /home/a/b.txt "),
        QStringLiteral(" [<END-ALLG>] "),
        QStringLiteral("[<INI-MESS>]"),
        QStringLiteral("<html>  "),
        QStringLiteral("  <body>[<END-MESS>]</body>"),
        QStringLiteral("</html>"),
        QStringLiteral("  [<END-MESS>]"),
        QStringLiteral("[<INI-OBJECT>]"),
    };
    const TestMail::ReadResult r = TestMail::readLines(lines);
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_EQ(r.content.subject, QStringLiteral("Spring offer"));
    EXPECT_EQ(r.content.priority, QStringLiteral("HI"));
    EXPECT_EQ(r.content.attachments, QStringList({QStringLiteral("C:\\docs\\price list.pdf"),
                                                  QStringLiteral("/home/a/b.txt")}));
    EXPECT_EQ(r.content.body, QStringLiteral("<html>  \r\n  <body>[<END-MESS>]</body>\r\n</html>"));
}

TEST(TestMailRead, FileWithoutBodySectionIsRefused) {
    EXPECT_FALSE(TestMail::readLines({QStringLiteral("[<INI-SUBJ>]x[<END-SUBJ>]"),
                                      QStringLiteral("[<INI-PRIO>]NR[<END-PRIO>]"),
                                      QStringLiteral("[<END-ALLG>]"), QStringLiteral("<p>")})
                     .ok());
    QTemporaryDir dir;
    EXPECT_FALSE(TestMail::readFile(dir.filePath(QStringLiteral("none.mss"))).ok());
}

TEST(TestMailCompose, ImageTwiceIsOnePartAndOneCidHttpStaysRemote) {
    QTemporaryDir dir;
    ASSERT_TRUE(QFile::copy(kPng, dir.filePath(QStringLiteral("logo.png"))));
    TestMail::Content c;
    c.subject = QStringLiteral("Caffè — offerta");
    c.body = QStringLiteral(
                 "<html><body><img src=\"logo.png\"><table background=\"file://%1/logo.png\">"
                 "<tr><td>Hello <b>world</b></td></tr></table>"
                 "<img src=\"http://example.com/remote.png\"><img src=\"gone.png\"></body></html>")
                 .arg(dir.path());
    TestMail::Options o;
    o.sender = sender();
    o.recipientAddress = QStringLiteral("bob@example.org");
    o.baseFolder = dir.path() + u'/';
    const TestMail::Result r = TestMail::compose(c, o);
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_EQ(r.inlineImages, 1);
    EXPECT_EQ(r.missingImages, QStringList(dir.filePath(QStringLiteral("gone.png"))));
    EXPECT_EQ(r.html.count(QStringLiteral("cid:")), 2);
    const qsizetype a = r.html.indexOf(QStringLiteral("cid:"));
    const qsizetype b = r.html.indexOf(QStringLiteral("cid:"), a + 1);
    EXPECT_EQ(r.html.mid(a, r.html.indexOf(u'"', a) - a),
              r.html.mid(b, r.html.indexOf(u'"', b) - b));
    EXPECT_TRUE(r.html.contains(QStringLiteral("src=\"http://example.com/remote.png\"")));
    EXPECT_TRUE(r.html.contains(QStringLiteral("src=\"gone.png\"")));

    Parsed p;
    p.eml = TestMail::toEml(*r.message);
    p.msg->parse(p.eml.toStdString());
    vmime::messageParser mp(p.msg);
    vmime::shared_ptr<const vmime::htmlTextPart> html;
    for (size_t i = 0; i < mp.getTextPartCount() && !html; ++i)
        html = vmime::dynamicCast<const vmime::htmlTextPart>(mp.getTextPartAt(i));
    ASSERT_TRUE(html);
    EXPECT_EQ(html->getObjectCount(), 1u);
    const std::string id = html->getObjectAt(0)->getReferenceId();
    EXPECT_TRUE(r.html.contains(QString::fromStdString(id)));
    std::string plain;
    vmime::utility::outputStreamStringAdapter os(plain);
    html->getPlainText()->extract(os);
    EXPECT_EQ(QString::fromStdString(plain), QStringLiteral("Hello world"));
    EXPECT_EQ(QString::fromStdString(mp.getSubject().getConvertedText(vmime::charset("utf-8"))),
              c.subject);
    EXPECT_TRUE(p.eml.contains("\r\n\r\n")) << "CR LF line ends";
}

TEST(TestMailCompose, AttachmentIsNamedAfterTheLastBackslash) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("C:\\docs\\price list.pdf"));
    writeBytes(path, "%PDF-1.4\n%%EOF\n");
    TestMail::Content c;
    c.attachments << path;
    c.body = QStringLiteral("<p>x</p>");
    TestMail::Options o;
    o.sender = sender();
    const Parsed p = roundTrip(c, o);
    EXPECT_TRUE(p.header("To").contains(u"anna@example.com")) << "no recipient: the sender";
    vmime::messageParser mp(p.msg);
    ASSERT_EQ(mp.getAttachmentCount(), 1u);
    EXPECT_EQ(mp.getAttachmentAt(0)->getName().getConvertedText(vmime::charset("utf-8")),
              "price list.pdf");

    c.attachments = {dir.filePath(QStringLiteral("missing.pdf"))};
    const TestMail::Result missing = TestMail::compose(c, o);
    EXPECT_FALSE(missing.ok());
    EXPECT_TRUE(missing.error.contains(QStringLiteral("missing.pdf")));
}

struct HeaderCase {
    const char* priority;
    bool marks, receipt, replyTo;
    const char* machine;
    const char* xPriority;   // "" when absent
    const char* idRightSide; // the Message-ID after "@"
};

class TestMailHeaders : public ::testing::TestWithParam<HeaderCase> {};

TEST_P(TestMailHeaders, FollowTheOptions) {
    const HeaderCase& h = GetParam();
    TestMail::Content c;
    c.priority = QString::fromLatin1(h.priority);
    c.body = QStringLiteral("<p>x</p>");
    TestMail::Options o;
    o.sender = sender();
    o.recipientName = QStringLiteral("Bob");
    o.recipientAddress = QStringLiteral("bob@example.org");
    o.clientMarks = h.marks;
    o.readReceipt = h.receipt;
    o.replyTo = h.replyTo ? QStringLiteral("replies@example.com") : QString();
    o.machineName = QString::fromUtf8(h.machine);
    const Parsed p = roundTrip(c, o);
    EXPECT_EQ(p.header("X-Priority").left(1), QString::fromLatin1(h.xPriority));
    EXPECT_EQ(p.header("X-MimeOLE"),
              h.marks ? QStringLiteral("Produced By Microsoft MimeOLE") : QString());
    EXPECT_EQ(p.header("X-Mailer"),
              h.marks ? QStringLiteral("Microsoft Office Outlook 12.0") : QString());
    EXPECT_EQ(p.header("Disposition-Notification-To").contains(u"anna@example.com"), h.receipt);
    EXPECT_EQ(p.header("Reply-To").contains(u"replies@example.com"), h.replyTo);
    EXPECT_TRUE(p.header("To").contains(u"bob@example.org"));
    EXPECT_TRUE(p.header("From").contains(u"anna@example.com"));
    EXPECT_TRUE(p.header("Message-Id").endsWith(u'@' + QString::fromLatin1(h.idRightSide) + u'>'))
        << p.header("Message-Id").toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Options, TestMailHeaders,
    ::testing::Values(HeaderCase{"HI", true, true, true, "office-pc", "1", "office-pc"},
                      HeaderCase{"LW", false, false, false, "", "5", "PCLOCAL"},
                      HeaderCase{"NR", true, false, true, "é ", "", "PCLOCAL"},
                      HeaderCase{"hi", false, true, false, "a.b", "", "a.b"}));

} // namespace
