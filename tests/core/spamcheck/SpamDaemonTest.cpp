#include "core/spamcheck/SpamDaemon.h"
#include "core/spamcheck/SpamFilter.h"
#include "core/spamcheck/TestMail.h"

#include "core/TestFiles.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>
#include <functional>
#include <memory>

using namespace quillora;

namespace {

const QString kNewsletter = QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/html/cerberus-hybrid/");
const char* const kGtube = "XJS*C4JDBQADN1.NSBN3*2IDNEN*GTUBE-STANDARD-ANTI-UBE-TEST-EMAIL*C.34X";

// A live process, not a zombie left for its parent to collect.
bool alive(qint64 pid) {
    const QByteArray stat = readBytes(QStringLiteral("/proc/%1/stat").arg(pid));
    const qsizetype close = stat.lastIndexOf(')');
    return close > 0 && stat.size() > close + 2 && stat[close + 2] != 'Z';
}

QList<qint64> childrenOf(qint64 pid) {
    QList<qint64> found;
    for (const QString& e : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const QByteArray stat = readBytes(QStringLiteral("/proc/%1/stat").arg(e));
        const QList<QByteArray> f = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (f.size() > 1 && f[1].toLongLong() == pid)
            found.append(e.toLongLong());
    }
    return found;
}

class RealDaemon : public ::testing::Test {
protected:
    void SetUp() override {
        if (SpamFilter::program().isEmpty() || SpamFilter::daemonProgram().isEmpty() ||
            SpamFilter::clientProgram().isEmpty())
            GTEST_SKIP() << "spamassassin, spamd or spamc is missing (scripts/deps.sh)";
        ASSERT_TRUE(dir.isValid());
        folder = dir.path() + QStringLiteral("/SPAMASS/");
        ASSERT_TRUE(QDir().mkpath(folder));
    }
    void writeInput(const QString& html, const QString& base = {}) {
        TestMail::Content c;
        c.subject = QStringLiteral("Our spring news");
        c.body = html;
        TestMail::Options o;
        o.sender.displayName = QStringLiteral("Anna Rossi");
        o.sender.address = QStringLiteral("anna@example.com");
        o.recipientAddress = QStringLiteral("bob@example.org");
        o.baseFolder = base;
        const TestMail::Result r = TestMail::compose(c, o);
        ASSERT_TRUE(r.ok()) << r.error.toStdString();
        ASSERT_TRUE(TestMail::writeEml(*r.message, folder + QStringLiteral("in.eml")));
    }
    SpamFilter::Outcome check(const QString& socket = {}) {
        SpamFilter::Run run;
        run.start(folder, localOnly, socket);
        EXPECT_TRUE(run.waitForFinished());
        return run.outcome();
    }
    static void expectSameVerdict(const SpamFilter::Outcome& daemon,
                                  const SpamFilter::Outcome& plain) {
        ASSERT_TRUE(daemon.ok()) << daemon.detail.toStdString();
        ASSERT_TRUE(plain.ok()) << plain.detail.toStdString();
        EXPECT_TRUE(daemon.report.statusFound);
        EXPECT_EQ(daemon.report.spam, plain.report.spam);
        EXPECT_DOUBLE_EQ(daemon.report.score, plain.report.score);
        EXPECT_DOUBLE_EQ(daemon.report.required, plain.report.required);
        EXPECT_EQ(daemon.report.tests, plain.report.tests);
        EXPECT_EQ(daemon.report.rules, plain.report.rules);
    }
    QTemporaryDir dir;
    QString folder;
    const bool localOnly = !SpamFilter::dnsAnswers();
};

TEST_F(RealDaemon, RepeatedChecksGiveTheFiltersVerdictAndNoDaemonOutlivesItsOwner) {
    qint64 pid = 0;
    QList<qint64> children;
    {
        SpamFilter::Daemon daemon;
        ASSERT_TRUE(daemon.start(folder, localOnly)) << daemon.detail().toStdString();
        ASSERT_TRUE(daemon.waitUntilReady()) << daemon.detail().toStdString();
        EXPECT_TRUE(daemon.serves(folder, localOnly));
        EXPECT_FALSE(daemon.serves(folder, !localOnly));
        pid = daemon.processId();
        children = childrenOf(pid);
        EXPECT_FALSE(children.isEmpty());
        EXPECT_EQ(readBytes(folder + QStringLiteral("spamd.pid")).trimmed().toLongLong(), pid);

        // A composed newsletter with its images, checked twice; then a spam e-mail, whose
        // report wraps the original.
        writeInput(QString::fromUtf8(readBytes(kNewsletter + QStringLiteral("index.html"))),
                   kNewsletter);
        const SpamFilter::Outcome plain = check();
        for (int i = 0; i < 2; ++i) {
            const SpamFilter::Outcome o = check(daemon.socketPath());
            EXPECT_TRUE(o.viaDaemon);
            expectSameVerdict(o, plain);
        }
        EXPECT_FALSE(plain.report.spam);

        writeInput(QStringLiteral("<p>%1</p>").arg(QLatin1String(kGtube)));
        const SpamFilter::Outcome spam = check(daemon.socketPath());
        EXPECT_TRUE(spam.viaDaemon);
        EXPECT_TRUE(spam.report.spam);
        expectSameVerdict(spam, check());
    }
    EXPECT_FALSE(alive(pid));
    for (qint64 child : children)
        EXPECT_FALSE(alive(child)) << child;
    EXPECT_FALSE(QFile::exists(folder + QStringLiteral("spamd.sock")));
    EXPECT_FALSE(QFile::exists(folder + QStringLiteral("spamd.pid")));
    EXPECT_FALSE(SpamFilter::daemonAnswers(folder + QStringLiteral("spamd.sock"), 500));
}

TEST_F(RealDaemon, SocketWithNoDaemonFallsBackToTheFilterWithoutError) {
    writeBytes(folder + QStringLiteral("spamd.sock"), "not a socket");
    writeInput(QStringLiteral("<p>%1</p>").arg(QLatin1String(kGtube)));
    const SpamFilter::Outcome o = check(folder + QStringLiteral("spamd.sock"));
    ASSERT_TRUE(o.ok()) << o.detail.toStdString();
    EXPECT_FALSE(o.viaDaemon);
    EXPECT_TRUE(o.report.spam);
    EXPECT_GE(o.report.score, 1000.0);
}

TEST_F(RealDaemon, DaemonLeftByAGoneOwnerIsEndedBeforeANewStart) {
    // What a crashed run leaves: a daemon no live program owns, its socket and pid file.
    const QString socket = folder + QStringLiteral("spamd.sock");
    qint64 stray = 0;
    QProcess detached;
    detached.setProgram(SpamFilter::daemonProgram());
    detached.setArguments({QStringLiteral("--socketpath=") + socket,
                           QStringLiteral("--pidfile=") + folder + QStringLiteral("spamd.pid"),
                           QStringLiteral("--max-children=1"), QStringLiteral("--syslog=stderr"),
                           QStringLiteral("--local")});
    detached.setStandardOutputFile(QProcess::nullDevice());
    detached.setStandardErrorFile(QProcess::nullDevice());
    ASSERT_TRUE(detached.startDetached(&stray));
    for (int i = 0; i < 600 && !SpamFilter::daemonAnswers(socket, 500); ++i)
        QThread::msleep(100);
    ASSERT_TRUE(SpamFilter::daemonAnswers(socket, 500));
    const QList<qint64> strayChildren = childrenOf(stray);
    // Should the program fail to end it, the test does, so that no daemon outlives the test.
    const std::unique_ptr<void, std::function<void(void*)>> reaper(&stray, [&](void*) {
        if (alive(stray))
            ::kill(pid_t(stray), SIGKILL);
    });

    SpamFilter::Daemon daemon;
    ASSERT_TRUE(daemon.start(folder, true)) << daemon.detail().toStdString();
    EXPECT_FALSE(alive(stray));
    for (qint64 child : strayChildren)
        EXPECT_FALSE(alive(child)) << child;
    ASSERT_TRUE(daemon.waitUntilReady()) << daemon.detail().toStdString();
    EXPECT_NE(daemon.processId(), stray);
    daemon.stop();
    EXPECT_EQ(daemon.state(), SpamFilter::Daemon::State::Stopped);
    EXPECT_FALSE(SpamFilter::daemonAnswers(socket, 500));
}

} // namespace
