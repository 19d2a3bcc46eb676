// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bench/measure.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <exception>

namespace nqp2::bench {

int Run(int argc, char** argv, std::size_t least, const char* usage,
        const std::function<void(const Arguments&)>& add) {
    benchmark::Initialize(&argc, argv);
    const Arguments arguments(argv + 1, argv + argc);
    if (arguments.size() < least) {
        std::fprintf(stderr, "usage: %s [--benchmark_...] %s\n", argv[0], usage);
        return 2;
    }
    try {
        add(arguments);
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
    benchmark::Shutdown();
    return 0;
}

int RunOnEach(int argc, char** argv, void (*add)(const std::string& folder)) {
    return Run(argc, argv, 1, "FOLDER...", [add](const Arguments& folders) {
        std::for_each(folders.begin(), folders.end(), add);
    });
}

} // namespace nqp2::bench
