// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Runs a program and prints what it took: {"wall": ns, "processor": ns, "peak": bytes}.

#include "bench/run_program.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: run_once PROGRAM [ARGUMENT...]\n");
        return 2;
    }
    try {
        const auto cost = nqp2::bench::RunProgram({argv + 1, argv + argc});
        std::printf("{\"wall\": %.0f, \"processor\": %.0f, \"peak\": %.0f}\n", cost.wall,
                    cost.processor, cost.peak);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "run_once: %s\n", error.what());
        return 1;
    }
    return 0;
}
