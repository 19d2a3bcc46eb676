// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures the card scan beside the least work that it can be compared with. bench/run_bench.py
// makes the cards, runs this program and works out the ratios.

#include "bench/measure.h"
#include "bench/plain_read.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ReadyParser.h"
#include "platform/file_system.h"
#include "tests/support/faulty_file_system.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <libxml/parser.h>
#include <malloc.h>
#include <memory>
#include <string>
#include <vector>

namespace nqp2::bench {
namespace {

constexpr std::chrono::milliseconds kSlowMedium{1}; ///< for each call on a card reader or network
constexpr std::uint64_t kMaxFileSize = 1 << 20;

/// Appends the card's clips; false when not all of them came.
bool LoadClips(ReadyParser& parser, const std::string& card, std::size_t expected,
               CArray<_tag_P2Clip>& clips) {
    const std::int64_t before = clips.GetSize();
    return parser->LoadClipEx(InterfaceRoot(card), clips, 0) == 0 &&
           clips.GetSize() - before == static_cast<std::int64_t>(expected);
}

void ReadFloor(benchmark::State& state, const std::string& card) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadOneAfterAnother(card));
    }
}

void ParseFloor(benchmark::State& state, const std::string& card) {
    const std::vector<std::string> documents = ReadDocuments(card);
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> context(xmlNewParserCtxt(),
                                                                               xmlFreeParserCtxt);
    for (auto _ : state) {
        for (const std::string& document : documents) {
            xmlDocPtr tree =
                xmlCtxtReadMemory(context.get(), document.data(), static_cast<int>(document.size()),
                                  nullptr, nullptr, XML_PARSE_NONET);
            if (tree == nullptr) {
                state.SkipWithError("a metadata file does not parse");
                return;
            }
            xmlFreeDoc(tree);
        }
    }
}

void Load(benchmark::State& state, const std::string& card) {
    const std::size_t expected = ListClips(card).size();
    ReadyParser parser;
    for (auto _ : state) {
        CArray<_tag_P2Clip> clips;
        const bool loaded = LoadClips(parser, card, expected, clips);
        state.PauseTiming(); // the records are the host's to destroy
        clips.RemoveAll();
        state.ResumeTiming();
        if (!loaded) {
            state.SkipWithError("not all clips were loaded");
            return;
        }
    }
}

void SlowReadFloor(benchmark::State& state, const std::string& card) {
    test::FaultyFileSystem slow;
    slow.SetDelay(kSlowMedium);
    const std::string folder = ClipFolder(card);
    for (auto _ : state) {
        std::vector<platform::FolderEntry> entries;
        std::string content;
        bool good = static_cast<bool>(slow.List(folder, entries));
        for (const platform::FolderEntry& entry : entries) {
            good = static_cast<bool>(slow.Read(folder + entry.name, kMaxFileSize, content)) && good;
        }
        if (!good) {
            state.SkipWithError("a metadata file cannot be read");
            return;
        }
    }
}

void SlowLoad(benchmark::State& state, const std::string& card) {
    test::FaultyFileSystem slow;
    slow.SetDelay(kSlowMedium);
    const platform::ScopedFileSystem inUse(slow);
    Load(state, card);
}

/// Bytes that the program holds on the heap.
std::size_t HeldBytes() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

/// What a clip of the card takes in memory once it is loaded.
void Memory(benchmark::State& state, const std::string& card) {
    const std::vector<std::string> documents = ReadDocuments(card);
    const auto clipCount = static_cast<double>(documents.size());
    ReadyParser parser;
    CArray<_tag_P2Clip> warmUp; // what the parser keeps for itself is no clip's
    bool loaded = LoadClips(parser, card, documents.size(), warmUp);
    warmUp = {};
    for (auto _ : state) {
        CArray<_tag_P2Clip> clips;
        const std::size_t before = HeldBytes();
        loaded = LoadClips(parser, card, documents.size(), clips) && loaded;
        state.counters["held_bytes"] = static_cast<double>(HeldBytes() - before) / clipCount;
    }
    if (!loaded) {
        state.SkipWithError("not all clips were loaded");
    }
}

struct Measurement {
    const char* name;
    void (*run)(benchmark::State& state, const std::string& card);
    bool once; ///< one pass is enough: slow by intent, or no matter of time
};

constexpr Measurement kMeasurements[] = {
    {"read_floor", ReadFloor, false},
    {"parse_floor", ParseFloor, false},
    {"load", Load, false},
    {"slow_read_floor", SlowReadFloor, true},
    {"slow_load", SlowLoad, true},
    {"memory", Memory, true},
};

void Register(const std::string& card) {
    const std::string count = std::to_string(ListClips(card).size());
    for (const Measurement& measurement : kMeasurements) {
        const std::string name = std::string(measurement.name) + '/' + count;
        auto* entry = benchmark::RegisterBenchmark(name.c_str(), measurement.run, card)
                          ->Unit(benchmark::kMillisecond)
                          ->UseRealTime();
        if (measurement.once) {
            entry->Iterations(1);
        }
    }
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::RunOnEach(argc, argv, nqp2::bench::Register);
}
