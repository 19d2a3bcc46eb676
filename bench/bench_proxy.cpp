// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures requests and frames that a parser sends to a worker, beside the least that two processes
// need for the same, and the processor time of a parser that does nothing.
//
//     bench_proxy PROCESSORS NQP2-WORKER

#include "bench/measure.h"
#include "bench/reading_worker.h"
#include "bench/two_processes.h"
#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "NQP2ParserU/ReadyParser.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace nqp2::bench {
namespace {

void SetInterface() {
    R8P2Parser_SetSysInterface(HostInterface().systemObject, HostInterface().table);
}

void MeasureRequest(Bench& bench, const std::string& processors) {
    BareTalk bare(sizeof(std::uint64_t));
    const std::uint64_t word = 0;
    const ReadingWorker worker;
    ReadyParser parser;
    bench.Together(Clock::Wall,
                   {bare.Measured("bare/request/" + processors, &word),
                    {"ours/request/" + processors,
                     [&] { Require(parser->SetRTExportExtraParam(1) == 1, "a request failed"); }}});
}

void MeasureFrames(Bench& bench, const std::string& processors, std::uint32_t length) {
    const std::string name = std::to_string(length) + '/' + processors;
    if (!bench.Wants("bare/" + name)) {
        return;
    }
    std::vector<unsigned char> frame(length, 'x');
    BareTalk bare(length);
    const ReadingWorker worker;
    ReadyParser parser;
    const auto send = [&] {
        Require(parser->AddRTExportAVData(2, frame.data(), length, nullptr, 0, 0) == 1,
                "a frame was not taken");
    };
    bench.Together(Clock::Wall,
                   {bare.Measured("bare/" + name, frame.data()), {"ours/" + name, send}});
}

/// Processor time in a second in which a parser, its proxy and all servers have nothing to do.
double IdleSecond(const std::string& program) {
    const WorkerStatus worker = UseWorker({.program = program});
    R8XDCAMParser_ResetSysInterface();
    SetInterface(); // the process's own server finds a worker now
    int context = 0;
    ReadyParser parser;
    parser->SetImpCallBack([](std::uint32_t, std::uint32_t, std::int32_t&, void*) {}, &context);
    const double before = Now(Clock::Processor);
    sleep(1);
    const double taken = Now(Clock::Processor) - before;
    Require(worker && parser->SetSystemType(VS_50I) == 1, "the worker does not answer");
    return taken;
}

void MeasureAll(Bench& bench) {
    const std::string& processors = bench.Arguments()[0];
    UseProcessors(std::atoi(processors.c_str()));
    SetInterface(); // nobody listens yet: parsers alone have servers
    MeasureRequest(bench, processors);
    for (const std::uint32_t length : kFrames) {
        MeasureFrames(bench, processors, length);
    }
    bench.Value("idle/" + processors, [&] { return IdleSecond(bench.Arguments()[1]); });
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    const int status =
        nqp2::bench::Main(argc, argv, 2, "PROCESSORS NQP2-WORKER", nqp2::bench::MeasureAll);
    R8XDCAMParser_ResetSysInterface();
    nqp2::LeaveWorker();
    return status;
}
