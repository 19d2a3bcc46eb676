// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_length.h"

#include "NQP2ParserU/FrameRate.h"

#include <fmt/format.h>

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace nqp2::tool {
namespace {

/// Null for a text that names no known rate: index 0 stands for "50i" and for anything unknown.
const FrameRate* KnownRate(const CString& text) {
    const int index = RateIndexFromText(text);
    const bool unknown = index == 0 && text.CompareNoCase(L"50i") != 0;
    return unknown ? nullptr : &kFrameRates.at(static_cast<std::size_t>(index));
}

} // namespace

std::string LengthText(std::int32_t frames, const CString& rate) {
    const FrameRate* known = KnownRate(rate);
    if (known == nullptr || frames < 0) {
        return fmt::format("{} frames", frames);
    }
    const std::int32_t nominal = known->Nominal();
    const std::int32_t seconds = frames / nominal;
    return fmt::format("{}:{:02}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60,
                       frames % nominal);
}

std::string LengthText(const _tag_P2Clip& clip) {
    return LengthText(clip.Duration, clip.FrameRate);
}

double RunningSeconds(const _tag_P2Clip& clip) {
    const FrameRate* rate = KnownRate(clip.FrameRate);
    return rate == nullptr || clip.Duration < 0 ? 0.0 : clip.Duration / rate->PerSecond();
}

std::string SecondsText(double seconds) {
    const auto whole = static_cast<std::int64_t>(std::llround(seconds));
    return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

} // namespace nqp2::tool
