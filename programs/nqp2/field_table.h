// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/value.h"

namespace nqp2::tool {

class Console;

/// Prints each leaf of a record on a line of its own, with its dotted name before it.
void PrintFields(Console& console, const Record& record);

} // namespace nqp2::tool
