// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::tool {

class Console;
struct Value;

/// Prints a record as a document in JSON: each member on a line of its own, and each element of a
/// member that is a list of records. Nothing is held but what is being written. Throws Failure when
/// standard output cannot be written.
void PrintJson(Console& console, const Value& record);

/// The same as a text.
std::string JsonText(const Value& record);

} // namespace nqp2::tool
