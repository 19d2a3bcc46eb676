// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/csv.h"

#include "tools/nqp2/console.h"
#include "tools/nqp2/display_text.h"

#include <string>

namespace nqp2::tool {
namespace {

std::string CsvCell(const std::string& text) {
    std::string shown = Printable(text, LineBreaks::Keep);
    if (shown.find_first_of(",\"\n") == std::string::npos) {
        return shown;
    }
    std::string quoted = "\"";
    for (const char ch : shown) {
        quoted += ch;
        if (ch == '"') {
            quoted += ch;
        }
    }
    return quoted + '"';
}

void PrintRow(Console& console, const std::vector<FlatField>& fields,
              std::string FlatField::*member) {
    const char* separator = "";
    for (const FlatField& field : fields) {
        console.Write(separator);
        console.Write(CsvCell(field.*member));
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
