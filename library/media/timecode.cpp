// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/timecode.h"

#include "platform/case_fold.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace nqp2::media {
namespace {

constexpr std::size_t kFramesPosition = 9; // behind "hh:mm:ss:"

struct ClipRate {
    std::wstring_view text;
    TimecodeRate dropFrame;
    TimecodeRate nonDrop;
};

constexpr ClipRate kClipRates[] = {
    {L"59.94i", {30, 2}, {30, 0}}, {L"29.97p", {30, 2}, {30, 0}}, {L"23.98p", {24, 0}, {24, 0}},
    {L"59.94p", {60, 4}, {60, 0}}, {L"60p", {60, 0}, {60, 0}},    {L"50p", {50, 0}, {50, 0}},
};

struct Nominal {
    std::wstring_view text;
    int rate;
};

// What a rate text counts a second; 25 for every other text.
constexpr Nominal kNominals[] = {
    {L"59.94i", 30}, {L"29.97p", 30}, {L"60i", 30}, {L"30p", 30},    {L"23.98p", 24},
    {L"24p", 24},    {L"50p", 50},    {L"60p", 60}, {L"59.94p", 60},
};

// From this rate on an edit list numbers every second frame.
constexpr std::int32_t kDoubledFrom = 50;

bool IsInRange(const Timecode& timecode, std::int32_t framesASecond) {
    return timecode.hours < 24 && timecode.minutes < 60 && timecode.seconds < 60 &&
           timecode.frames < framesASecond;
}

bool IsDigit(wchar_t ch) {
    return ch >= L'0' && ch <= L'9';
}

bool IsSeparator(wchar_t ch) {
    return ch == L':' || ch == L'.' || ch == L';';
}

bool IsTimecode(std::wstring_view text) {
    if (text.size() != kFramesPosition + 1 && text.size() != kFramesPosition + 2) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i % 3 == 2 ? !IsSeparator(text[i]) : !IsDigit(text[i])) {
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
    const auto isIt = [frameRate](const ClipRate& row) {
        return platform::EqualNoCase(row.text, frameRate);
    };
    const auto found = std::find_if(std::begin(kClipRates), std::end(kClipRates), isIt);
    if (found == std::end(kClipRates)) {
        return TimecodeRate();
    }
    return dropFrame ? found->dropFrame : found->nonDrop;
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
    timecode->frames *= rate >= kDoubledFrom ? 2 : 1;
    const std::int64_t seconds =
        (timecode->hours * 60 + timecode->minutes) * 60 + timecode->seconds;
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(seconds * rate + timecode->frames, kMost));
}

int NominalRate(std::wstring_view frameRate) {
    const auto* const found =
        std::find_if(std::begin(kNominals), std::end(kNominals), [&](const Nominal& row) {
            return platform::EqualNoCase(row.text, frameRate);
        });
    return found != std::end(kNominals) ? found->rate : TimecodeRate().nominal;
}

CString TimecodeText(std::int64_t frames, int nominal) {
    constexpr std::int64_t kDay = 24 * 60 * 60;
    if (frames < 0 || frames / nominal >= kDay) {
        return L"--:--:--:--";
    }
    const std::int64_t seconds = frames / nominal;
    CString text;
    text.Format(L"%02d:%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60,
                frames % nominal);
    return text;
}

} // namespace nqp2::media
