// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/value.h"

#include <functional>
#include <string>

namespace nqp2::tool {

class Console;

/// Prints each leaf of a record on a line of its own, with its dotted name before it.
void PrintFields(Console& console, const Value& record);

using TakeNamedText = std::function<void(const std::string& name, const std::string& text)>;

/// Gives what stands in each field of a record as comma-separated values, with its dotted name.
void ForEachCell(const Value& record, const TakeNamedText& take);

/// Prints records that have the same members as `fresh` as comma-separated values (RFC 4180,
/// UTF-8): first the dotted field names, then a row for each. Control characters other than line
/// breaks and tabs are written out.
void PrintCsv(Console& console, const Value& fresh, const Sequence& rows);

} // namespace nqp2::tool
