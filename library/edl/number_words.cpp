// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/number_words.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <system_error>

namespace nqp2::edl {
namespace {

constexpr std::string_view kAround = " \t\r\n";

std::string_view Trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kAround), text.size()));
    return text.substr(0, text.find_last_not_of(kAround) + 1);
}

template <class Number>
bool IsOne(std::string_view word) {
    Number number{};
    word.remove_prefix(word.starts_with('+') ? 1 : 0);
    const char* const end = word.data() + word.size();
    const auto [last, error] = std::from_chars(word.data(), end, number);
    return error == std::errc() && last == end && std::isfinite(static_cast<double>(number));
}

} // namespace

bool IsNumeric(std::string_view text, NumberForm form) {
    int left = form == NumberForm::Whole ? 1 : kWords;
    for (text = Trimmed(text); !text.empty(); --left) {
        const std::string_view word = text.substr(0, text.find(' '));
        const bool isNumber =
            form == NumberForm::RealEach ? IsOne<double>(word) : IsOne<std::int32_t>(word);
        if (!isNumber || left == 0) {
            return false;
        }
        text.remove_prefix(word.size());
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    }
    return true;
}

} // namespace nqp2::edl
