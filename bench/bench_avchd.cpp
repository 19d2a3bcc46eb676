// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures the scan of AVCHD cards beside listing, opening, reading and closing the same clip
// information and playlists, and, as a figure of its own, the first 64 KB of each stream.
//
//     bench_avchd {NAME CARD}...

#include "bench/measure.h"
#include "bench/plain_read.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ReadyParser.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::bench {
namespace {

void MeasureCard(Bench& bench, const std::string& name, const std::string& card) {
    const std::string folder = card + "/PRIVATE/AVCHD/BDMV/";
    const std::string information = folder + "CLIPINF/";
    const auto expected = static_cast<std::int64_t>(ListFolder(information).size());
    const CString root = InterfaceRoot(card + "/PRIVATE");
    ReadyParser parser;
    CArray<_tag_P2Clip> clips;
    const auto load = [&] {
        Require(parser->LoadAVCHDClip(root, clips) == 0 && clips.GetSize() == expected,
                "not all clips were loaded");
    };
    bench.Together(Clock::Processor,
                   {{"read/" + name,
                     [&] { Keep(ReadFolder(information) + ReadFolder(folder + "PLAYLIST/")); }},
                    {"heads/" + name, [&] { Keep(ReadHeads(folder + "STREAM/")); }},
                    {"load/" + name, load, {}, [&] { clips = {}; }}});
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::MainOfCards(argc, argv, nqp2::bench::MeasureCard);
}
