// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/guid_form.h"

#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace nqp2::tool {
namespace {

/// The two ways to write a GUID: "x" stands for a hexadecimal digit.
constexpr std::string_view kGuidForms[] = {"xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx",
                                           "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"};

bool IsHexDigit(char ch) {
    return std::string_view("0123456789abcdefABCDEF").find(ch) != std::string_view::npos;
}

bool HasForm(std::string_view text, std::string_view form) {
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), [](char ch, char model) {
        return model == 'x' ? IsHexDigit(ch) : ch == model;
    });
}

} // namespace

std::string GuidText(const GUID& guid) {
    std::string text = fmt::format("{:08x}-{:04x}-{:04x}-", guid.Data1, guid.Data2, guid.Data3);
    for (std::size_t i = 0; i < std::size(guid.Data4); ++i) {
        text += fmt::format("{}{:02x}", i == 2 ? "-" : "", guid.Data4[i]);
    }
    return text;
}

std::optional<GUID> GuidFromForm(std::string_view text) {
    const bool known = std::any_of(std::begin(kGuidForms), std::end(kGuidForms),
                                   [&](std::string_view form) { return HasForm(text, form); });
    if (!known) {
        return std::nullopt;
    }
    CString digits = TextFromBytes(text);
    digits.Remove(L'-');
    return CNQP2Parser::GuidFromUMID(digits);
}

} // namespace nqp2::tool
