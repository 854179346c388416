// The check before sending on a large page: a real newsletter's body repeated to about 1 MB,
// ten times what Gmail shows unclipped. Figures are page bytes (UTF-8) per second; the
// reference of the same run is gumbo parsing the page on its own, which every rule needs
// once and which bounds what the check can reach.
#include "core/spamcheck/PreSendCheck.h"

#include <QFile>
#include <benchmark/benchmark.h>
#include <gumbo.h>

using namespace quillora;

namespace {

constexpr qsizetype kPageSize = 1000 * 1000;
const QString kFolder = QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/html/colorlib-16/");

const QString& page() {
    static const QString text = [] {
        QFile file(kFolder + QStringLiteral("index.html"));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("bench_presend_check: %s is missing", qPrintable(file.fileName()));
        const QString one = QString::fromUtf8(file.readAll());
        const qsizetype bodyStart = one.indexOf(u'>', one.indexOf(QLatin1String("<body"))) + 1;
        const qsizetype bodyEnd = one.lastIndexOf(QLatin1String("</body>"));
        const QStringView body = QStringView(one).sliced(bodyStart, bodyEnd - bodyStart);
        QString text = one.first(bodyStart);
        while (text.size() < kPageSize) {
            text += body;
            text += QStringLiteral("<p>Dear :::nom::: :::Nme:::</p>");
        }
        return text + one.sliced(bodyEnd);
    }();
    return text;
}

void setPageBytes(benchmark::State& state) {
    state.SetBytesProcessed(int64_t(state.iterations()) * page().toUtf8().size());
}

void BM_Check(benchmark::State& state) {
    check::CheckInput input;
    input.subject = QStringLiteral("May");
    input.html = page();
    input.baseFolder = kFolder;
    size_t findings = 0;
    for (auto _ : state) {
        findings = check::runCheck(input).size();
        benchmark::DoNotOptimize(findings);
    }
    setPageBytes(state);
    state.counters["findings"] = double(findings);
}

void BM_GumboParseOnly(benchmark::State& state) {
    const QByteArray utf8 = page().toUtf8();
    for (auto _ : state) {
        GumboOutput* out =
            gumbo_parse_with_options(&kGumboDefaultOptions, utf8.constData(), size_t(utf8.size()));
        benchmark::DoNotOptimize(out);
        gumbo_destroy_output(&kGumboDefaultOptions, out);
    }
    setPageBytes(state);
}

} // namespace

BENCHMARK(BM_Check)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GumboParseOnly)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
