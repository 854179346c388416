#pragma once

#include "core/spamcheck/SpamReport.h"

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

// Runs the spam filter over "in.eml" through the script "checkspam.sh" in the spam-check
// folder, and reads its verdict from "out.eml".
namespace quillora::SpamFilter {

inline constexpr const char* kFolderName = "SPAMASS";
inline constexpr const char* kMessageFile = "tmp.mss";
inline constexpr const char* kInputFile = "in.eml";
inline constexpr const char* kOutputFile = "out.eml";
inline constexpr const char* kScriptFile = "checkspam.sh";
inline constexpr const char* kProgram = "spamassassin";

// The filter's full path; empty when it is not installed.
QString program();

// Whether a name server answers for a name that exists, asked with a short time limit once per
// process. Without one, the filter's network tests would only wait and then misfire (every
// lookup failing looks like a forged sender), so the check runs its local tests only.
bool dnsAnswers();

// The script: change to the folder, then the filter reading in.eml and writing out.eml.
// localOnly adds the filter's switch for local tests only. With a daemon's socket, the
// daemon's client takes the filter's place; it fails rather than pass the e-mail through
// unchecked when the daemon does not answer.
QString scriptText(const QString& folder, bool localOnly, const QString& daemonSocket = {});

enum class Failure {
    None,
    FilterMissing, // spamassassin is not installed
    NoScript,      // the script could not be written in the folder
    NotStarted,    // the shell did not start
    Cancelled,
    NoOutput, // the filter ended without writing out.eml
};

struct Outcome {
    Failure failure = Failure::None;
    QString detail; // what the filter or the system said, for the log
    bool localOnly = false;
    bool viaDaemon = false; // the verdict came from the private daemon
    SpamReport::Report report;
    bool ok() const { return failure == Failure::None; }
};

// One run of the filter. start() returns at once; finished() comes when out.eml has been read
// (or the run failed). The GUI keeps its event loop going meanwhile; the command line waits.
class Run : public QObject {
    Q_OBJECT
public:
    explicit Run(QObject* parent = nullptr);
    ~Run() override;

    // Removes old script and out.eml in `folder`, writes the script and starts it. With a
    // daemon's socket the check goes through the daemon; when that gives no verdict, the run
    // falls back to the filter by itself without reporting an error.
    void start(const QString& folder, bool localOnly, const QString& daemonSocket = {});
    // Ends the filter; finished() follows with Failure::Cancelled.
    void cancel();
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    // Blocks until finished() has been emitted; false when the run had not started.
    bool waitForFinished();

    const Outcome& outcome() const { return m_outcome; }

signals:
    void finished();

private:
    void finish(Failure failure, const QString& detail = QString());
    void onProcessFinished();
    void launch();

    QProcess m_process;
    QString m_folder;
    QString m_daemonSocket;
    Outcome m_outcome;
    bool m_cancelled = false;
    bool m_done = true;
};

} // namespace quillora::SpamFilter
