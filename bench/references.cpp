// The reference walk on a large page: a real newsletter's body repeated to about 5 MB.
// Figures are page bytes (UTF-8, as on disk) per second. References for the same run: copying
// the text (memcpy of the bytes, a deep QString copy) and gumbo parsing the page on its own,
// which bounds what any walk built on it can reach.
#include "core/message/References.h"

#include <QFile>
#include <benchmark/benchmark.h>
#include <cstring>
#include <gumbo.h>

using namespace quillora::References;

namespace {

constexpr qsizetype kPageSize = 5 * 1000 * 1000;

QString newsletter() {
    QFile file(QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/html/colorlib-16/index.html"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("bench_references: %s is missing", qPrintable(file.fileName()));
    return QString::fromUtf8(file.readAll());
}

const QString& page() {
    static const QString text = [] {
        const QString one = newsletter();
        const qsizetype open = one.indexOf(QLatin1String("<body"));
        const qsizetype bodyStart = one.indexOf(u'>', open) + 1;
        const qsizetype bodyEnd = one.lastIndexOf(QLatin1String("</body>"));
        const QStringView body = QStringView(one).sliced(bodyStart, bodyEnd - bodyStart);
        QString text = one.first(bodyStart);
        while (text.size() < kPageSize)
            text += body;
        return text + one.sliced(bodyEnd);
    }();
    return text;
}

const QByteArray& pageUtf8() {
    static const QByteArray bytes = page().toUtf8();
    return bytes;
}

void setPageBytes(benchmark::State& state) {
    state.SetBytesProcessed(int64_t(state.iterations()) * pageUtf8().size());
}

void BM_Walk(benchmark::State& state) {
    size_t found = 0;
    for (auto _ : state) {
        const ReferenceWalker walker(page());
        found = walker.references().size();
        benchmark::DoNotOptimize(found);
    }
    setPageBytes(state);
    state.counters["references"] = double(found);
}

void BM_WalkAndRewrite(benchmark::State& state) {
    for (auto _ : state) {
        const ReferenceWalker walker(page());
        std::vector<Edit> edits;
        edits.reserve(walker.references().size());
        for (const Reference& reference : walker.references())
            edits.push_back(Edit::of(reference, QStringLiteral("/tmp/restore/x.png")));
        QString out = walker.rewrite(edits);
        benchmark::DoNotOptimize(out.data());
    }
    setPageBytes(state);
}

void BM_RewriteOnly(benchmark::State& state) {
    const ReferenceWalker walker(page());
    std::vector<Edit> edits;
    for (const Reference& reference : walker.references())
        edits.push_back(Edit::of(reference, QStringLiteral("/tmp/restore/x.png")));
    for (auto _ : state) {
        QString out = walker.rewrite(edits);
        benchmark::DoNotOptimize(out.data());
    }
    setPageBytes(state);
}

void BM_GumboParseOnly(benchmark::State& state) {
    const QByteArray& bytes = pageUtf8();
    for (auto _ : state) {
        GumboOutput* output = gumbo_parse_with_options(&kGumboDefaultOptions, bytes.constData(),
                                                       size_t(bytes.size()));
        benchmark::DoNotOptimize(output);
        gumbo_destroy_output(&kGumboDefaultOptions, output);
    }
    setPageBytes(state);
}

void BM_ReferenceMemcpy(benchmark::State& state) {
    const QByteArray& bytes = pageUtf8();
    std::vector<char> target(size_t(bytes.size()));
    for (auto _ : state) {
        std::memcpy(target.data(), bytes.constData(), target.size());
        benchmark::ClobberMemory();
    }
    setPageBytes(state);
}

void BM_ReferenceQStringCopy(benchmark::State& state) {
    for (auto _ : state) {
        QString copy(page().constData(), page().size());
        benchmark::DoNotOptimize(copy.data());
    }
    setPageBytes(state);
}

} // namespace

BENCHMARK(BM_Walk)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WalkAndRewrite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RewriteOnly)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GumboParseOnly)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReferenceMemcpy)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReferenceQStringCopy)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
