// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/record_output.h"

#include "nqp2/flat_fields.h"

namespace nqp2::tool {

void PrintRecord(Console& console, bool json, const Value& record) {
    if (json) {
        PrintJson(console, record);
    } else {
        PrintFields(console, record);
    }
}

void PrintListing(Console& console, const OutputForm& form, const Listing& listing) {
    if (form.json) {
        PrintJson(console, listing.document);
    } else if (form.csv) {
        PrintCsv(console, listing.fresh, listing.rows);
    } else {
        listing.printTable(console);
    }
}

} // namespace nqp2::tool
