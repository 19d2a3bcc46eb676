// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/value.h"

#include <string>

namespace nqp2::tool {

class Console;

/// Prints a document as JSON in UTF-8: each member of the record on a line of its own, and each
/// element of a member that is a list of records. Bytes that are no UTF-8 become U+FFFD; control
/// characters are escaped.
void PrintJson(Console& console, const Record& document);

/// The same form on one line.
std::string JsonText(const Value& value);

} // namespace nqp2::tool
