// A spam check of a newsletter end to end (compose, filter, read the verdict), next to the
// filter alone on the same e-mail; then a repeated check through the program's filter daemon.
#include "core/spamcheck/SpamDaemon.h"
#include "core/spamcheck/SpamFilter.h"
#include "core/spamcheck/TestMail.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>
#include <vector>

using namespace quillora;

namespace {

constexpr int kRuns = 5;
const QString kNewsletter = QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/html/cerberus-hybrid/");

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

std::optional<TestMail::Content> newsletter() {
    QFile page(kNewsletter + "index.html");
    if (!page.open(QIODevice::ReadOnly))
        return std::nullopt;
    TestMail::Content c;
    c.subject = QStringLiteral("Our spring news");
    c.body = QString::fromUtf8(page.readAll());
    return c;
}

TestMail::Options options() {
    TestMail::Options o;
    o.sender.displayName = QStringLiteral("Anna Rossi");
    o.sender.address = QStringLiteral("anna@example.com");
    o.recipientAddress = QStringLiteral("bob@example.org");
    o.readCounter = true;
    o.readCounterHost = QStringLiteral("https://www.quillora.example");
    o.baseFolder = kNewsletter;
    return o;
}

// The filter by itself, as a shell would run it: spamassassin < in.eml > out.eml.
bool filterAlone(const QString& in, const QString& out, bool localOnly) {
    QProcess p;
    p.setStandardInputFile(in);
    p.setStandardOutputFile(out);
    p.start(SpamFilter::program(), localOnly ? QStringList{QStringLiteral("-L")} : QStringList{});
    return p.waitForFinished(-1) && p.exitStatus() == QProcess::NormalExit && QFile(out).size() > 0;
}

// The whole check as the program does it.
std::optional<SpamReport::Report> check(const TestMail::Content& c, const QString& folder,
                                        bool localOnly, const QString& socket = {}) {
    const TestMail::Result mail = TestMail::compose(c, options());
    if (!mail.ok() || !TestMail::writeEml(*mail.message, folder + "in.eml"))
        return std::nullopt;
    SpamFilter::Run run;
    run.start(folder, localOnly, socket);
    run.waitForFinished();
    if (!run.outcome().ok() || run.outcome().viaDaemon != !socket.isEmpty())
        return std::nullopt;
    return run.outcome().report;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (SpamFilter::program().isEmpty()) {
        std::fprintf(stderr, "spamassassin is not installed\n");
        return 1;
    }
    const std::optional<TestMail::Content> content = newsletter();
    QTemporaryDir dir;
    if (!content || !dir.isValid())
        return 1;
    const QString folder = dir.path() + "/SPAMASS/";
    QDir().mkpath(folder);
    const QString same = dir.filePath("same.eml");
    const TestMail::Result first = TestMail::compose(*content, options());
    if (!first.ok() || !TestMail::writeEml(*first.message, same))
        return 1;
    const bool localOnly = !SpamFilter::dnsAnswers();
    std::printf("newsletter: %lld bytes of HTML, e-mail %lld bytes; %s; median of %d runs\n",
                qint64(content->body.toUtf8().size()), QFile(same).size(),
                localOnly ? "no name server answers, local tests only" : "network tests on", kRuns);

    std::vector<double> alone, whole;
    std::optional<SpamReport::Report> report;
    for (int i = 0; i < kRuns; ++i) {
        QElapsedTimer t;
        t.start();
        if (!filterAlone(same, dir.filePath("alone.eml"), localOnly))
            return 1;
        alone.push_back(double(t.nsecsElapsed()) / 1e9);
        t.restart();
        report = check(*content, folder, localOnly);
        if (!report)
            return 1;
        whole.push_back(double(t.nsecsElapsed()) / 1e9);
    }
    std::printf("verdict: %s, score %.1f of %.1f\n", report->spam ? "spam" : "not spam",
                report->score, report->required);
    std::printf("spamassassin < same.eml          %8.3f s\n", median(alone));
    std::printf("check (compose + filter + parse) %8.3f s   %5.2fx the filter alone\n",
                median(whole), median(whole) / median(alone));

    if (SpamFilter::daemonProgram().isEmpty() || SpamFilter::clientProgram().isEmpty()) {
        std::printf("repeated check through spamd     not measured: spamd or spamc is missing\n");
        return 0;
    }
    SpamFilter::Daemon daemon;
    QElapsedTimer startup;
    startup.start();
    if (!daemon.start(folder, localOnly) || !daemon.waitUntilReady()) {
        std::fprintf(stderr, "spamd did not start: %s\n", qPrintable(daemon.detail()));
        return 1;
    }
    const double started = double(startup.nsecsElapsed()) / 1e9;
    std::vector<double> repeated;
    std::optional<SpamReport::Report> viaDaemon;
    for (int i = 0; i < kRuns; ++i) {
        QElapsedTimer t;
        t.start();
        viaDaemon = check(*content, folder, localOnly, daemon.socketPath());
        if (!viaDaemon)
            return 1;
        repeated.push_back(double(t.nsecsElapsed()) / 1e9);
    }
    std::printf("spamd start (in the background)  %8.3f s\n", started);
    std::printf("repeated check through spamd     %8.3f s   %5.2fx the filter alone "
                "(target 0.4 s); verdict %s, score %.1f\n",
                median(repeated), median(repeated) / median(alone),
                viaDaemon->spam == report->spam && viaDaemon->score == report->score &&
                        viaDaemon->tests == report->tests
                    ? "the same"
                    : "DIFFERENT",
                viaDaemon->score);
    return viaDaemon->spam == report->spam && viaDaemon->score == report->score ? 0 : 1;
}
