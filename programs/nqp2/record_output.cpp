// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/record_output.h"

#include "nqp2/flat_fields.h"
#include "nqp2/json_writer.h"
#include "nqp2/output_text.h"

namespace nqp2::tool {

void PrintJson(Console& console, const Value& record) {
    OutputText out(&console);
    JsonDocumentWriter json(out);
    Put(json, record);
    out.Flush();
}

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
