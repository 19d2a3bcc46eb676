// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/frame_rate_text.h"

#include "platform/case_fold.h"

#include <cmath>

namespace nqp2::worker {
namespace {

struct Row {
    FrameRate rate;
    const wchar_t* progressive;
    const wchar_t* interlaced;
};

constexpr Row kRows[] = {
    {{24000, 1001}, L"23.98p", L"23.98p"}, {{24, 1}, L"24p", L"24p"}, {{25, 1}, L"25p", L"50i"},
    {{30000, 1001}, L"29.97p", L"59.94i"}, {{30, 1}, L"30p", L"60i"}, {{50, 1}, L"50p", L"50p"},
    {{60000, 1001}, L"59.94p", L"59.94p"}, {{60, 1}, L"60p", L"60p"},
};

double Value(const FrameRate& rate) {
    return static_cast<double>(rate.numerator) / rate.denominator;
}

} // namespace

CString FrameRateText(const FrameRate& rate, bool interlaced) {
    constexpr double kTolerance = 0.005; // containers round
    for (const Row& row : kRows) {
        if (std::fabs(Value(row.rate) - Value(rate)) < kTolerance) {
            return interlaced ? row.interlaced : row.progressive;
        }
    }
    return {};
}

std::optional<FrameRate> FrameRateOf(const CString& text) {
    for (const Row& row : kRows) {
        if (platform::EqualNoCase(text.View(), row.progressive) ||
            platform::EqualNoCase(text.View(), row.interlaced)) {
            return row.rate;
        }
    }
    return std::nullopt;
}

} // namespace nqp2::worker
