// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_length.h"

#include "NQP2ParserU/CodeType.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>

namespace nqp2::tool {
namespace {

struct FrameRate {
    int nominal;
    double perSecond;
};

constexpr double kNtsc = 1000.0 / 1001.0;

/// Frames a second by rate index; interlaced rates count fields in their name.
constexpr FrameRate kRates[] = {
    {25, 25.0}, {30, 30.0 * kNtsc}, {24, 24.0 * kNtsc}, {60, 60.0 * kNtsc},
    {25, 25.0}, {30, 30.0 * kNtsc}, {24, 24.0},         {50, 50.0},
    {30, 30.0}, {30, 30.0},         {60, 60.0},
};

/// Null for a text that names no known rate: index 0 stands for "50i" and for anything unknown.
const FrameRate* KnownRate(const CString& text) {
    const int index = RateIndexFromText(text);
    const bool unknown = index == 0 && text.CompareNoCase(L"50i") != 0;
    return unknown ? nullptr : &kRates[index];
}

} // namespace

std::string LengthText(std::int32_t frames, const CString& rate) {
    const FrameRate* known = KnownRate(rate);
    if (known == nullptr || frames < 0) {
        return fmt::format("{} frames", frames);
    }
    const std::int32_t seconds = frames / known->nominal;
    return fmt::format("{}:{:02}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60,
                       frames % known->nominal);
}

std::string LengthText(const _tag_P2Clip& clip) {
    return LengthText(clip.Duration, clip.FrameRate);
}

double RunningSeconds(const _tag_P2Clip& clip) {
    const FrameRate* rate = KnownRate(clip.FrameRate);
    return rate == nullptr || clip.Duration < 0 ? 0.0 : clip.Duration / rate->perSecond;
}

std::string SecondsText(double seconds) {
    const auto whole = static_cast<std::int64_t>(std::llround(seconds));
    return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

} // namespace nqp2::tool
