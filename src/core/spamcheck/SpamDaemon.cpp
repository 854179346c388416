#include "core/spamcheck/SpamDaemon.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QThread>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace quillora::SpamFilter {

namespace {

// Who started the daemon: the owner's process id, next to the daemon's own pid file.
constexpr const char* kOwnerFile = "spamd.owner";
constexpr int kPollMsecs = 100;
constexpr int kStartMsecs = 60000; // loading the rules takes seconds on a slow machine
constexpr int kStopMsecs = 5000;

QString withSlash(const QString& folder) {
    return folder.endsWith(u'/') ? folder : folder + u'/';
}

QByteArray procFile(qint64 pid, const char* name) {
    QFile f(QStringLiteral("/proc/%1/%2").arg(pid).arg(QLatin1String(name)));
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// The fields of /proc/<pid>/stat after the command name: state, parent, ...
QList<QByteArray> statFields(qint64 pid) {
    const QByteArray stat = procFile(pid, "stat");
    const qsizetype close = stat.lastIndexOf(')');
    if (close < 0)
        return {};
    return stat.mid(close + 2).split(' ');
}

// A process that is there and not a zombie.
bool running(qint64 pid) {
    const QList<QByteArray> fields = statFields(pid);
    return !fields.isEmpty() && fields[0] != "Z" && fields[0] != "X";
}

// A live process whose command line names the daemon.
bool isDaemonProcess(qint64 pid) {
    return running(pid) && procFile(pid, "cmdline").contains(kDaemonProgram);
}

// A daemon process told to end that has not ended yet. While a process exits, its command
// line reads empty before it turns into a zombie, so an empty one still counts.
bool stillEnding(qint64 pid) {
    if (!running(pid))
        return false;
    const QByteArray cmdline = procFile(pid, "cmdline");
    return cmdline.isEmpty() || cmdline.contains(kDaemonProgram);
}

qint64 parentOf(qint64 pid) {
    const QList<QByteArray> fields = statFields(pid);
    return fields.size() > 1 ? fields[1].toLongLong() : 0;
}

QList<qint64> childrenOf(qint64 pid) {
    QList<qint64> children;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& e : entries) {
        bool number = false;
        const qint64 p = e.toLongLong(&number);
        if (number && parentOf(p) == pid)
            children.append(p);
    }
    return children;
}

qint64 readPid(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return 0;
    return f.read(32).trimmed().toLongLong();
}

// SIGTERM, then SIGKILL to what is still there after `msecs`.
void endProcesses(const QList<qint64>& pids, int msecs) {
    for (qint64 p : pids)
        if (isDaemonProcess(p))
            ::kill(pid_t(p), SIGTERM);
    QDeadlineTimer deadline(msecs);
    for (;;) {
        bool alive = false;
        for (qint64 p : pids)
            alive = alive || stillEnding(p);
        if (!alive)
            return;
        if (deadline.hasExpired())
            break;
        QThread::msleep(50);
    }
    for (qint64 p : pids)
        if (isDaemonProcess(p))
            ::kill(pid_t(p), SIGKILL);
}

void removeFiles(const QString& folder) {
    for (const char* name : {kSocketFile, kPidFile, kOwnerFile})
        QFile::remove(folder + QString::fromLatin1(name));
}

} // namespace

