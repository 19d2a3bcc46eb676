// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nqp2::tool {

/// "1.5 GiB", "12 bytes".
std::string BytesText(std::uint64_t bytes);

/// The bytes that somebody wrote as a number and perhaps a unit, in any letter case: "4096",
/// "64GB" (powers of 1,000), "59.6 GiB" (of 1,024), "1.5T". Nothing for any other text and for what
/// 63 bits cannot count.
std::optional<std::int64_t> SizeFromText(std::string_view text);

} // namespace nqp2::tool
