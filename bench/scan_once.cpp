// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Reads a card once, with a report, and ends without taking its records apart, as the command line
// does: the floor of what that prints, and where system calls and memory are counted. With a folder
// it reads that one's files too.

#include "bench/plain_read.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"

#include <cstdio>
#include <exception>
#include <string>

namespace {

struct Scan {
    CArray<_tag_P2Clip> clips;
    nqp2::ScanReport report;
};

/// True when every clip of the card came.
bool LoadAll(const std::string& card) {
    static Scan& scan = *new Scan;
    CNQP2Parser parser;
    parser.Init();
    const __int64 result = parser.LoadClipEx(nqp2::InterfaceRoot(card), scan.clips, 0, scan.report);
    parser.Release();
    return result == 0 && !scan.clips.IsEmpty() && scan.report.skipped.IsEmpty();
}

int Main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: scan_once CARD [FOLDER]\n");
        return 2;
    }
    const std::string card = argv[1];
    const bool done =
        LoadAll(card) && (argc == 2 || nqp2::bench::ReadFolder(std::string(argv[2]) + "/") > 0);
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
