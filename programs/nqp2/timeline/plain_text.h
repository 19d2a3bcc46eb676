// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace nqp2::timeline {

/// The text, or its beginning of about so many bytes with dots behind it.
std::string CutText(std::string_view text, std::size_t most);

/// A foreign name, of any length, as messages show it.
std::string ShortName(const CString& name);

/// A text for a field of a table: line breaks, tabs and other control characters become blanks,
/// what is no UTF-8 U+FFFD.
std::string OneLine(std::string_view text);

/// The same in printable ASCII, at most so many characters: letters lose their accents, what has no
/// likeness becomes "?".
std::string Ascii(std::string_view text, std::size_t most);

} // namespace nqp2::timeline
