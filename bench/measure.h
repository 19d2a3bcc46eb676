// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>
#include <vector>

namespace nqp2::bench {

using Arguments = std::vector<std::string>;

/// The body of a main function: lets `add` register the benchmarks for the arguments that are no
/// options and runs them all. What is thrown becomes a line on standard error. Returns the exit
/// status; 2 for fewer than `least` arguments, which `usage` names.
int Run(int argc, char** argv, std::size_t least, const char* usage,
        const std::function<void(const Arguments&)>& add);

/// The same for programs that measure each folder by itself.
int RunOnEach(int argc, char** argv, void (*add)(const std::string& folder));

} // namespace nqp2::bench
