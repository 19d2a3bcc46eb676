// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace nqp2::tool {
class Console;
}

namespace nqp2::offload {

struct Added;
struct Arguments;
struct Inspection;

/// How many files, folders or findings something was found of.
struct Count {
    std::string_view name; ///< in JSON
    std::string_view words;
    std::uint64_t value = 0;
    bool isFault = false; ///< unless it is 0
};

/// All of them, what weighs most first.
std::vector<Count> CountsOf(const Inspection& inspection);

/// Prints what was found as a document of JSON.
void PrintInspectionJson(tool::Console& console, const Arguments& arguments,
                         const Inspection& inspection, const Added& added);

} // namespace nqp2::offload
