// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bench/measure.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <exception>

namespace nqp2::bench {

int Run(int argc, char** argv, void (*add)(const std::string& argument)) {
    benchmark::Initialize(&argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s [--benchmark_...] FOLDER...\n", argv[0]);
        return 2;
    }
    try {
        for (int i = 1; i < argc; ++i) {
            add(argv[i]);
        }
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
    benchmark::Shutdown();
    return 0;
}

} // namespace nqp2::bench
