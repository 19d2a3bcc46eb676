// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/timecode.h"

#include "platform/case_fold.h"

#include <algorithm>
#include <iterator>

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

} // namespace nqp2::media
