// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/field_table.h"

#include "nqp2/table.h"

namespace nqp2::tool {

void PrintFields(Console& console, const Record& record) {
    Table table({{"", Align::Left, 0}, {"", Align::Left, 8}});
    for (const FlatField& field : FlatFields(record, Flatten::Everything)) {
        table.AddRow({field.name, field.text});
    }
    table.Print(console);
}

} // namespace nqp2::tool
