// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A schema up to the first zero byte, the document that must fit it in the rest.

#include "fuzz/fuzz_target.h"
#include "xml/dom/document.h"
#include "xml/dom/schema.h"
#include "xml/dom/serialize.h"

#include <algorithm>

namespace nqp2::fuzz {
namespace {

using dom::Document;
using dom::ParseError;
using dom::SelectionRule;

// Larger inputs only make each try slow.
constexpr std::size_t kMaxInput = std::size_t{16} * 1024;

void Hold(const Document& document, const std::string& schema) {
    const std::string before = dom::Serialize(*document.DocumentNode());
    const ParseError error = dom::Validate(*document.DocumentNode(), schema);
    const ParseError again = dom::Validate(*document.DocumentNode(), schema);
    Require(error.errorCode == again.errorCode, "the verdict is the same each time");
    Require(dom::Serialize(*document.DocumentNode()) == before, "the document stays as it is");
}

} // namespace

void TestInput(Input data) {
    const std::string_view input = AsText(data);
    const std::size_t end = std::min(input.find('\0'), input.size());
    const std::string_view text = input.substr(std::min(end + 1, input.size()));
    if (input.size() > kMaxInput) {
        return;
    }
    static Document document(SelectionRule::Names::Namespace);
    if (document.LoadText(text)) {
        Hold(document, std::string(input.substr(0, end)));
    }
}

} // namespace nqp2::fuzz
