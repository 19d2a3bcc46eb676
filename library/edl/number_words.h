// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

namespace nqp2::edl {

/// How many words of an element count: outputs of an event.
inline constexpr int kWords = 4;

enum class NumberForm { Whole, WholeEach, RealEach };

/// Whether a text is the number, or the numbers for at most kWords outputs, that a reader takes it
/// for; it takes anything for some. An empty text is one that is not there.
bool IsNumeric(std::string_view text, NumberForm form);

} // namespace nqp2::edl
