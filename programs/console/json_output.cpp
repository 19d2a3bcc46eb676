// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/json_output.h"

#include "console/json_writer.h"
#include "console/output_text.h"
#include "console/value.h"

namespace nqp2::tool {
namespace {

void PutDocument(OutputText& out, const Value& record) {
    JsonDocumentWriter json(out);
    Put(json, record);
}

} // namespace

void PrintJson(Console& console, const Value& record) {
    OutputText out(&console);
    PutDocument(out, record);
    out.Flush();
}

std::string JsonText(const Value& record) {
    OutputText out;
    PutDocument(out, record);
    return std::string(out.Text());
}

} // namespace nqp2::tool
