#include "core/spamcheck/SpamFilter.h"

#include "core/spamcheck/SpamDaemon.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

#include <arpa/nameser.h>
#include <netinet/in.h>
#include <resolv.h>

namespace quillora::SpamFilter {

namespace {

QString shellQuoted(const QString& text) {
    QString q = text;
    q.replace(u'\'', QStringLiteral("'\\''"));
    return u'\'' + q + u'\'';
}

QString withSlash(const QString& folder) {
    return folder.endsWith(u'/') ? folder : folder + u'/';
}

} // namespace

QString program() {
    return QStandardPaths::findExecutable(QString::fromLatin1(kProgram));
}

bool dnsAnswers() {
    static const bool answers = [] {
        struct __res_state state {};
        if (res_ninit(&state) != 0)
            return false;
        state.retrans = 1; // seconds per try
        state.retry = 1;
        unsigned char answer[NS_PACKETSZ];
        // A name that has had an address for decades; NXDOMAIN here means a resolver that
        // answers without reaching the network.
        const int n = res_nquery(&state, "example.com", ns_c_in, ns_t_a, answer, sizeof answer);
        res_nclose(&state);
        return n > 0;
    }();
    return answers;
}

QString scriptText(const QString& folder, bool localOnly, const QString& daemonSocket) {
    // -x: an error instead of the e-mail passed through unchecked; -s: the client's largest
    // size, as the filter by itself has no limit (the client's default skips 500 KB and more).
    const QString filter =
        daemonSocket.isEmpty()
            ? QString::fromLatin1(kProgram) + (localOnly ? QStringLiteral(" -L") : QString())
            : QStringLiteral("%1 -x -s 268435456 -U %2")
                  .arg(QString::fromLatin1(kClientProgram), shellQuoted(daemonSocket));
    // exec: the filter replaces the shell, so ending the process ends the filter itself.
    return QStringLiteral("#!/bin/sh\ncd %1 || exit 1\nexec %2 < %3 > %4\n")
        .arg(shellQuoted(QDir::toNativeSeparators(folder)), filter, QString::fromLatin1(kInputFile),
             QString::fromLatin1(kOutputFile));
}

Run::Run(QObject* parent) : QObject(parent) {
    m_process.setProcessChannelMode(QProcess::SeparateChannels);
    connect(&m_process, &QProcess::finished, this, &Run::onProcessFinished);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError e) {
        if (e == QProcess::FailedToStart)
            finish(Failure::NotStarted, m_process.errorString());
    });
}

Run::~Run() {
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(2000);
    }
}

void Run::start(const QString& folder, bool localOnly, const QString& daemonSocket) {
    m_folder = withSlash(folder);
    m_daemonSocket = clientProgram().isEmpty() ? QString() : daemonSocket;
    m_outcome = Outcome{};
    m_outcome.localOnly = localOnly;
    m_cancelled = false;
    m_done = false;
    launch();
}

void Run::launch() {
    const bool localOnly = m_outcome.localOnly;
    const QString script = m_folder + QString::fromLatin1(kScriptFile);
    QFile::remove(script);
    QFile::remove(m_folder + QString::fromLatin1(kOutputFile));
    if (program().isEmpty()) {
        finish(Failure::FilterMissing);
        return;
    }
    QSaveFile f(script);
    const QByteArray text = scriptText(m_folder, localOnly, m_daemonSocket).toUtf8();
    if (!QDir().mkpath(m_folder) || !f.open(QIODevice::WriteOnly) || f.write(text) != text.size() ||
        !f.commit()) {
        finish(Failure::NoScript, f.errorString());
        return;
    }
    m_process.setWorkingDirectory(m_folder);
    m_process.start(QStringLiteral("/bin/sh"), {script});
}

void Run::cancel() {
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_cancelled = true;
    m_process.kill();
}

bool Run::waitForFinished() {
    // A check through the daemon that gives no verdict starts the filter by itself: a second
    // process to wait for.
    while (!m_done && m_process.state() != QProcess::NotRunning)
        m_process.waitForFinished(-1);
    return m_done;
}

void Run::finish(Failure failure, const QString& detail) {
    if (m_done)
        return;
    m_done = true;
    m_outcome.failure = failure;
    m_outcome.detail = detail;
    emit finished();
}

void Run::onProcessFinished() {
    if (m_cancelled) {
        finish(Failure::Cancelled);
        return;
    }
    const QString stderrText = QString::fromLocal8Bit(m_process.readAllStandardError()).trimmed();
    const bool exitedWell =
        m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    QFile out(m_folder + QString::fromLatin1(kOutputFile));
    const bool read = out.open(QIODevice::ReadOnly) && out.size() > 0;
    if (!m_daemonSocket.isEmpty()) {
        const SpamReport::Report report =
            read ? SpamReport::parse(out.readAll()) : SpamReport::Report{};
        out.close();
        if (exitedWell && report.statusFound) {
            m_outcome.report = report;
            m_outcome.viaDaemon = true;
            finish(Failure::None, stderrText);
            return;
        }
        // The daemon gave no verdict (gone, or refused the e-mail): the filter by itself.
        m_daemonSocket.clear();
        launch();
        return;
    }
    if (!read) {
        finish(Failure::NoOutput, stderrText);
        return;
    }
    m_outcome.report = SpamReport::parse(out.readAll());
    finish(Failure::None, stderrText);
}

} // namespace quillora::SpamFilter
