// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Lets a worker put one part into a file.
//
//     rewrap_once WORKER mov|mxf|mkv TARGET VIDEO [SOUND...]

#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "NQP2ParserU/Rewrap.h"
#include "NQP2ParserU/TextBytes.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>

namespace nqp2::bench {
namespace {

bool MakeFile(int argc, char** argv) {
    const char* const containers[] = {"mov", "mxf", "mkv"};
    RewrapRequest request;
    request.container = static_cast<RewrapContainer>(
        std::find(std::begin(containers), std::end(containers), std::string(argv[2])) -
        std::begin(containers));
    request.target = TextFromBytes(argv[3]);
    request.rate = {0, 1};
    RewrapPart part;
    part.video = TextFromBytes(argv[4]);
    for (int i = 5; i < argc; ++i) {
        part.sounds.Add(TextFromBytes(argv[i]));
    }
    request.parts.Add(part);
    const SystemInterface host = HostInterface();
    R8P2Parser_SetSysInterface(host.systemObject, host.table);
    bool isMade = false;
    if (UseWorker({.program = argv[1]})) {
        CNQP2Parser parser;
        parser.Init();
        RewrapResult result;
        isMade = Rewrap(parser, request, result) == RewrapStatus::Written;
        parser.Release();
        LeaveWorker();
    }
    R8P2Parser_SetSysInterface(nullptr, nullptr);
    return isMade;
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    if (argc < 5) {
        std::fprintf(stderr, "usage: rewrap_once WORKER mov|mxf|mkv TARGET VIDEO [SOUND...]\n");
        return 2;
    }
    return nqp2::bench::MakeFile(argc, argv) ? 0 : 1;
}
