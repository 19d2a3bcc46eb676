// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/odd_output.h"

#include "console/console.h"

#include <fmt/core.h>

namespace nqp2::offload {

void PrintOdd(tool::Console& console, std::string_view word, const OddEntries& entries) {
    for (const OddEntry& each : entries.Kept()) {
        console.WriteLine(
            fmt::format("{}: {} ({})", word, each.path.empty() ? "." : each.path, each.why));
    }
    if (entries.Count() > entries.Kept().size()) {
        console.WriteLine(
            fmt::format("{}: and {} more", word, entries.Count() - entries.Kept().size()));
    }
}

} // namespace nqp2::offload
