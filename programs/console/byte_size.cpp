// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/byte_size.h"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace nqp2::tool {
namespace {

/// What stands before the B.
constexpr std::string_view kPrefixes = "KMGTPE";
constexpr double kStep = 1024; ///< from one unit to the next

/// What a unit multiplies by; nothing for what is none.
std::optional<double> Factor(std::string unit) {
    std::transform(unit.begin(), unit.end(), unit.begin(),
                   [](unsigned char each) { return static_cast<char>(std::toupper(each)); });
    if (unit.empty() || unit == "B" || unit == "BYTES") {
        return 1;
    }
    const std::size_t power = kPrefixes.find(unit.front());
    const std::string rest = unit.substr(1);
    if (power == std::string_view::npos || (!rest.empty() && rest != "B" && rest != "IB")) {
        return std::nullopt;
    }
    return std::pow(rest == "IB" ? kStep : 1000, power + 1);
}

} // namespace

std::string BytesText(std::uint64_t bytes) {
    double value = static_cast<double>(bytes);
    if (value < kStep) {
        return fmt::format("{} bytes", bytes);
    }
    std::size_t power = 0;
    for (value /= kStep; value >= kStep && power + 1 < kPrefixes.size(); ++power) {
        value /= kStep;
    }
    return fmt::format("{:.1f} {}iB", value, kPrefixes[power]);
}

std::optional<std::int64_t> SizeFromText(std::string_view text) {
    constexpr double kBeyond = 0x1p63;
    std::int64_t whole = 0;
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [wholeEnd, wholeError] = std::from_chars(text.data(), end, whole);
    if (wholeError == std::errc() && wholeEnd == end && whole >= 0 && text.front() != '-') {
        return whole; // exactly
    }
    const auto [numberEnd, error] =
        std::from_chars(text.data(), end, number, std::chars_format::fixed);
    const char* const unit = std::find_if(numberEnd, end, [](char each) { return each != ' '; });
    const std::optional<double> factor = Factor(std::string(unit, end));
    const bool isNumber = error == std::errc() && !std::signbit(number) && std::isfinite(number);
    if (!isNumber || !factor || number * *factor >= kBeyond) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(number * *factor);
}

} // namespace nqp2::tool
