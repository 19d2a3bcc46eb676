// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures clips that are loaded by name, beside the scan of the same card.
//
//     bench_names {NAME CARD}...

#include "bench/measure.h"
#include "bench/plain_read.h"
#include "bench/scan.h"
#include "NQP2ParserU/TextBytes.h"

#include <algorithm>
#include <string>
#include <vector>

namespace nqp2::bench {
namespace {

/// All clips of a card, in the order of names, as a host's own list has them.
std::vector<CString> NamesOf(const std::string& card) {
    std::vector<std::string> files = ListClips(card);
    std::sort(files.begin(), files.end());
    std::vector<CString> names;
    for (const std::string& file : files) {
        names.push_back(TextFromBytes(file.substr(0, file.find('.'))));
    }
    return names;
}

/// Loads clip after clip with a fresh parser, so that what it learns of the card counts.
void LoadByName(const CString& root, const std::vector<CString>& names) {
    ReadyParser parser;
    for (const CString& name : names) {
        _tag_P2Clip clip;
        Require(parser->LoadClipInfo(root, name, clip) == 0, "a clip was not loaded");
    }
}

void MeasureCard(Bench& bench, const std::string& name, const std::string& card) {
    const std::vector<CString> names = NamesOf(card);
    const CString root = InterfaceRoot(card);
    CardScan scan(card);
    bench.Together(Clock::Processor, {scan.Measured("load/" + name),
                                      {"by_name/" + name, [&] { LoadByName(root, names); }}});
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::MainOfCards(argc, argv, nqp2::bench::MeasureCard);
}
