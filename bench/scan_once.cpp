// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Reads a card once, with a report, and ends without taking its records apart, as the command line
// does: the floor of what that prints, and where system calls and memory are counted. With a folder
// it reads that one's files too; with --below every card in a folder and below.

#include "bench/plain_read.h"
#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>

namespace {

struct Scan {
    CArray<_tag_P2Clip> clips;
    nqp2::ScanReport report;
    Scan* before = nullptr;
};

/// True when every clip of the card came.
bool LoadAll(const CString& root) {
    Scan& scan = *new Scan;
    static Scan* kept = nullptr; // reachable until the end
    scan.before = std::exchange(kept, &scan);
    CNQP2Parser parser;
    parser.Init();
    const __int64 result = parser.LoadClipEx(root, scan.clips, 0, scan.report);
    parser.Release();
    return result == 0 && !scan.clips.IsEmpty() && scan.report.skipped.IsEmpty();
}

bool LoadBelow(const std::string& folder) {
    nqp2::CardSearch search;
    return nqp2::FindCards(nqp2::InterfaceRoot(folder), search) && !search.cards.IsEmpty() &&
           std::all_of(search.cards.begin(), search.cards.end(),
                       [](const nqp2::FoundCard& card) { return LoadAll(card.root); });
}

int Main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: scan_once CARD [FOLDER] | --below FOLDER\n");
        return 2;
    }
    const std::string card = argv[1];
    const std::string folder = argc == 3 ? argv[2] : "";
    const bool done = card == "--below"
                          ? LoadBelow(folder)
                          : LoadAll(nqp2::InterfaceRoot(card)) &&
                                (folder.empty() || nqp2::bench::ReadFolder(folder + "/") > 0);
    if (!done) {
        std::fprintf(stderr, "scan_once: %s: not all clips were read\n", card.c_str());
    }
    return done ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Main(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "scan_once: %s\n", error.what());
        return 1;
    }
}
