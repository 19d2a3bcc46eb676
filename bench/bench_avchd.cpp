// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures the scan of AVCHD cards beside listing, opening, reading and closing the same clip
// information and the first 64 KB of each stream. bench/run_bench.py makes the cards and works out
// the ratios.

#include "bench/measure.h"
#include "bench/plain_read.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ReadyParser.h"

#include <benchmark/benchmark.h>
#include <string>

namespace nqp2::bench {
namespace {

std::string InformationFolder(const std::string& card) {
    return card + "/PRIVATE/AVCHD/BDMV/CLIPINF/";
}

void ReadFloor(benchmark::State& state, const std::string& card) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadFolder(InformationFolder(card)) +
                                 ReadHeads(card + "/PRIVATE/AVCHD/BDMV/STREAM/"));
    }
}

void Load(benchmark::State& state, const std::string& card) {
    const auto expected = static_cast<std::int64_t>(ListFolder(InformationFolder(card)).size());
    const CString root = InterfaceRoot(card + "/PRIVATE");
    CNQP2Parser parser;
    for (auto _ : state) {
        CArray<_tag_P2Clip> clips;
        const bool loaded = parser.LoadAVCHDClip(root, clips) == 0 && clips.GetSize() == expected;
        state.PauseTiming(); // the records are the host's to destroy
        clips.RemoveAll();
        state.ResumeTiming();
        if (!loaded) {
            state.SkipWithError("not all clips were loaded");
            return;
        }
    }
}

struct Measurement {
    const char* name;
    void (*run)(benchmark::State& state, const std::string& card);
};

constexpr Measurement kMeasurements[] = {{"avchd_floor/", ReadFloor}, {"avchd_load/", Load}};

void Register(const std::string& card) {
    const std::string count = std::to_string(ListFolder(InformationFolder(card)).size());
    for (const Measurement& each : kMeasurements) {
        benchmark::RegisterBenchmark((each.name + count).c_str(), each.run, card)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::RunOnEach(argc, argv, nqp2::bench::Register);
}
