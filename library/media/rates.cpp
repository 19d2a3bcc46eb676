// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/CodeType.h"

#include "platform/case_fold.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

namespace nqp2 {
namespace {

struct RateText {
    std::wstring_view text;
    eP2_VIDEO_STANDARD standard;
};

/// A rate's index is its place in this table.
constexpr RateText kRates[] = {
    {L"50i", VS_50I}, {L"59.94i", VS_5994I}, {L"23.98p", VS_2398P}, {L"59.94p", VS_5994P},
    {L"25p", VS_50I}, {L"29.97p", VS_5994I}, {L"24p", VS_50I},      {L"50p", VS_50P},
    {L"60i", VS_60I}, {L"30p", VS_60I},      {L"60p", VS_60P},
};
constexpr int kRateCount = static_cast<int>(std::size(kRates));

struct NumericRate {
    double fps;
    int index;
};

/// Frames a second tell no scan: 25, 29.97 and 30 are taken as interlaced.
constexpr NumericRate kNumericRates[] = {
    {25.0, 0}, {29.97, 1}, {30.0, 8}, {24.0, 6}, {50.0, 7}, {59.94, 3}, {60.0, 10},
};
constexpr double kFpsTolerance = 0.001;

} // namespace

int RateIndexFromText(const CString& rate) noexcept {
    const auto isIt = [text = rate.View()](const RateText& row) {
        return platform::EqualNoCase(row.text, text);
    };
    const auto found = std::find_if(std::begin(kRates), std::end(kRates), isIt);
    return found == std::end(kRates) ? 0 : static_cast<int>(found - std::begin(kRates));
}

int RateIndexFromFps(double fps) noexcept {
    const auto isIt = [fps](const NumericRate& row) {
        return std::fabs(fps - row.fps) < kFpsTolerance;
    };
    const auto found = std::find_if(std::begin(kNumericRates), std::end(kNumericRates), isIt);
    return found == std::end(kNumericRates) ? 0 : found->index;
}

eP2_VIDEO_STANDARD StandardFromRateIndex(int index) noexcept {
    return index >= 0 && index < kRateCount ? kRates[index].standard : VS_50I;
}

} // namespace nqp2
