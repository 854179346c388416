#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QTimer>

// A private spam-filter daemon for repeated checks. Loading the filter's rules is most of a
// check's time; the daemon loads them once and then answers each check through its client on a
// UNIX socket in the spam-check folder. It listens on no network port, serves one check at a
// time and ends with its owner: on destruction and, for an owner that is not root, through the
// kernel when the owner crashes.
namespace quillora::SpamFilter {

inline constexpr const char* kDaemonProgram = "spamd";
inline constexpr const char* kClientProgram = "spamc";
inline constexpr const char* kSocketFile = "spamd.sock";
inline constexpr const char* kPidFile = "spamd.pid";
inline constexpr const char* kDaemonLog = "spamd.log";

// The full paths of the daemon and of its client; empty when not installed.
QString daemonProgram();
QString clientProgram();

// Whether a daemon answers on the socket at `path` within `msecs`.
bool daemonAnswers(const QString& path, int msecs);

class Daemon : public QObject {
    Q_OBJECT
public:
    enum class State { Stopped, Starting, Ready, Failed };

    explicit Daemon(QObject* parent = nullptr);
    ~Daemon() override;

    // Starts the daemon for `folder` (its socket, pid file and log go there) in the background;
    // ready() or failed() follows. A daemon already running for another folder or mode is
    // stopped first. Returns false at once, with failed() not emitted, when the daemon or its
    // client is not installed or the process does not start.
    bool start(const QString& folder, bool localOnly);
    // Blocks until the daemon answers or has failed; true when it answers.
    bool waitUntilReady(int msecs = 60000);
    // Ends the daemon and its children (SIGTERM, then SIGKILL) and removes socket and pid file.
    void stop();

    State state() const { return m_state; }
    bool isReady() const { return m_state == State::Ready; }
    // Whether the daemon serves checks in `folder` with the given mode.
    bool serves(const QString& folder, bool localOnly) const;
    QString socketPath() const;
    QString folder() const { return m_folder; }
    qint64 processId() const { return m_process.processId(); }
    QString detail() const { return m_detail; }

    // Ends a daemon left running in `folder` by an owner that has gone (its pid file names a
    // process of ours with no live owner) and removes its socket and pid file. A daemon whose
    // owner still runs is left alone; false then, as the folder is in use.
    static bool cleanStale(const QString& folder);

signals:
    void ready();
    void failed();

private:
    void poll();
    void fail(const QString& detail);

    QProcess m_process;
    QTimer m_poll;
    QString m_folder;
    bool m_localOnly = false;
    State m_state = State::Stopped;
    QString m_detail;
    int m_polls = 0;
};

} // namespace quillora::SpamFilter
