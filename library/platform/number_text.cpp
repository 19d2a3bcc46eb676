// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/number_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <locale.h>
#include <string>

namespace nqp2::platform {
namespace {

/// The magnitude of the digits at the start of `text`, or `limit` when it is larger.
template <class Char>
std::uint64_t LeadingDigits(std::basic_string_view<Char> text, std::uint64_t limit) {
    std::uint64_t value = 0;
    for (const Char ch : text) {
        if (!IsDigit(ch)) {
            break;
        }
        const auto digit = static_cast<std::uint64_t>(ch - Char{'0'});
        value = value > (limit - digit) / 10 ? limit : value * 10 + digit;
    }
    return value;
}

template <class Char>
bool IsWhiteSpace(Char ch) {
    return kWhiteSpace.find(static_cast<wchar_t>(ch)) != std::wstring_view::npos;
}

/// The one rule; both forms of text hold its characters with the same values.
template <class Char>
std::int64_t ReadNumber(std::basic_string_view<Char> text) {
    constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const auto start = std::find_if_not(text.begin(), text.end(), IsWhiteSpace<Char>);
    text.remove_prefix(static_cast<std::size_t>(start - text.begin()));
    const bool isNegative = text.starts_with(Char{'-'});
    if (isNegative || text.starts_with(Char{'+'})) {
        text.remove_prefix(1);
    }
    if (isNegative) {
        return static_cast<std::int64_t>(0 - LeadingDigits(text, kMost + 1));
    }
    return static_cast<std::int64_t>(LeadingDigits(text, kMost));
}

std::int32_t Saturated(std::int64_t value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

} // namespace

bool HasForm(std::wstring_view text, std::wstring_view form) {
    return std::equal(
        text.begin(), text.end(), form.begin(), form.end(),
        [](wchar_t ch, wchar_t like) { return like == L'0' ? IsDigit(ch) : ch == like; });
}

std::int32_t ToInt32(std::wstring_view text) {
    return Saturated(ReadNumber(text));
}

std::int32_t ToInt32(std::string_view utf8) {
    return Saturated(ReadNumber(utf8));
}

std::int64_t ToInt64(std::wstring_view text) {
    return ReadNumber(text);
}

std::int64_t ToInt64(std::string_view utf8) {
    return ReadNumber(utf8);
}

double ToDouble(std::wstring_view text) {
    std::string bytes;
    for (const wchar_t ch : text) {
        bytes.push_back(ch > 0 && ch < 0x80 ? static_cast<char>(ch) : '?');
    }
    // The host's own locale may write the point as a comma.
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(bytes.c_str(), nullptr, plain);
}

} // namespace nqp2::platform
