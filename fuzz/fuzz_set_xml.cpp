// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A schema up to the first zero byte, the document that must fit it in the rest.

#include "fuzz/measured_input.h"
#include "fuzz/require.h"
#include "xml/dom/document.h"
#include "xml/dom/schema.h"
#include "xml/dom/serialize.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using nqp2::dom::Document;
using nqp2::dom::ParseError;
using nqp2::dom::SelectionRule;
using nqp2::fuzz::Require;

// Larger inputs only make each try slow.
constexpr std::size_t kMaxInput = std::size_t{16} * 1024;

void Hold(const Document& document, const std::string& schema) {
    const std::string before = nqp2::dom::Serialize(*document.DocumentNode());
    const ParseError error = nqp2::dom::Validate(*document.DocumentNode(), schema);
    const ParseError again = nqp2::dom::Validate(*document.DocumentNode(), schema);
    Require(error.errorCode == again.errorCode, "the verdict is the same each time");
    Require(nqp2::dom::Serialize(*document.DocumentNode()) == before,
            "the document stays as it is");
}

} // namespace

int nqp2::fuzz::TestInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(input.find('\0'), input.size());
    const std::string_view text = input.substr(std::min(end + 1, input.size()));
    if (size > kMaxInput) {
        return 0;
    }
    static Document document(SelectionRule::Names::Namespace);
    if (document.LoadText(text)) {
        Hold(document, std::string(input.substr(0, end)));
    }
    return 0;
}
