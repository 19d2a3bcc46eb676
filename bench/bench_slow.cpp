// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures the scan where files come slowly, beside one read after another through the same file
// system, and that warm files lose nothing by it.
//
//     bench_slow CARD

#include "bench/measure.h"
#include "bench/plain_read.h"
#include "bench/scan.h"
#include "platform/file_system.h"
#include "platform/read_ahead.h"
#include "tests/support/faulty_file_system.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>
#include <vector>

namespace nqp2::bench {
namespace {

using std::chrono::microseconds;

constexpr int kDelays[] = {50, 100, 200, 1000};
constexpr std::uint64_t kMaxFileSize = 1 << 20;
constexpr const char* kCacheControl = "/proc/sys/vm/drop_caches";

/// Timers of threads that are made from here on are exact to the nanosecond, not to the 50
/// microseconds by which the system may let others sleep longer.
void SleepExactly() {
    Require(prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL) == 0, "no exact timers");
}

void ReadSlowly(platform::FileSystem& files, const std::string& card) {
    const std::string folder = ClipFolder(card);
    std::vector<platform::FolderEntry> entries;
    std::string content;
    bool good = static_cast<bool>(files.List(folder, entries));
    for (const platform::FolderEntry& entry : entries) {
        good = static_cast<bool>(files.Read(folder + entry.name, kMaxFileSize, content)) && good;
    }
    Require(good, "a metadata file cannot be read");
}

/// What a call really takes longer.
void MeasureDelay(Bench& bench, const std::string& name, test::FaultyFileSystem& slow,
                  const std::string& path) {
    platform::FileInfo info;
    bench.Together(
        Clock::Wall,
        {{name, [&] { Require(static_cast<bool>(slow.Stat(path, info)), "the card has gone"); }}});
}

void MeasureSlow(Bench& bench, const std::string& card, int delay) {
    const std::string name = std::to_string(delay);
    test::FaultyFileSystem slow;
    slow.SetDelay(microseconds(delay));
    const platform::ScopedFileSystem inUse(slow);
    MeasureDelay(bench, "delay/" + name, slow, card);
    CardScan scan(card);
    bench.Together(Clock::Wall, {{"read/" + name, [&] { ReadSlowly(slow, card); }},
                                 scan.Measured("load/" + name)});
}

void DropCaches() {
    sync();
    const int control = open(kCacheControl, O_WRONLY | O_CLOEXEC);
    const bool dropped = control >= 0 && write(control, "3", 1) == 1;
    close(control);
    Require(dropped, "the caches cannot be dropped");
}

void MeasureCold(Bench& bench, const std::string& card) {
    if (access(kCacheControl, W_OK) != 0) {
        for (const char* name : {"read/cold", "load/cold"}) {
            bench.Absent(name, "the system's caches cannot be dropped");
        }
        return;
    }
    CardScan scan(card);
    Subject load = scan.Measured("load/cold");
    load.before = DropCaches;
    bench.Together(Clock::Wall,
                   {{"read/cold", [&] { Keep(ReadOneAfterAnother(card)); }, DropCaches}, load});
}

void ScanWithoutThreads(CardScan& scan) {
    const platform::ScopedThreadLimit none(0);
    scan.Run();
}

void MeasureWarm(Bench& bench, const std::string& card) {
    CardScan scan(card);
    Subject alone = scan.Measured("alone/warm");
    alone.run = [&] { ScanWithoutThreads(scan); };
    bench.Together(Clock::Processor, {alone, scan.Measured("load/warm")});
}

void MeasureAll(Bench& bench) {
    SleepExactly();
    const std::string& card = bench.Arguments().front();
    MeasureWarm(bench, card);
    for (const int delay : kDelays) {
        MeasureSlow(bench, card, delay);
    }
    if (bench.Wants("load/cold")) {
        MeasureCold(bench, card);
    }
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Main(argc, argv, 1, "CARD", nqp2::bench::MeasureAll);
}
