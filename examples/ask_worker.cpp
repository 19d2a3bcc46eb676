// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include <NQP2ParserU/Channel.h>
#include <NQP2ParserU/NQP2Parser.h>
#include <NQP2ParserU/R8P2SysInterface.h>
#include <NQP2ParserU/TextBytes.h>

#include <cstdio>

/// Starts the worker program that is named and asks it whether it takes a rate family, which any
/// worker does, and a block size that none does.
int main(int argc, char** argv) {
    const nqp2::WorkerStatus started =
        nqp2::UseWorker({.program = argc > 1 ? argv[1] : "/usr/local/libexec/nqp2-worker"});
    if (!started) {
        std::fprintf(stderr, "the worker does not start: %s\n", started.reason.c_str());
        return 1;
    }
    const nqp2::SystemInterface own = nqp2::HostInterface();
    R8P2Parser_SetSysInterface(own.systemObject, own.table);
    CNQP2Parser parser;
    parser.Init();
    const bool taken = parser.SetSystemType(VS_5994I) == 1 && parser.SetWriteBlockSize(1) == 0;
    std::printf("%s\n", nqp2::BytesFromText(parser.GetLastError()).c_str());
    parser.Release();
    R8XDCAMParser_ResetSysInterface();
    nqp2::LeaveWorker();
    return taken ? 0 : 1;
}
