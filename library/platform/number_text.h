// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string_view>

/// Numbers as the C library's _wtoi family reads them: leading white space, one sign, decimal
/// digits; anything else ends the number; out of range saturates; no digits give 0.
namespace nqp2::platform {

/// What counts as white space around texts and before numbers, in every locale.
inline constexpr std::wstring_view kWhiteSpace = L" \t\n\v\f\r";

/// Whether an element or byte of a text is a decimal digit, in every locale.
template <class Char>
constexpr bool IsDigit(Char ch) {
    return ch >= Char{'0'} && ch <= Char{'9'};
}

/// Whether a text is the other with any digits in the place of its zeros.
bool HasForm(std::wstring_view text, std::wstring_view form);

std::int32_t ToInt32(std::wstring_view text);
std::int32_t ToInt32(std::string_view utf8);
std::int64_t ToInt64(std::wstring_view text);
std::int64_t ToInt64(std::string_view utf8);

/// A real number as atof reads it, with the point as decimal sign in every locale; 0 for no digits.
double ToDouble(std::wstring_view text);

} // namespace nqp2::platform
