// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures how soon nqp2 and the worker are there, beside a program that links what nqp2 links and
// returns at once.
//
//     bench_start BARE-PROGRAM NQP2 NQP2-WORKER CAMERA-FILE

#include "bench/measure.h"
#include "bench/run_program.h"
#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "NQP2ParserU/ReadyParser.h"

#include <string>
#include <unistd.h>
#include <vector>

namespace nqp2::bench {
namespace {

/// From nothing to the first request that the worker has answered.
void FirstAnswer(const std::string& program) {
    const WorkerStatus worker = UseWorker({.program = program});
    Require(worker.ready, worker.reason.c_str());
    ReadyParser parser;
    Require(parser->SetSystemType(VS_50I) == 1, "the worker does not answer");
}

/// What the system still clears away would slow what comes next.
void EndWorker() {
    LeaveWorker();
    usleep(20000);
}

void MeasureAll(Bench& bench) {
    const std::vector<std::string>& programs = bench.Arguments();
    R8P2Parser_SetSysInterface(HostInterface().systemObject, HostInterface().table);
    bench.Together(Clock::Wall,
                   {{"bare", [&] { RunProgram({programs[0]}); }},
                    {"base_info",
                     [&] {
                         RunProgram({programs[1], "base-info", programs[3]});
                     }},
                    {"version",
                     [&] {
                         RunProgram({programs[1], "--version"});
                     }},
                    {"first_answer", [&] { FirstAnswer(programs[2]); }, LeaveWorker, EndWorker}});
    R8XDCAMParser_ResetSysInterface();
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Main(argc, argv, 4, "BARE-PROGRAM NQP2 NQP2-WORKER CAMERA-FILE",
                             nqp2::bench::MeasureAll);
}
