// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/csv.h"

#include "nqp2/console.h"
#include "nqp2/display_text.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace nqp2::tool {
namespace {

/// A list of many events is one long cell: no copy is made only to double its quotes.
void PrintCell(Console& console, const std::string& text) {
    const std::string shown = Printable(text, LineBreaks::Keep);
    if (shown.find_first_of(",\"\n") == std::string::npos) {
        console.Write(shown);
        return;
    }
    console.Write("\"");
    std::string_view left = shown;
    for (std::size_t quote = left.find('"'); quote != std::string_view::npos;
         quote = left.find('"')) {
        console.Write(left.substr(0, quote + 1));
        console.Write("\"");
        left.remove_prefix(quote + 1);
    }
    console.Write(left);
    console.Write("\"");
}

void PrintRow(Console& console, const std::vector<FlatField>& fields,
              std::string FlatField::*member) {
    const char* separator = "";
    for (const FlatField& field : fields) {
        console.Write(separator);
        PrintCell(console, field.*member);
        separator = ",";
    }
    console.Write("\r\n");
}

} // namespace

void PrintCsv(Console& console, const Record& names, const Sequence& rows) {
    PrintRow(console, FlatFields(names, Flatten::KeepListsOfRecords), &FlatField::name);
    for (std::size_t i = 0; i < rows.count; ++i) {
        const Value row = rows.at(i);
        PrintRow(console, FlatFields(std::get<Record>(row.data), Flatten::KeepListsOfRecords),
                 &FlatField::text);
    }
}

} // namespace nqp2::tool
