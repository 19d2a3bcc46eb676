// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/json_output.h"

#include "console/json_writer.h"
#include "console/output_text.h"
#include "console/value.h"

namespace nqp2::tool {

void PrintJson(Console& console, const Value& record) {
    OutputText out(&console);
    JsonDocumentWriter json(out);
    Put(json, record);
    out.Flush();
}

} // namespace nqp2::tool
