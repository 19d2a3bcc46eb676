// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/number_text.h"

#include "platform/white_space.h"

#include <algorithm>
#include <limits>

namespace nqp2::platform {
namespace {

/// The magnitude of the digits at the start of `text`, or `limit` when it is larger.
std::uint64_t LeadingDigits(std::wstring_view text, std::uint64_t limit) {
    std::uint64_t value = 0;
    for (const wchar_t ch : text) {
        if (ch < L'0' || ch > L'9') {
            break;
        }
        const auto digit = static_cast<std::uint64_t>(ch - L'0');
        value = value > (limit - digit) / 10 ? limit : value * 10 + digit;
    }
    return value;
}

} // namespace

std::int32_t ToInt32(std::wstring_view text) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(ToInt64(text), Limits::min(), Limits::max()));
}

std::int64_t ToInt64(std::wstring_view text) {
    constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
    const bool isNegative = text.starts_with(L'-');
    if (isNegative || text.starts_with(L'+')) {
        text.remove_prefix(1);
    }
    if (isNegative) {
        return static_cast<std::int64_t>(0 - LeadingDigits(text, kMost + 1));
    }
    return static_cast<std::int64_t>(LeadingDigits(text, kMost));
}

} // namespace nqp2::platform
