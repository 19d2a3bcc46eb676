// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Reads a card once and ends, for counting system calls from outside.

#include "bench/plain_read.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"

#include <cstdio>
#include <exception>
#include <string>

namespace {

/// True when every clip of the card came.
bool LoadAll(const std::string& card) {
    CNQP2Parser parser;
    parser.Init();
    CArray<_tag_P2Clip> clips;
    const __int64 result = parser.LoadClipEx(nqp2::InterfaceRoot(card), clips, 0);
    parser.Release();
    return result == 0 &&
           clips.GetSize() == static_cast<std::int64_t>(nqp2::bench::ListClips(card).size());
}

int Main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: scan_once CARD\n");
        return 2;
    }
    const std::string card = argv[1];
    const bool done = LoadAll(card);
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