QString daemonProgram() {
    // Debian installs the daemon in sbin, often missing from a user's PATH.
    const QString name = QString::fromLatin1(kDaemonProgram);
    QString found = QStandardPaths::findExecutable(name);
    if (found.isEmpty())
        found = QStandardPaths::findExecutable(
            name, {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/local/sbin")});
    return found;
}

QString clientProgram() {
    return QStandardPaths::findExecutable(QString::fromLatin1(kClientProgram));
}

bool daemonAnswers(const QString& path, int msecs) {
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un addr{};
    if (name.isEmpty() || size_t(name.size()) >= sizeof addr.sun_path)
        return false;
    addr.sun_family = AF_UNIX;
    std::memcpy(addr.sun_path, name.constData(), size_t(name.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    QByteArray reply;
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) == 0) {
        static const char ping[] = "PING SPAMC/1.5\r\n\r\n";
        if (::send(fd, ping, sizeof ping - 1, MSG_NOSIGNAL) == ssize_t(sizeof ping - 1)) {
            QDeadlineTimer deadline(msecs);
            while (!reply.contains('\n') && !deadline.hasExpired()) {
                pollfd p{fd, POLLIN, 0};
                const int n = ::poll(&p, 1, int(deadline.remainingTime()));
                if (n < 0 && errno == EINTR)
                    continue;
                if (n <= 0)
                    break;
                char buffer[128];
                const ssize_t got = ::recv(fd, buffer, sizeof buffer, 0);
                if (got <= 0)
                    break;
                reply.append(buffer, got);
            }
        }
    }
    ::close(fd);
    // "SPAMD/1.5 0 PONG"
    return reply.startsWith("SPAMD/") && reply.contains(" PONG");
}

Daemon::Daemon(QObject* parent) : QObject(parent) {
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    // The daemon goes with its owner even when the owner is killed outright. The daemon keeps
    // the owner's user (started by root, it hands each check to an unprivileged user itself).
    // The kernel forgets this signal when a process changes its user, which a daemon started
    // by root does while loading its rules: such a daemon outlives a crashed owner until the
    // next start in the same folder ends it (cleanStale).
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
    m_poll.setInterval(kPollMsecs);
    connect(&m_poll, &QTimer::timeout, this, &Daemon::poll);
    connect(&m_process, &QProcess::finished, this, [this] {
        if (m_state == State::Starting || m_state == State::Ready) {
            QFile log(m_folder + QString::fromLatin1(kDaemonLog));
            QString tail;
            if (log.open(QIODevice::ReadOnly))
                tail = QString::fromLocal8Bit(log.readAll().right(400)).trimmed();
            stop();
            fail(QStringLiteral("The spam filter daemon ended: %1").arg(tail));
        }
    });
}

Daemon::~Daemon() {
    stop();
}

QString Daemon::socketPath() const {
    return m_folder + QString::fromLatin1(kSocketFile);
}

bool Daemon::serves(const QString& folder, bool localOnly) const {
    return m_state == State::Ready && withSlash(folder) == m_folder && localOnly == m_localOnly;
}

bool Daemon::start(const QString& folder, bool localOnly) {
    const QString target = withSlash(folder);
    if ((m_state == State::Starting || m_state == State::Ready) && target == m_folder &&
        localOnly == m_localOnly)
        return true;
    stop();
    m_folder = target;
    m_localOnly = localOnly;
    m_detail.clear();
    const QString program = daemonProgram();
    if (program.isEmpty() || clientProgram().isEmpty()) {
        m_detail = QStringLiteral("spamd or spamc is not installed");
        m_state = State::Failed;
        return false;
    }
    if (!QDir().mkpath(m_folder)) {
        m_detail = QStringLiteral("The folder %1 cannot be created").arg(m_folder);
        m_state = State::Failed;
        return false;
    }
    sockaddr_un addr{};
    if (size_t(QFile::encodeName(socketPath()).size()) >= sizeof addr.sun_path) {
        m_detail = QStringLiteral("The socket path %1 is too long").arg(socketPath());
        m_state = State::Failed;
        return false;
    }
    if (!cleanStale(m_folder)) {
        m_detail = QStringLiteral("Another program's daemon serves %1").arg(m_folder);
        m_state = State::Failed;
        return false;
    }
    QStringList args{QStringLiteral("--socketpath=") + socketPath(),
                     QStringLiteral("--pidfile=") + m_folder + QString::fromLatin1(kPidFile),
                     QStringLiteral("--max-children=1"), QStringLiteral("--syslog=stderr")};
    if (localOnly)
        args << QStringLiteral("--local");
    m_process.setStandardOutputFile(m_folder + QString::fromLatin1(kDaemonLog),
                                    QIODevice::Truncate);
    m_process.setWorkingDirectory(m_folder);
    m_process.start(program, args);
    if (!m_process.waitForStarted(5000)) {
        m_detail = m_process.errorString();
        m_state = State::Failed;
        return false;
    }
    QFile owner(m_folder + QString::fromLatin1(kOwnerFile));
    if (owner.open(QIODevice::WriteOnly | QIODevice::Truncate))
        owner.write(QByteArray::number(QCoreApplication::applicationPid()) + '\n');
    m_state = State::Starting;
    m_polls = 0;
    m_poll.start();
    return true;
}

void Daemon::poll() {
    if (m_state != State::Starting)
        return;
    if (daemonAnswers(socketPath(), 1000)) {
        m_poll.stop();
        m_state = State::Ready;
        emit ready();
        return;
    }
    if (++m_polls * kPollMsecs >= kStartMsecs) {
        stop();
        fail(QStringLiteral("The spam filter daemon did not answer on %1").arg(socketPath()));
    }
}

bool Daemon::waitUntilReady(int msecs) {
    QDeadlineTimer deadline(msecs);
    while (m_state == State::Starting && !deadline.hasExpired()) {
        // An ending daemon emits finished() from here, which marks the start as failed.
        if (!m_process.waitForFinished(kPollMsecs))
            poll();
    }
    return m_state == State::Ready;
}

void Daemon::stop() {
    m_poll.stop();
    const bool running = m_process.state() != QProcess::NotRunning;
    m_state = State::Stopped;
    if (running) {
        const qint64 pid = m_process.processId();
        const QList<qint64> children = childrenOf(pid);
        // The daemon ends its own children on SIGTERM; they are ended here too in case it had
        // to be killed.
        m_process.terminate();
        if (!m_process.waitForFinished(kStopMsecs)) {
            m_process.kill();
            m_process.waitForFinished(kStopMsecs);
        }
        endProcesses(children, kStopMsecs);
    }
    if (!m_folder.isEmpty() && (running || readPid(m_folder + QString::fromLatin1(kOwnerFile)) ==
                                               QCoreApplication::applicationPid()))
        removeFiles(m_folder);
}

void Daemon::fail(const QString& detail) {
    m_state = State::Failed;
    m_detail = detail;
    emit failed();
}

bool Daemon::cleanStale(const QString& folder) {
    const QString dir = withSlash(folder);
    const qint64 pid = readPid(dir + QString::fromLatin1(kPidFile));
    if (pid > 0 && isDaemonProcess(pid)) {
        const qint64 owner = readPid(dir + QString::fromLatin1(kOwnerFile));
        if (owner > 0 && owner != QCoreApplication::applicationPid() && parentOf(pid) == owner)
            return false; // a live program still owns it
        QList<qint64> all = childrenOf(pid);
        all.prepend(pid);
        endProcesses(all, kStopMsecs);
    }
    removeFiles(dir);
    return true;
}

} // namespace quillora::SpamFilter
