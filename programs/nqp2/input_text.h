// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"

#include <charconv>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace nqp2::tool {

/// A number from 0 on, written in nothing but digits; nothing for any other text and for one that
/// is too large.
template <std::signed_integral Number>
std::optional<Number> WholeNumber(std::string_view text) {
    Number number = -1;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    const bool whole = error == std::errc() && stopped == end && number >= 0;
    return whole && text.front() != '-' ? std::optional(number) : std::nullopt;
}

/// 8-4-4-4-12 digits in lower case.
std::string GuidText(const GUID& guid);

/// The GUID behind 8-4-4-4-12 or 32 hexadecimal digits; nothing for any other text.
std::optional<GUID> GuidFromForm(std::string_view text);

/// Whether a file in XML can hold the text: nothing of it is a control character but tab and line
/// ends, half a surrogate pair (which bytes that are no UTF-8 become) or no character at all.
bool FitsXml(const CString& text);

/// What keeps a text from being the name of a file on a card, whose file systems are FAT's; "" when
/// nothing does. `extension` is added by whoever makes the file, unless the name holds it.
const char* FileNameFault(const CString& name, const wchar_t* extension);

} // namespace nqp2::tool
