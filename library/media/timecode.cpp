// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/timecode.h"

#include "media/rates.h"
#include "platform/number_text.h"

#include <algorithm>
#include <array>
#include <limits>

namespace nqp2::media {
namespace {

constexpr std::size_t kFramesPosition = 9; // behind "hh:mm:ss:"

bool IsInRange(const Timecode& timecode, std::int32_t framesASecond) {
    return timecode.hours < 24 && timecode.minutes < 60 && timecode.seconds < 60 &&
           timecode.frames < framesASecond;
}

bool IsSeparator(wchar_t ch) {
    return ch == L':' || ch == L'.' || ch == L';';
}

bool IsTimecode(std::wstring_view text) {
    if (text.size() != kFramesPosition + 1 && text.size() != kFramesPosition + 2) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i % 3 == 2 ? !IsSeparator(text[i]) : !platform::IsDigit(text[i])) {
            return false;
        }
    }
    return true;
}

int Number(std::wstring_view digits) {
    int number = 0;
    for (const wchar_t digit : digits) {
        number = number * 10 + static_cast<int>(digit - L'0');
    }
    return number;
}

} // namespace

std::optional<Timecode> ParseTimecode(std::wstring_view text) {
    if (!IsTimecode(text)) {
        return std::nullopt;
    }
    return Timecode{Number(text.substr(0, 2)), Number(text.substr(3, 2)), Number(text.substr(6, 2)),
                    Number(text.substr(kFramesPosition))};
}

TimecodeRate ClipTimecodeRate(std::wstring_view frameRate, bool dropFrame) {
    const FrameRate* const rate = FindRate(frameRate);
    // Of the whole rates 50 and 60 alone count as many, 24 and 30 count 25: kept.
    constexpr std::int32_t kSlowestWhole = 50;
    if (rate == nullptr || (rate->seconds == 1 && rate->frames < kSlowestWhole)) {
        return TimecodeRate();
    }
    return {rate->Nominal(), dropFrame ? rate->droppedNumbers : 0};
}

bool CanDropFrames(std::wstring_view frameRate) {
    return ClipTimecodeRate(frameRate, true).droppedNumbers != 0;
}

std::int32_t FrameCount(const Timecode& timecode, const TimecodeRate& rate) {
    const std::int32_t minutes = timecode.hours * 60 + timecode.minutes;
    const std::int32_t dropped = rate.droppedNumbers * (minutes - minutes / 10);
    return (minutes * 60 + timecode.seconds) * rate.nominal + timecode.frames - dropped;
}

std::int32_t ClipFrameCount(std::wstring_view text, std::wstring_view frameRate, bool dropFrame) {
    const std::optional<Timecode> timecode = ParseTimecode(text);
    return timecode ? FrameCount(*timecode, ClipTimecodeRate(frameRate, dropFrame)) : 0;
}

std::int32_t EditFrameCount(std::wstring_view text, std::int32_t numerator,
                            std::int32_t denominator) {
    std::optional<Timecode> timecode = ParseTimecode(text);
    if (!timecode || numerator < 1 || denominator < 1) {
        return 0;
    }
    const std::int32_t rate = denominator / numerator;
    if (!IsInRange(*timecode, rate)) {
        return 0;
    }
    timecode->frames *= rate >= kHalfNumberedFrom ? 2 : 1;
    const std::int64_t seconds =
        (timecode->hours * 60 + timecode->minutes) * 60 + timecode->seconds;
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(seconds * rate + timecode->frames, kMost));
}

int NominalRate(std::wstring_view frameRate) {
    const FrameRate* const rate = FindRate(frameRate);
    return rate != nullptr ? rate->Nominal() : TimecodeRate().nominal;
}

std::int64_t FrameNumber(std::int64_t frame, const TimecodeRate& rate) {
    constexpr std::int64_t kMinute = 60;
    const std::int64_t dropped = rate.droppedNumbers;
    const std::int64_t minute = rate.nominal * kMinute - dropped;
    const std::int64_t tenMinutes = minute * 10 + dropped;
    const std::int64_t rest = frame % tenMinutes;
    const std::int64_t minutes = rest < dropped ? 0 : (rest - dropped) / minute;
    return frame + dropped * (9 * (frame / tenMinutes) + minutes);
}

CString TimecodeText(std::int64_t frames, int nominal) {
    constexpr std::int64_t kDay = 24 * 60 * 60;
    if (frames < 0 || frames / nominal >= kDay) {
        return L"--:--:--:--";
    }
    const std::int64_t seconds = frames / nominal;
    std::array<wchar_t, 12> text{}; // no field reaches 100
    wchar_t* next = text.data();
    for (const std::int64_t field :
         {seconds / 3600, seconds / 60 % 60, seconds % 60, frames % nominal}) {
        *next++ = static_cast<wchar_t>(L'0' + field / 10);
        *next++ = static_cast<wchar_t>(L'0' + field % 10);
        *next++ = L':';
    }
    return CString(std::wstring_view(text.data(), text.size() - 1));
}

} // namespace nqp2::media
