// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// The one place that converts between the library's wide text and its forms outside.
namespace nqp2::platform {

inline constexpr wchar_t kLastAscii = 0x7F;

/// File content: UTF-8. An unpaired surrogate becomes its three generalised UTF-8 bytes and comes
/// back from them; any other ill-formed byte becomes U+FFFD. Two elements that form a surrogate
/// pair are written as the one code point they stand for, an element beyond U+10FFFF as U+FFFD.
std::string Utf8FromText(std::wstring_view text);
/// Null counts as empty.
std::string Utf8FromText(const wchar_t* text);
CString TextFromUtf8(std::string_view bytes);
/// The same into a text whose memory, where that is its own, serves again.
void SetTextFromUtf8(CString& text, std::string_view bytes);

/// File names: as above, but bytes that are no UTF-8 (those of an encoded surrogate included) come
/// in as U+DC80 to U+DCFF and go out as the same bytes, so that every name that exists can be
/// opened again. A name from outside never holds a high surrogate: it survives UTF-16 as well.
std::string NameBytesFromText(std::wstring_view text);
CString TextFromNameBytes(std::string_view bytes);

/// The character at the start of a text that is not empty; of length 0 when that is no strict
/// UTF-8.
struct Utf8Character {
    char32_t code = 0;
    std::size_t length = 0; ///< bytes
};
Utf8Character FirstCharacter(std::string_view utf8);

/// UTF-16 (the wire, and lengths counted in code units). Unpaired surrogates pass unchanged.
std::u16string Utf16FromText(std::wstring_view text);
CString TextFromUtf16(std::u16string_view units);

} // namespace nqp2::platform
