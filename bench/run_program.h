// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

namespace nqp2::bench {

/// What a program took from its start until it had ended, its own children included.
struct ProgramCost {
    double wall = 0;      ///< nanoseconds
    double processor = 0; ///< nanoseconds
    double peak = 0;      ///< bytes of memory, of the largest process
};

/// Runs a program to its end, its output thrown away. Throws when it fails. Peaks are right as long
/// as this process itself stays small: a child begins with its memory.
ProgramCost RunProgram(const std::vector<std::string>& command);

} // namespace nqp2::bench
