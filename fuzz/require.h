// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdio>
#include <cstdlib>

namespace nqp2::fuzz {

/// Ends the program, so that the fuzzer keeps the input, when a promise is broken.
inline void Require(bool kept, const char* promise) {
    if (!kept) {
        std::fprintf(stderr, "broken: %s\n", promise);
        std::abort();
    }
}

} // namespace nqp2::fuzz
