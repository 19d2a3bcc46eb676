// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/P2Clip.h"

#include <vector>

namespace nqp2::tool {

class Console;

/// Clips in the order in which they are shown; the records belong to the caller.
using ClipOrder = std::vector<const _tag_P2Clip*>;

/// Prints one line a clip, what a person on set looks for, on standard output, and their number
/// and running time on standard error.
void PrintClipTable(Console& console, const ClipOrder& clips);

} // namespace nqp2::tool
