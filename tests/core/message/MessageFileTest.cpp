#include "core/message/MessageFile.h"
#include "core/TestFiles.h"
#include "core/app/TextFile.h"
#include "core/app/bError.h"
#include "core/message/AttachmentList.h"
#include "core/message/MessageDocument.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

using namespace quillora;

namespace {

QString fileText(const QString& path) {
    return TextFile::decode(readBytes(path)).text;
}

TEST(MessageDocument, SkeletonIsExact) {
    const QString s = NewMessageSkeleton();
    const QStringList lines = s.split("\r\n");
    EXPECT_TRUE(s.endsWith("</html>\r\n"));
    EXPECT_EQ(lines[0], R"(<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01//EN")");
    EXPECT_EQ(lines[1], R"(    "http://www.w3.org/TR/html4/strict.dtd">)");
    EXPECT_EQ(lines[5], R"(<meta charset="utf-8"><style>)");
    EXPECT_EQ(lines[8], "    font-size:12px;");
    EXPECT_TRUE(lines.contains("  border:0; "));
    EXPECT_EQ(s.count("font-style: Bold;"), 3);
    EXPECT_EQ(s.count("font-style: Normal;"), 3);
    for (const char* cls : {".TextSmall {", ".TextNormal {", ".TextBig {", ".TextTitleSmall {",
                            ".TextTitleNormal {", ".TextTitleBig {"})
        EXPECT_TRUE(lines.contains(cls)) << cls;
    EXPECT_FALSE(s.contains(QRegularExpression("[^\r]\n")));
}

TEST(MessageDocument, TitleMarkAndPriority) {
    MessageDocument d;
    d.NuovoMessaggio();
    EXPECT_EQ(d.CambiaTitoloEditor(), "Quillora - [NuovoFile.mssx]");
    EXPECT_FALSE(d.DaSalvare());
    d.markSaved("/x/a.mssx");
    d.Modificato();
    d.Modificato();
    EXPECT_EQ(d.titleName, "[a.mssx*]");
    EXPECT_TRUE(d.DaSalvare());
    d.markSaved("/x/b.mssx");
    d.loading = true;
    d.Modificato();
    EXPECT_FALSE(d.DaSalvare());

    d.priorityHigh = d.priorityLow = true;
    EXPECT_EQ(d.priorityCode(), "HI");
    d.priorityHigh = false;
    EXPECT_EQ(d.priorityCode(), "LW");
    d.setPriorityCode(u"XX");
    EXPECT_EQ(d.priorityCode(), "NR");
    d.setPriorityCode(u"HI");
    EXPECT_TRUE(d.priorityHigh && !d.priorityLow);
}

TEST(MessageFile, ExtensionRule) {
    EXPECT_EQ(MessageFile::withMessageExtension("C:\\a\\msg.mss"), "C:\\a\\msg.mssx");
    EXPECT_EQ(MessageFile::withMessageExtension("C:\\a\\msg.MSSX"), "C:\\a\\msg.MSSX");
    EXPECT_EQ(MessageFile::withMessageExtension("/a/news.html"), "/a/news.mssx");
    EXPECT_EQ(MessageFile::withMessageExtension("/a.b/news"), "/a.b/news.mssx");
}

TEST(AttachmentList, SizeTextDividesBy1028) {
    const QLocale c(QLocale::English, QLocale::UnitedStates);
    EXPECT_EQ(AttachmentList::sizeText(1028, c), "1.00 Kb");
    EXPECT_EQ(AttachmentList::sizeText(0, c), "0.00 Kb");
    EXPECT_EQ(AttachmentList::sizeText(2056, c), "2.00 Kb");
    EXPECT_EQ(AttachmentList::sizeText(514, c), "0.50 Kb");
    EXPECT_EQ(AttachmentList::sizeText(1028LL * 12345, c), "12,345.00 Kb");
    EXPECT_EQ(AttachmentList::sizeText(1028LL * 1234 + 514, QLocale(QLocale::Italian)),
              "1.234,50 Kb");
    const auto row = AttachmentList::rowFor("/nowhere/listino prezzi.pdf", c);
    EXPECT_EQ(row.name, "listino prezzi.pdf");
    EXPECT_EQ(row.size, "0.00 Kb");
    EXPECT_FALSE(AttachmentList::canRemove(0));
    EXPECT_TRUE(AttachmentList::canRemove(1));
}

class MessageFileTest : public testing::Test {
protected:
    void SetUp() override {
        root = dir.path() + "/";
        writeBytes(root + "news/img/logo.png", QByteArray("\x89PNG logo bytes", 15));
        writeBytes(root + "news/bg.gif", QByteArray(200, 'g'));
        writeBytes(root + "docs/offer.pdf", QByteArray(58, 'p'));
    }
    MessageDocument docWith(const QString& body) {
        MessageDocument d;
        d.subject = "  Spring offer ";
        d.body = body;
        return d;
    }
    QTemporaryDir dir;
    QString root;
};

TEST_F(MessageFileTest, LayoutObjectsAndDedupe) {
    MessageDocument d = docWith("<html><body background=\"bg.gif\">\r\n<img src=\"img/logo.png\">"
                                "<img src='img/logo.png'><img src=\"http://x.org/a.png\">"
                                "<img src=\"data:image/png;base64,AAAA\"></body></html>\r\n");
    d.attachments = {root + "news/img/logo.png", root + "docs/offer.pdf", root + "docs/offer.pdf"};
    d.priorityHigh = d.priorityLow = true;
    d.Modificato();
    const auto r = MessageFile::SalvaMessaggio(d, root + "news/out.mss");
    ASSERT_TRUE(r.ok()) << r.description.toStdString();
    EXPECT_EQ(r.path, root + "news/out.mssx");
    EXPECT_EQ(d.titleName, "[out.mssx]");
    EXPECT_EQ(d.currentPath, root + "news/out.mssx");

    const QByteArray bytes = readBytes(r.path);
    ASSERT_TRUE(bytes.startsWith("\xFF\xFE"));
    const QString text = fileText(r.path);
    const QStringList lines = text.split("\r\n");
    EXPECT_EQ(lines[0], "[<INI-SUBJ>]  Spring offer [<END-SUBJ>]");
    EXPECT_EQ(lines[1], "[<INI-PRIO>]HI[<END-PRIO>]");
    EXPECT_EQ(lines[2], "[<INI-ALLG>]");
    EXPECT_EQ(lines[3], root + "news/img/logo.png");
    EXPECT_EQ(lines[6], "[<END-ALLG>]");
    EXPECT_TRUE(text.endsWith("[<END-OBJECT>]\r\n"));
    // Three attachments (the duplicate kept, the body's logo too), then two distinct body files.
    EXPECT_EQ(text.count("[<INI-FILE:"), 5);
    EXPECT_EQ(text.count("logo.png>]"), 2);
    EXPECT_EQ(text.count("bg.gif>]"), 1);
    EXPECT_FALSE(text.contains("a.png>]"));
    // 58 bytes: one full line, a break, and four more characters.
    const qsizetype pdf = text.indexOf("offer.pdf>]\r\n") + 13;
    EXPECT_EQ(text.mid(pdf, 76 + 2 + 4 + 2),
              text.mid(pdf, 76) + "\r\n" + text.mid(pdf + 78, 4) + "\r\n");
    EXPECT_EQ(text.mid(pdf + 84, 12), "[<END-FILE>]");
}

TEST_F(MessageFileTest, SaveOpenRoundTripRestoresObjectsAndBody) {
    const QString body = "<html>\n<body>\r\n  <img src=\"img/logo.png\">\r\n</body></html>";
    MessageDocument d = docWith(body);
    d.attachments = {root + "docs/offer.pdf"};
    d.priorityLow = true;
    ASSERT_TRUE(MessageFile::SalvaMessaggio(d, root + "news/m.mssx").ok());

    MessageDocument o;
    o.NuovoMessaggio();
    const auto r = MessageFile::ApriMessaggio(o, root + "news/m.mssx", root + "data/");
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_EQ(o.subject, "Spring offer");
    EXPECT_EQ(o.priorityCode(), "LW");
    EXPECT_EQ(o.body, body);
    EXPECT_EQ(o.formatVersion, 4);
    EXPECT_EQ(o.titleName, "[m.mssx]");
    ASSERT_EQ(o.attachments.size(), 1);
    EXPECT_EQ(o.attachments[0], o.restoreFolder + "offer.pdf");
    EXPECT_EQ(readBytes(o.attachments[0]), readBytes(root + "docs/offer.pdf"));
    EXPECT_EQ(readBytes(o.restoreFolder + "logo.png"), readBytes(root + "news/img/logo.png"));
    EXPECT_TRUE(o.restoreFolder.startsWith(root + "data/Elaboration/"));

    // Opening another message replaces the working folder.
    const QString first = o.restoreFolder;
    ASSERT_TRUE(MessageFile::ApriMessaggio(o, root + "news/m.mssx", root + "data/").ok());
    EXPECT_NE(o.restoreFolder, first);
    EXPECT_FALSE(QFileInfo::exists(first));
    EXPECT_TRUE(QFileInfo::exists(o.restoreFolder + "logo.png"));
}

// A hero picture that only CSS and VML name travels with the message and is found again on a
// computer that has no copy of the original folder.
TEST_F(MessageFileTest, CssAndVmlPicturesTravelOnceAndAreFoundAfterTheMove) {
    writeBytes(root + "news/img/hero.jpg", QByteArray(3000, 'h'));
    const QString body =
        "<html><head><style>.hero{background:url(\"img/hero.jpg\")}</style></head><body>"
        "<table background=bg.gif><tr><td class=hero "
        "style=\"background-image:url('img\\hero.jpg')\">"
        "<!--[if gte mso 9]><v:rect><v:fill type=\"frame\" src=\"img/hero.jpg\" /></v:rect>"
        "<![endif]--></td></tr></table></body></html>";
    MessageDocument d = docWith(body);
    ASSERT_TRUE(MessageFile::SalvaMessaggio(d, root + "news/m.mssx").ok());
    const QString text = fileText(root + "news/m.mssx");
    EXPECT_EQ(text.count("[<INI-FILE:"), 2);
    EXPECT_EQ(text.count("hero.jpg>]"), 1);

    ASSERT_TRUE(QDir(root + "news/img").removeRecursively());
    MessageDocument o;
    ASSERT_TRUE(MessageFile::ApriMessaggio(o, root + "news/m.mssx", root + "data/").ok());
    EXPECT_EQ(o.body, body);
    EXPECT_EQ(readBytes(o.restoreFolder + "hero.jpg"), QByteArray(3000, 'h'));
    const References::LoadResult load =
        References::redirectForLoad(o.body, root + "elsewhere/", o.restoreFolder);
    EXPECT_EQ(load.html, QString(body)
                             .replace("img/hero.jpg", o.restoreFolder + "hero.jpg")
                             .replace("img\\hero.jpg", o.restoreFolder + "hero.jpg")
                             .replace("bg.gif", "\"" + o.restoreFolder + "bg.gif\""));
}

// A file written before CSS pictures were embedded: its body names one it does not carry.
TEST_F(MessageFileTest, OlderFileWithoutTheCssObjectStillOpens) {
    const QString older =
        "[<INI-SUBJ>]Old[<END-SUBJ>]\r\n[<INI-PRIO>]NR[<END-PRIO>]\r\n"
        "[<INI-ALLG>]\r\n[<END-ALLG>]\r\n[<INI-MESS>]\r\n"
        "<div style=\"background:url(c:\\old\\hero.jpg)\"><img src=\"c:\\old\\bg.gif\">"
        "\r\n[<END-MESS>]\r\n[<INI-OBJECT>]\r\n[<INI-FILE:c:\\old\\bg.gif>]\r\n"
        "Z2lm\r\n[<END-FILE>]\r\n[<END-OBJECT>]\r\n";
    ASSERT_TRUE(TextFile::writeText(root + "old.mssx", older));
    MessageDocument o;
    const auto r = MessageFile::ApriMessaggio(o, root + "old.mssx", root + "data/");
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_TRUE(r.warnings.isEmpty());
    EXPECT_EQ(readBytes(o.restoreFolder + "bg.gif"), "gif");
    EXPECT_FALSE(QFileInfo::exists(o.restoreFolder + "hero.jpg"));
    EXPECT_TRUE(o.body.startsWith("<div style=\"background:url(c:\\old\\hero.jpg)\">"));
}

TEST_F(MessageFileTest, VersionThreeKeepsAttachmentPathsAndRestoresNothing) {
    const QString v3 = "[<INI-SUBJ>] Old [<END-SUBJ>]\r\n[<INI-PRIO>]HI[<END-PRIO>]\r\n"
                       "[<INI-ALLG>]\r\nC:\\doc\\listino.pdf\r\n[<END-ALLG>]\r\n[<INI-MESS>]\r\n"
                       "<p>hi</p>\r\n[<END-MESS>]\r\n";
    writeBytes(root + "old.mss", TextFile::encodeUtf16LE(v3));
    MessageDocument o;
    const auto r = MessageFile::ApriMessaggio(o, root + "old.mss", root + "data/");
    ASSERT_TRUE(r.ok());
    EXPECT_EQ(o.formatVersion, 3);
    EXPECT_EQ(o.attachments, QStringList({"C:\\doc\\listino.pdf"}));
    EXPECT_EQ(o.subject, "Old");
    EXPECT_EQ(o.priorityCode(), "HI");
    EXPECT_EQ(o.body, "<p>hi</p>");
    EXPECT_TRUE(QDir(o.restoreFolder).isEmpty());
    EXPECT_FALSE(MessageFile::ControllaSeVersione4(root + "old.mss"));
}

TEST_F(MessageFileTest, WindowsMadeFileInSingleByteTextRestoresByName) {
    const QString v4 = "[<INI-SUBJ>]Caff\u00e8[<END-SUBJ>]\r\n[<INI-PRIO>]NR[<END-PRIO>]\r\n"
                       "[<INI-ALLG>]\r\n[<END-ALLG>]\r\n[<INI-MESS>]\r\n"
                       "<img src=\"c:\\m\\img\\logo.png\">\r\n[<END-MESS>]\r\n[<INI-OBJECT>]\r\n"
                       "[<INI-FILE:c:\\m\\img\\logo.png>]\r\naGVsbG8=\r\n[<END-FILE>]\r\n"
                       "[<END-OBJECT>]\r\n";
    writeBytes(root + "win.mssx", v4.toLatin1());
    const auto r = MessageFile::read(root + "win.mssx", root + "restore");
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_EQ(r.content.subject, QString::fromUtf8("Caffè"));
    ASSERT_EQ(r.content.objects.size(), 1);
    EXPECT_EQ(r.content.objects[0].name, "logo.png");
    EXPECT_EQ(r.content.objects[0].size, 5);
    EXPECT_EQ(readBytes(root + "restore/logo.png"), "hello");
}

TEST_F(MessageFileTest, ObjectsComeOnlyFromAfterTheBody) {
    const QString text = "[<INI-SUBJ>]s[<END-SUBJ>]\r\n[<INI-PRIO>]NR[<END-PRIO>]\r\n"
                         "[<INI-ALLG>]\r\n[<END-ALLG>]\r\n[<INI-MESS>]\r\n"
                         "[<INI-FILE:c:\\evil.txt>]\r\naGVsbG8=\r\n[<END-FILE>]\r\n"
                         "[<END-MESS>]\r\n[<INI-OBJECT>]\r\n[<END-OBJECT>]\r\n";
    writeBytes(root + "q.mssx", TextFile::encodeUtf16LE(text));
    const auto r = MessageFile::read(root + "q.mssx", root + "restore");
    ASSERT_TRUE(r.ok());
    EXPECT_TRUE(r.content.objects.isEmpty());
    EXPECT_TRUE(r.content.body.contains("[<INI-FILE:"));
    EXPECT_FALSE(QFileInfo::exists(root + "restore/evil.txt"));
}

// Object sections as hand edits and older programs left them. Each row: the text after
// "[<INI-OBJECT>]" and every object read from it, as stored path and decoded size; restoring
// writes the same sizes.
struct SectionCase {
    const char* name;
    QString section;
    std::vector<std::pair<QString, qint64>> objects;
};

void PrintTo(const SectionCase& c, std::ostream* os) {
    *os << c.name;
}

class ObjectSectionTest : public testing::TestWithParam<SectionCase> {};

TEST_P(ObjectSectionTest, SplitLikeEveryEarlierVersion) {
    const SectionCase& c = GetParam();
    QTemporaryDir dir;
    const QString file = dir.filePath("s.mssx");
    writeBytes(file,
               TextFile::encodeUtf16LE("[<INI-SUBJ>]s[<END-SUBJ>]\r\n[<INI-PRIO>]NR[<END-PRIO>]"
                                       "\r\n[<INI-ALLG>]\r\n[<END-ALLG>]\r\n[<INI-MESS>]\r\n"
                                       "<p>x</p>\r\n[<END-MESS>]\r\n[<INI-OBJECT>]\r\n" +
                                       c.section));
    for (const QString& restore : {QString(), dir.filePath("r/")}) {
        const MessageFile::ReadResult r = MessageFile::read(file, restore);
        ASSERT_TRUE(r.ok()) << r.error.toStdString();
        std::vector<std::pair<QString, qint64>> got;
        QSet<QString> names;
        for (const MessageFile::StoredObject& o : r.content.objects) {
            got.emplace_back(o.storedPath, o.name.isEmpty() ? -1 : o.size);
            if (!o.name.isEmpty())
                names << o.name;
        }
        EXPECT_EQ(got, c.objects) << (restore.isEmpty() ? "listing" : "restoring");
        if (!restore.isEmpty()) {
            const QStringList files = QDir(restore).entryList(QDir::Files);
            EXPECT_EQ(QSet<QString>(files.begin(), files.end()), names);
        }
    }
}

// An object of whole lines as the writer lays them out (each decodes to 57 "A"), with the
// lines from `at` on replaced.
QString wholeLinesObject(const QString& name, int count, int at, const QStringList& changed) {
    QStringList lines(count, QString("QUFB").repeated(19));
    for (qsizetype i = 0; i < changed.size(); ++i)
        lines[at + i] = changed[i];
    return "[<INI-FILE:" + name + ">]\r\n" + lines.join("\r\n") +
           "\r\n[<END-FILE>]\r\n[<END-OBJECT>]\r\n";
}

INSTANTIATE_TEST_SUITE_P(
    MessageFile, ObjectSectionTest,
    testing::Values(
        SectionCase{"as_written",
                    "[<INI-FILE:c:\\a\\x.png>]\r\naGVsbG8=\r\n[<END-FILE>]\r\n"
                    "[<INI-FILE:/b/y.gif>]\r\nZ2lm\r\n[<END-FILE>]\r\n[<END-OBJECT>]\r\n",
                    {{"c:\\a\\x.png", 5}, {"/b/y.gif", 3}}},
        SectionCase{"brackets_in_the_path",
                    "[<INI-FILE:c:\\a[1]>]\\x.png>]\r\naGVsbG8=\r\n[<END-FILE>]\r\n"
                    "[<END-OBJECT>]\r\n",
                    {{"c:\\a[1]", 11}}},
        SectionCase{"bracket_in_the_data",
                    "[<INI-FILE:x.png>]\r\naGV[sbG8=\r\n[<END-FILE>]\r\n[<END-OBJECT>]\r\n",
                    {{"x.png", 6}}},
        SectionCase{"no_end_markers",
                    "[<INI-FILE:x.png>]\r\naGVsbG8=\r\n[<END-FILE>]\r\n[<INI-FILE:y.gif>]\r\n"
                    "Z2lmZ2lm",
                    {{"x.png", 5}, {"y.gif", 3}}},
        SectionCase{"text_after_the_section",
                    "[<INI-FILE:x.png>]\r\naGVsbG8=\r\n[<END-FILE>]\r\n[<END-OBJECT>]\r\nxx"
                    "[<INI-FILE:z.png>]\r\naGk=\r\n[<END-FILE>]\r\n",
                    {{"x.png", 5}, {"z.png", 2}}},
        // The end of an object is found after its last whole line; a "[" before it still ends
        // the object there, as it always did.
        SectionCase{
            "bracket_inside_whole_lines",
            wholeLinesObject("x.png", 3, 1, {QString("QUFB").repeated(16) + "[<END-FILE>]"}),
            {{"x.png", 162}}},
        SectionCase{"object_inside_whole_lines",
                    wholeLinesObject("x.png", 100, 50,
                                     {QString("QUFB").repeated(16) + "[<END-FILE>]",
                                      "[<INI-FILE:z.png>]" + QString(58, 'Q')}),
                    {{"x.png", 2896}, {"z.png", 2779}}},
        SectionCase{"object_inside_an_unusable_one",
                    wholeLinesObject("c:\\dir\\", 100, 50,
                                     {QString("QUFB").repeated(16) + "[<END-FILE>]",
                                      "[<INI-FILE:z.png>]" + QString(58, 'Q')}),
                    {{"c:\\dir\\", -1}, {"z.png", 2779}}},
        SectionCase{"path_without_its_end",
                    "[<INI-FILE:x.png\r\n[<INI-FILE:y.gif>]\r\nZ2lm\r\n[<END-FILE>]\r\n"
                    "[<END-OBJECT>]\r\n",
                    {{"x.png\r\n", -1}, {"y.gif", 3}}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(MessageFileTest, BrokenFilesKeepTheCurrentDocument) {
    MessageDocument keep = docWith("<p>mine</p>");
    keep.markSaved(root + "mine.mssx");
    const MessageDocument before = keep;
    struct Case {
        const char* name;
        QByteArray bytes;
    };
    const QString good = "[<INI-SUBJ>]s[<END-SUBJ>]\r\n[<INI-PRIO>]NR[<END-PRIO>]\r\n"
                         "[<INI-ALLG>]\r\n[<END-ALLG>]\r\n[<INI-MESS>]\r\nx\r\n[<END-MESS>]\r\n";
    const QByteArray utf16 = TextFile::encodeUtf16LE(good);
    const QList<Case> cases = {
        {"empty", QByteArray()},
        {"odd_utf16", utf16 + 'x'},
        {"truncated", utf16.left(utf16.size() / 2)},
        {"no_tags", QByteArray("<html>just a page</html>")},
        {"tags_out_of_order", TextFile::encodeUtf16LE(u"[<END-MESS>][<INI-SUBJ>][<END-SUBJ>]"
                                                      u"[<INI-PRIO>][<END-PRIO>][<INI-ALLG>]"
                                                      u"[<END-ALLG>][<INI-MESS>]")},
    };
    for (const Case& c : cases) {
        writeBytes(root + "bad.mssx", c.bytes);
        const auto r = MessageFile::ApriMessaggio(keep, root + "bad.mssx", root + "data/");
        EXPECT_FALSE(r.ok()) << c.name;
        EXPECT_FALSE(r.error.isEmpty()) << c.name;
        EXPECT_EQ(keep.body, before.body) << c.name;
        EXPECT_EQ(keep.titleName, before.titleName) << c.name;
        EXPECT_EQ(keep.restoreFolder, before.restoreFolder) << c.name;
    }
    EXPECT_FALSE(MessageFile::ApriMessaggio(keep, root + "missing.mssx", root + "data/").ok());
}

TEST_F(MessageFileTest, FailedSaveLeavesThePreviousFileExactly) {
    MessageDocument d = docWith("<img src=\"img/logo.png\">");
    ASSERT_TRUE(MessageFile::SalvaMessaggio(d, root + "news/keep.mssx").ok());
    const QByteArray before = readBytes(root + "news/keep.mssx");
    d.body = "<img src=\"img/gone.png\">";
    d.Modificato();
    const auto r = MessageFile::SalvaMessaggio(d, root + "news/keep.mssx");
    EXPECT_FALSE(r.ok());
    EXPECT_TRUE(r.description.contains("gone.png"));
    EXPECT_EQ(readBytes(root + "news/keep.mssx"), before);
    EXPECT_TRUE(d.DaSalvare());
    EXPECT_EQ(QDir(root + "news").entryList(QDir::Files), QStringList({"bg.gif", "keep.mssx"}));

    const auto noFolder = MessageFile::SalvaMessaggio(d, root + "nowhere/x.mssx");
    EXPECT_FALSE(noFolder.ok());
    EXPECT_TRUE(noFolder.description.contains("\r\nPath: " + root + "nowhere/\r\nFile: x.mssx"));
}

QByteArray randomBytes(qsizetype n, quint32 seed) {
    QByteArray b(n, Qt::Uninitialized);
    QRandomGenerator g(seed);
    for (char& c : b)
        c = char(g.bounded(256));
    return b;
}

// The Base64 lines of bytes as the file holds them, CR LF between the lines.
QString base64Lines(const QByteArray& bytes) {
    const QByteArray all = bytes.toBase64();
    QStringList lines;
    for (qsizetype at = 0; at < all.size(); at += 76)
        lines << QString::fromLatin1(all.mid(at, 76));
    return lines.join("\r\n");
}

// Megabytes of files: written in blocks by a second thread, restored side by side. The text
// must be what one piece at a time gives, and of two files with one name the later one wins.
TEST_F(MessageFileTest, BigMessageTravelsWholeAndTheLaterOfTwoSameNamedFilesWins) {
    const QByteArray first = randomBytes(3'000'000, 1), second = randomBytes(3'000'000, 2),
                     third = randomBytes(3'100'017, 3), odd = randomBytes(1'000'001, 4);
    writeBytes(root + "news/a/pic.jpg", first);
    writeBytes(root + "news/b/pic.jpg", second);
    writeBytes(root + "news/big.bin", third);
    writeBytes(root + "news/odd.bin", odd);
    MessageDocument d = docWith("<img src=\"a/pic.jpg\"><img src=\"big.bin\">"
                                "<img src=\"b/pic.jpg\"><img src=\"odd.bin\">");
    ASSERT_TRUE(MessageFile::SalvaMessaggio(d, root + "news/big.mssx").ok());
    const QString text = fileText(root + "news/big.mssx");
    for (const QByteArray* bytes : {&first, &second, &third, &odd})
        EXPECT_TRUE(text.contains(">]\r\n" + base64Lines(*bytes) + "\r\n[<END-FILE>]\r\n"));

    QList<std::pair<qint64, qint64>> steps;
    const auto r =
        MessageFile::read(root + "news/big.mssx", root + "out",
                          [&](qint64 done, qint64 total) { steps << std::pair(done, total); });
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_TRUE(r.content.warnings.isEmpty());
    ASSERT_EQ(r.content.objects.size(), 4);
    EXPECT_EQ(r.content.objects[2].size, second.size());
    EXPECT_EQ(readBytes(root + "out/pic.jpg"), second);
    EXPECT_EQ(readBytes(root + "out/big.bin"), third);
    EXPECT_EQ(readBytes(root + "out/odd.bin"), odd);
    ASSERT_FALSE(steps.isEmpty());
    for (qsizetype i = 1; i < steps.size(); ++i)
        EXPECT_GT(steps[i].first, steps[i - 1].first);
    EXPECT_LE(steps.back().first, steps.back().second);
    EXPECT_GT(steps.back().first, steps.back().second * 99 / 100);
}

// The device refusing more bytes halfway through (a full disk) fails the save and leaves the
// earlier file as it was.
TEST_F(MessageFileTest, WriteRefusedHalfwayKeepsTheEarlierFile) {
    writeBytes(root + "news/big.bin", randomBytes(6'000'000, 5));
    MessageDocument d = docWith("<img src=\"big.bin\">");
    ASSERT_TRUE(MessageFile::SalvaMessaggio(d, root + "news/keep.mssx").ok());
    const QByteArray before = readBytes(root + "news/keep.mssx");
    writeBytes(root + "news/big.bin", randomBytes(6'000'000, 6));

    // Past the limit, writes fail with EFBIG instead of the signal.
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    rlimit low = old;
    low.rlim_cur = 5'000'000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &low), 0);
    const auto r = MessageFile::SalvaMessaggio(d, root + "news/keep.mssx");
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);

    EXPECT_FALSE(r.ok());
    EXPECT_FALSE(r.description.isEmpty());
    EXPECT_EQ(readBytes(root + "news/keep.mssx"), before);
    EXPECT_EQ(QDir(root + "news").entryList(QDir::Files),
              QStringList({"bg.gif", "big.bin", "keep.mssx"}));
}

// Restoring into a folder that already holds a longer file writes over it from its first
// byte and leaves the rest, as every version did.
TEST_F(MessageFileTest, RestoringOverALongerFileKeepsItsTail) {
    const QByteArray bytes = randomBytes(200'000, 7), longer = randomBytes(300'000, 8);
    writeBytes(root + "news/pic.bin", bytes);
    MessageDocument d = docWith("<img src=\"pic.bin\">");
    ASSERT_TRUE(MessageFile::SalvaMessaggio(d, root + "news/p.mssx").ok());
    writeBytes(root + "out/pic.bin", longer);
    const auto r = MessageFile::read(root + "news/p.mssx", root + "out");
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    ASSERT_EQ(r.content.objects.size(), 1);
    EXPECT_EQ(r.content.objects[0].size, bytes.size());
    EXPECT_EQ(readBytes(root + "out/pic.bin"), bytes + longer.mid(bytes.size()));
}

TEST_F(MessageFileTest, SpamCheckCopyKeepsTheDocumentUnsaved) {
    MessageDocument d = docWith("<p>x</p>");
    d.Modificato();
    const auto r = MessageFile::SalvaMessaggioPerCheckSpam(d, root + "tmp.mss");
    ASSERT_TRUE(r.ok());
    EXPECT_TRUE(QFileInfo::exists(root + "tmp.mss"));
    EXPECT_TRUE(d.DaSalvare());
    EXPECT_TRUE(d.currentPath.isEmpty());
    EXPECT_TRUE(MessageFile::ControllaFormatoFileMessaggio(root + "tmp.mss"));
}

} // namespace
