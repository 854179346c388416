#include "core/message/Recovery.h"
#include "core/TestFiles.h"
#include "core/message/MessageFile.h"

#include <QDir>
#include <QTemporaryDir>
#include <atomic>
#include <sys/wait.h>
#include <unistd.h>

using namespace quillora;

namespace {

MessageDocument changedMessage(const QString& path) {
    MessageDocument doc;
    doc.subject = QStringLiteral("Spring offer");
    doc.body = QStringLiteral("<html><body><p>Typed before the crash</p></body></html>");
    if (!path.isEmpty())
        doc.markSaved(path);
    doc.Modificato();
    return doc;
}

// A copy written by another editor that then ends without cleaning up, as a killed one does.
void writeFromAnotherProcess(const QString& pathFileImp, const MessageDocument& doc) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        Recovery::Writer writer(pathFileImp);
        const bool ok = writer.isValid() && writer.write(doc, QString()).ok();
        _exit(ok ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

} // namespace

TEST(Recovery, ACopyLeftByAnEditorThatIsGoneIsOfferedWithItsOriginalFile) {
    QTemporaryDir dir;
    const QString data = dir.filePath("data/");
    const QString original = dir.filePath("news/offer.mssx");
    writeFromAnotherProcess(data, changedMessage(original));

    std::vector<Recovery::Claim> claims = Recovery::claimOrphans(data);
    ASSERT_EQ(claims.size(), 1u);
    const Recovery::Copy& c = claims.front().copy();
    EXPECT_EQ(c.originalPath, original);
    EXPECT_EQ(c.titleName, QStringLiteral("[offer.mssx]"));
    EXPECT_TRUE(c.messageFile.startsWith(Recovery::folder(data)));
    // A complete message file that any reader takes.
    const MessageFile::ReadResult r = MessageFile::read(c.messageFile);
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_EQ(r.content.subject, QStringLiteral("Spring offer"));
    EXPECT_TRUE(r.content.body.contains(QStringLiteral("Typed before the crash")));
    EXPECT_FALSE(QFileInfo::exists(original)); // never written over (or beside) the user's file
}

TEST(Recovery, TheCopyOfAnEditorStillRunningIsNeverTaken) {
    QTemporaryDir dir;
    const QString data = dir.filePath("data/");
    Recovery::Writer running(data);
    ASSERT_TRUE(running.isValid());
    ASSERT_TRUE(running.write(changedMessage(dir.filePath("a.mssx")), QString()).ok());
    EXPECT_TRUE(Recovery::claimOrphans(data).empty());
    // A second editor has a slot of its own.
    Recovery::Writer second(data);
    ASSERT_TRUE(second.isValid());
    EXPECT_NE(second.messageFile(), running.messageFile());
}

TEST(Recovery, AClaimedCopyIsNotOfferedTwiceAndStaysUntilDiscarded) {
    QTemporaryDir dir;
    const QString data = dir.filePath("data/");
    writeFromAnotherProcess(data, changedMessage(QString()));
    {
        std::vector<Recovery::Claim> first = Recovery::claimOrphans(data);
        ASSERT_EQ(first.size(), 1u);
        EXPECT_EQ(first.front().copy().titleName, QStringLiteral("[NuovoFile.mssx]"));
        EXPECT_TRUE(Recovery::claimOrphans(data).empty()); // another editor starting now
    }
    // Let go without a choice: offered again later.
    std::vector<Recovery::Claim> again = Recovery::claimOrphans(data);
    ASSERT_EQ(again.size(), 1u);
    const QString file = again.front().copy().messageFile;
    again.front().discard();
    EXPECT_FALSE(QFileInfo::exists(file));
    EXPECT_TRUE(Recovery::claimOrphans(data).empty());
    EXPECT_TRUE(QDir(Recovery::folder(data)).isEmpty());
}

TEST(Recovery, ACleanCloseLeavesNothingAndAnUncleanOneLeavesTheCopy) {
    QTemporaryDir dir;
    const QString data = dir.filePath("data/");
    {
        Recovery::Writer w(data);
        ASSERT_TRUE(w.write(changedMessage(QString()), QString()).ok());
        EXPECT_TRUE(w.hasCopy());
        w.remove();
        EXPECT_FALSE(w.hasCopy());
    }
    EXPECT_TRUE(QDir(Recovery::folder(data)).isEmpty());
    {
        // A close on a signal writes the copy and keeps it.
        Recovery::Writer w(data);
        ASSERT_TRUE(w.write(changedMessage(QString()), QString()).ok());
    }
    EXPECT_EQ(Recovery::claimOrphans(data).size(), 1u);
}

TEST(Recovery, AFolderThatCannotBeMadeGivesAWriterThatSaysSo) {
    QTemporaryDir dir;
    writeBytes(dir.filePath("file")); // a file where the data folder should be
    Recovery::Writer w(dir.filePath("file/"));
    EXPECT_FALSE(w.isValid());
    EXPECT_FALSE(w.write(changedMessage(QString()), QString()).ok());
    EXPECT_TRUE(Recovery::claimOrphans(dir.filePath("file/")).empty());
}

namespace {

MessageDocument withSubject(const QString& subject) {
    MessageDocument doc = changedMessage(QString());
    doc.subject = subject;
    // Enough body that a copy takes a moment to pack, so requests pile up behind it.
    doc.body = QStringLiteral("<html><body>%1</body></html>")
                   .arg(QStringLiteral("<p>Long enough to take a while.</p>").repeated(20000));
    return doc;
}

QString subjectOnDisk(const Recovery::Writer& w) {
    return MessageFile::read(w.messageFile()).content.subject;
}

} // namespace

TEST(RecoveryInBackground, OnlyTheNewestOfManyRequestsStaysAndEachWrittenOneIsReported) {
    QTemporaryDir dir;
    Recovery::Writer w(dir.filePath("data/"));
    std::atomic<int> reported{0};
    std::atomic<bool> allOk{true};
    for (int i = 1; i <= 8; ++i) {
        w.post(withSubject(QStringLiteral("Draft %1").arg(i)), QString(),
               [&](const MessageFile::SaveResult& r) {
                   allOk = allOk && r.ok() && r.path == w.messageFile();
                   ++reported;
               });
    }
    w.waitIdle();
    EXPECT_EQ(subjectOnDisk(w), QStringLiteral("Draft 8"));
    EXPECT_TRUE(allOk);
    EXPECT_GE(reported, 1);
    EXPECT_LE(reported, 8);
}

TEST(RecoveryInBackground, AWriteOrARemovalMadeNowIsNeverUndoneByAnEarlierRequest) {
    QTemporaryDir dir;
    Recovery::Writer w(dir.filePath("data/"));
    w.post(withSubject(QStringLiteral("Older")), QString());
    w.post(withSubject(QStringLiteral("Old")), QString());
    ASSERT_TRUE(w.write(withSubject(QStringLiteral("Written at the logout")), QString()).ok());
    w.waitIdle();
    EXPECT_EQ(subjectOnDisk(w), QStringLiteral("Written at the logout"));

    w.post(withSubject(QStringLiteral("Before the save")), QString());
    w.remove();
    w.waitIdle();
    EXPECT_FALSE(w.hasCopy());
    EXPECT_TRUE(QDir(Recovery::folder(dir.filePath("data/")))
                    .entryList({QStringLiteral("*.mssx*")}, QDir::Files)
                    .isEmpty());
}

TEST(RecoveryInBackground, AnEditorEndingMidCopyLeavesAWholeCopyOrNone) {
    QTemporaryDir dir;
    const QString data = dir.filePath("data/");
    {
        Recovery::Writer w(data);
        // The second request either waits behind the first (and is dropped) or, when the
        // writer had not picked the first up yet, takes its place.
        w.post(withSubject(QStringLiteral("First")), QString());
        w.post(withSubject(QStringLiteral("Second")), QString());
    }
    const QStringList left =
        QDir(Recovery::folder(data)).entryList({QStringLiteral("*.mssx*")}, QDir::Files);
    ASSERT_LE(left.size(), 1) << left.join(u' ').toStdString();
    if (!left.isEmpty()) {
        const MessageFile::ReadResult r = MessageFile::read(Recovery::folder(data) + left.front());
        ASSERT_TRUE(r.ok()) << r.error.toStdString();
        EXPECT_TRUE(r.content.subject == QStringLiteral("First") ||
                    r.content.subject == QStringLiteral("Second"))
            << r.content.subject.toStdString();
    }
}
