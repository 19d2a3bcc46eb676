// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/json_output.h"
#include "console/value.h"
#include "nqp2/command.h"

#include <functional>

namespace nqp2::tool {

/// Prints one record, as JSON or each field on a line of its own. Throws Failure when standard
/// output cannot be written, as all that is here.
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
