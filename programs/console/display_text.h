// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

namespace nqp2::tool {

enum class LineBreaks { Escape, Keep };

/// Text that a terminal shows and nothing more: control characters and characters that reorder
/// text are written out ("\x1b", "\u202e"), bytes that are no UTF-8 become U+FFFD. A card's names
/// come from strangers.
std::string Printable(std::string_view text, LineBreaks lineBreaks);

/// Terminal columns of printable UTF-8 text: wide East Asian characters and emoji take two,
/// combining marks none.
int DisplayWidth(std::string_view text);

/// The text cut to `width` columns (at least 1), with an ellipsis at its end when it is longer.
std::string CutToWidth(const std::string& text, int width);

} // namespace nqp2::tool
