// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

/// Letter-case rules of a card's file system, for names and for texts compared without case.
/// Independent of the process's locale.
namespace nqp2::platform {

wchar_t ToUpper(wchar_t ch);
wchar_t ToLower(wchar_t ch);

/// The text with every letter in upper case, one element for one.
std::wstring FoldCase(std::wstring_view text);
/// Folds a file name given as bytes; bytes that are no UTF-8 stay as they are.
std::string FoldNameCase(std::string_view name);
bool EqualNoCase(std::wstring_view left, std::wstring_view right);

} // namespace nqp2::platform
