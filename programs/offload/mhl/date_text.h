// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Times are seconds since 1970 UTC.
namespace nqp2::mhl {

/// "2026-11-21T08:09:10Z"; "" for a year without four digits.
std::string DateText(std::int64_t time);
/// "2026-11-21_080910Z", for file names.
std::string DateForName(std::int64_t time);
/// Takes a date of XML Schema: fractions are cut off, one without an offset is UTC.
std::optional<std::int64_t> ParseDate(std::string_view text);

} // namespace nqp2::mhl
