// UTF-8 <-> UTF-16 of a message's text, next to memcpy of the same bytes.
#include "core/app/TextFile.h"

#include <QStringDecoder>
#include <QStringEncoder>
#include <benchmark/benchmark.h>
#include <cstring>

using namespace quillora;

namespace {

constexpr qsizetype kBytes = 64 * 1024 * 1024;

// Newsletter-like text: mostly ASCII markup with an accented word now and then.
const QByteArray& utf8Text() {
    static const QByteArray text = [] {
        const QByteArray unit = "<tr><td class=\"TextNormal\" style=\"padding:8px\">Offerta "
                                "speciale: caff\xC3\xA8 e cioccolato, prezzi pi\xC3\xB9 bassi "
                                "per l'estate.</td></tr>\r\n";
        QByteArray t;
        t.reserve(kBytes + unit.size());
        while (t.size() < kBytes)
            t += unit;
        return t;
    }();
    return text;
}

void Memcpy(benchmark::State& state) {
    const QByteArray& in = utf8Text();
    QByteArray out(in.size() * 2, Qt::Uninitialized); // the UTF-16 size
    for (auto _ : state) {
        std::memcpy(out.data(), in.constData(), size_t(in.size()));
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * in.size());
}

void Utf8ToUtf16(benchmark::State& state) {
    const QByteArray& in = utf8Text();
    for (auto _ : state) {
        TextFile::Decoded d = TextFile::decode(in);
        benchmark::DoNotOptimize(d.text.constData());
    }
    state.SetBytesProcessed(state.iterations() * in.size());
}

// The same conversion into a buffer kept between runs: what a reader that reuses its buffer pays.
void Utf8ToUtf16Reused(benchmark::State& state) {
    const QByteArray& in = utf8Text();
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString out(in.size(), Qt::Uninitialized);
    for (auto _ : state) {
        QChar* end = decoder.appendToBuffer(out.data(), in);
        benchmark::DoNotOptimize(end);
    }
    state.SetBytesProcessed(state.iterations() * in.size());
}

void Utf16ToUtf8(benchmark::State& state) {
    const QString text = QString::fromUtf8(utf8Text());
    QStringEncoder encoder(QStringEncoder::Utf8);
    QByteArray out(text.size() * 3, Qt::Uninitialized); // reused between runs
    for (auto _ : state) {
        char* end = encoder.appendToBuffer(out.data(), text);
        benchmark::DoNotOptimize(end);
    }
    state.SetBytesProcessed(state.iterations() * utf8Text().size());
}

void Utf16ToUtf16LeFile(benchmark::State& state) {
    const QString text = QString::fromUtf8(utf8Text());
    for (auto _ : state) {
        QByteArray bytes = TextFile::encodeUtf16LE(text);
        benchmark::DoNotOptimize(bytes.constData());
    }
    state.SetBytesProcessed(state.iterations() * utf8Text().size());
}

} // namespace

BENCHMARK(Memcpy)->Unit(benchmark::kMillisecond);
BENCHMARK(Utf8ToUtf16)->Unit(benchmark::kMillisecond);
BENCHMARK(Utf8ToUtf16Reused)->Unit(benchmark::kMillisecond);
BENCHMARK(Utf16ToUtf8)->Unit(benchmark::kMillisecond);
BENCHMARK(Utf16ToUtf16LeFile)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
