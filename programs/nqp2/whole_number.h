// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <charconv>
#include <concepts>
#include <optional>
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

} // namespace nqp2::tool
