// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/command.h"
#include "nqp2/value.h"

#include <functional>

namespace nqp2::tool {

/// Prints a record as a document in JSON: each member on a line of its own, and each element of a
/// member that is a list of records. Nothing is held but what is being written. Throws Failure when
/// standard output cannot be written, as all that is here.
void PrintJson(Console& console, const Value& record);

/// Prints one record, as JSON or each field on a line of its own.
void PrintRecord(Console& console, bool json, const Value& record);

/// What a command lists, in each of its forms.
struct Listing {
    Record document; ///< as JSON
    Value fresh;     ///< for CSV: a record that names the fields,
    Sequence rows;   ///< and those that have them
    std::function<void(Console&)> printTable;
};

/// Prints it in the form that was asked for.
void PrintListing(Console& console, const OutputForm& form, const Listing& listing);

} // namespace nqp2::tool
