// Base64 with MIME line breaks on 64 MiB of random bytes, portable and AVX2 paths, against
// memcpy of the same bytes in the same run. Every figure counts the 64 MiB of binary data, so
// the rates compare directly: encode reads them and writes 4/3 as much text plus line breaks,
// decode reads that text and writes them.
#include "core/message/clsBase64.h"

#include <QByteArray>
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

using quillora::clsBase64;

namespace {

constexpr qsizetype kBytes = qsizetype(64) << 20;

struct Buffers {
    std::vector<uchar> data;
    std::vector<char> ascii;
    std::vector<char16_t> utf16;
    std::vector<uchar> decoded;
    std::vector<uchar> copy;

    Buffers() : data(size_t(kBytes)) {
        std::mt19937_64 gen(42);
        for (size_t i = 0; i < data.size(); i += 8) {
            const quint64 v = gen();
            std::memcpy(&data[i], &v, 8);
        }
        ascii.resize(size_t(clsBase64::encodedLength(kBytes)));
        utf16.resize(ascii.size());
        clsBase64::encode(data.data(), kBytes, ascii.data());
        clsBase64::encode(data.data(), kBytes, utf16.data());
        decoded.resize(size_t(clsBase64::decodeCapacity(qsizetype(ascii.size()))));
        copy.resize(data.size());
    }
};

Buffers& buffers() {
    static Buffers b;
    return b;
}

enum class Op { EncodeAscii, EncodeUtf16, DecodeAscii, DecodeUtf16 };

void run(benchmark::State& state, Op op, bool portable) {
    Buffers& b = buffers();
    if (!portable && !clsBase64::avx2Supported()) {
        state.SkipWithError("no AVX2 on this processor");
        return;
    }
    clsBase64::setForcePortable(portable);
    for (auto _ : state) {
        switch (op) {
        case Op::EncodeAscii:
            clsBase64::encode(b.data.data(), kBytes, b.ascii.data());
            break;
        case Op::EncodeUtf16:
            clsBase64::encode(b.data.data(), kBytes, b.utf16.data());
            break;
        case Op::DecodeAscii:
            benchmark::DoNotOptimize(
                clsBase64::decode(b.ascii.data(), qsizetype(b.ascii.size()), b.decoded.data()));
            break;
        case Op::DecodeUtf16:
            benchmark::DoNotOptimize(
                clsBase64::decode(b.utf16.data(), qsizetype(b.utf16.size()), b.decoded.data()));
            break;
        }
        benchmark::ClobberMemory();
    }
    clsBase64::setForcePortable(false);
    if (op == Op::DecodeAscii || op == Op::DecodeUtf16) {
        if (!std::equal(b.data.begin(), b.data.end(), b.decoded.begin()))
            state.SkipWithError("decoded bytes differ from the input");
    }
    state.SetBytesProcessed(state.iterations() * kBytes);
}

void BM_Memcpy(benchmark::State& state) {
    Buffers& b = buffers();
    for (auto _ : state) {
        std::memcpy(b.copy.data(), b.data.data(), b.data.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * kBytes);
}

// Each figure is repeated; the machine is shared, so the summary quotes the best repetition
// (the least disturbed) next to the median.
#define QUILLORA_BASE64_BENCH(fn, op, portable)                                                    \
    void fn(benchmark::State& state) {                                                             \
        run(state, op, portable);                                                                  \
    }                                                                                              \
    BENCHMARK(fn)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.3)->Repetitions(7)

QUILLORA_BASE64_BENCH(BM_EncodePortable, Op::EncodeAscii, true);
QUILLORA_BASE64_BENCH(BM_EncodeAvx2, Op::EncodeAscii, false);
QUILLORA_BASE64_BENCH(BM_EncodeUtf16Portable, Op::EncodeUtf16, true);
QUILLORA_BASE64_BENCH(BM_EncodeUtf16Avx2, Op::EncodeUtf16, false);
QUILLORA_BASE64_BENCH(BM_DecodePortable, Op::DecodeAscii, true);
QUILLORA_BASE64_BENCH(BM_DecodeAvx2, Op::DecodeAscii, false);
QUILLORA_BASE64_BENCH(BM_DecodeUtf16Portable, Op::DecodeUtf16, true);
QUILLORA_BASE64_BENCH(BM_DecodeUtf16Avx2, Op::DecodeUtf16, false);
BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.3)->Repetitions(7);

// Prints the medians as usual and, at the end, every benchmark's best and median rate in MB/s
// with its ratio to memcpy's best.
class SummaryReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        std::vector<Run> medians;
        for (const Run& r : runs) {
            if (r.error_occurred)
                continue;
            const std::string& name = r.run_name.function_name;
            if (r.run_type == Run::RT_Iteration && r.real_accumulated_time > 0) {
                m_order.insert({name, m_order.size()});
                const double mbps =
                    double(r.iterations) * double(kBytes) / r.real_accumulated_time / 1e6;
                m_best[name] = std::max(m_best[name], mbps);
                m_all[name].push_back(mbps);
            } else if (r.run_type == Run::RT_Aggregate && r.aggregate_name == "median") {
                medians.push_back(r);
            }
        }
        ConsoleReporter::ReportRuns(medians);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        const double reference = m_best["BM_Memcpy"];
        if (reference <= 0)
            return;
        std::vector<std::pair<size_t, std::string>> names;
        for (const auto& [name, index] : m_order)
            names.push_back({index, name});
        std::sort(names.begin(), names.end());
        std::printf("\nMB/s of binary data (64 MiB), best and median of the repetitions; ratio of "
                    "the best to memcpy's best (%.0f MB/s):\n",
                    reference);
        for (const auto& [index, name] : names) {
            std::vector<double>& all = m_all[name];
            std::sort(all.begin(), all.end());
            std::printf("  %-26s best %6.0f  median %6.0f  %.2f x memcpy\n", name.c_str(),
                        m_best[name], all[all.size() / 2], m_best[name] / reference);
        }
    }

private:
    std::map<std::string, size_t> m_order;
    std::map<std::string, double> m_best;
    std::map<std::string, std::vector<double>> m_all;
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    SummaryReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
