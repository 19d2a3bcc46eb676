// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

/// What programs share that measure this process together with another one.
namespace nqp2::bench {

/// Two processes that wake each other; each on a processor of its own where there are two, so that
/// no measurement depends on where the system happens to put them.
inline void RunOn(long processor) {
    cpu_set_t processors;
    CPU_ZERO(&processors);
    CPU_SET(static_cast<std::size_t>(processor % sysconf(_SC_NPROCESSORS_ONLN)), &processors);
    sched_setaffinity(0, sizeof(processors), &processors);
}

/// Runs `body` in a process that ends with this one.
template <class Body>
pid_t RunBeside(Body body) {
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        RunOn(1);
        body();
        _exit(0);
    }
    return child;
}

inline void End(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

/// Reads every byte, as a consumer does that writes a message to a medium.
inline std::uint64_t Sum(const void* bytes, std::size_t length) {
    const auto* const text = static_cast<const char*>(bytes);
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i + sizeof(std::uint64_t) <= length; i += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text + i, sizeof(word));
        sum += word;
    }
    return sum;
}

/// Processor time of this process so far.
inline double ProcessorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Measured by the clock on the wall, in milliseconds.
template <class Run>
auto* Register(const char* name, Run run) {
    return benchmark::RegisterBenchmark(name, run)->Unit(benchmark::kMillisecond)->UseRealTime();
}

} // namespace nqp2::bench
