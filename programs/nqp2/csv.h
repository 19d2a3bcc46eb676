// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/value.h"

namespace nqp2::tool {

class Console;

/// Prints records that have the same members as comma-separated values (RFC 4180, UTF-8): first
/// the dotted field names, then a row for each. Control characters other than line breaks and tabs
/// are written out.
void PrintCsv(Console& console, const Record& names, const Sequence& rows);

} // namespace nqp2::tool
