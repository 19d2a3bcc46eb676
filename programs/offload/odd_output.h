// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/folder_index.h"

#include <string_view>

namespace nqp2::tool {
class Console;
} // namespace nqp2::tool

namespace nqp2::offload {

/// Prints a line "WORD: PATH (WHY)" for each entry that was kept, and how many more there are.
void PrintOdd(tool::Console& console, std::string_view word, const OddEntries& entries);

} // namespace nqp2::offload
