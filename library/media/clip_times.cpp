// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ClipTimes.h"

#include "media/dates.h"
#include "media/rates.h"
#include "media/timecode.h"
#include "NQP2ParserU/OleDateTime.h"
#include "platform/guard.h"
#include "platform/number_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace nqp2 {
namespace {

using media::TimecodeRate;

/// How a camera numbers the frames of such a clip, which counts all of them.
TimecodeRate ShownRate(const FrameRate& rate, bool dropFrame) {
    return {rate.Nominal(), dropFrame ? rate.droppedNumbers : 0};
}

/// How the reader of the clip has counted its timecode.
TimecodeRate CountedRate(const _tag_P2Clip& clip, const FrameRate* rate) {
    const bool isP2 = clip.SourceKind == 0;
    return isP2 || rate == nullptr
               ? media::ClipTimecodeRate(clip.FrameRate.View(), clip.DropFrame != 0)
               : ShownRate(*rate, clip.DropFrame != 0);
}

media::Timecode TimecodeWith(std::int64_t number, std::int32_t nominal) {
    const std::int64_t seconds = number / nominal;
    return {static_cast<int>(seconds / 3600), static_cast<int>(seconds / 60 % 60),
            static_cast<int>(seconds % 60), static_cast<int>(number % nominal)};
}

/// The frame's count by another rate that gives its number.
std::int64_t Recounted(std::int64_t frame, const TimecodeRate& from, const TimecodeRate& to) {
    return media::FrameCount(TimecodeWith(media::FrameNumber(frame, from), from.nominal), to);
}

CString TimecodeOf(std::int64_t frame, const TimecodeRate& rate) {
    const std::int64_t day = media::FrameCount({24, 0, 0, 0}, rate);
    const std::int64_t ofDay = (frame % day + day) % day;
    CString text = media::TimecodeText(media::FrameNumber(ofDay, rate), rate.nominal);
    if (rate.droppedNumbers != 0) {
        text.SetAt(text.ReverseFind(L':'), L';');
    }
    return text;
}

std::int64_t FrameOf(const CString& text, const TimecodeRate& rate) {
    const std::optional<media::Timecode> timecode = media::ParseTimecode(text.View());
    if (!timecode || timecode->hours > 23) {
        return -1;
    }
    // Numbers that are dropped, and fields out of their range, are those of another frame.
    const std::int64_t frame = media::FrameCount(*timecode, rate);
    const std::int64_t seconds =
        (timecode->hours * 60 + timecode->minutes) * 60 + timecode->seconds;
    const bool isInRange = timecode->minutes < 60 && timecode->seconds < 60;
    const std::int64_t number = seconds * rate.nominal + timecode->frames;
    return isInRange && timecode->frames < rate.nominal && frame >= 0 &&
                   media::FrameNumber(frame, rate) == number
               ? frame
               : -1;
}

/// The frame behind a count whose reader has taken the numbers of every second frame as they stand.
/// At the beginning of a minute that drops numbers it has come out before that minute.
std::int64_t FromHalfNumbers(std::int64_t count, const TimecodeRate& rate) {
    const std::int64_t first = media::FrameNumber(count, rate);
    for (const std::int64_t number : {first, first + rate.droppedNumbers}) {
        const std::int64_t field = number % rate.nominal;
        if (field < rate.nominal / 2 &&
            media::FrameCount(TimecodeWith(number, rate.nominal), rate) == count) {
            return media::FrameCount(TimecodeWith(number + field, rate.nominal), rate);
        }
    }
    return count; // such a number is one of all frames
}

CString TimecodeOf(const _tag_P2Clip& clip, std::int64_t offset) {
    const FrameRate* const rate = media::FindRate(clip.FrameRate.View());
    const TimecodeRate counted = CountedRate(clip, rate);
    const TimecodeRate shown = rate == nullptr ? counted : ShownRate(*rate, clip.DropFrame != 0);
    const std::int64_t most = media::FrameCount({24, 0, 0, 0}, counted);
    // Counted by fewer numbers a second than there are, several timecodes have become one.
    if (clip.StartTimecode < 0 || clip.StartTimecode >= most || counted.nominal < shown.nominal) {
        return {};
    }
    const std::int64_t start = Recounted(clip.StartTimecode, counted, shown);
    const bool isHalf = clip.SourceKind == 0 && shown.nominal >= media::kHalfNumberedFrom;
    return TimecodeOf((isHalf ? FromHalfNumbers(start, shown) : start) + offset, shown);
}

constexpr std::wstring_view kDateForm = L"0000-00-00T00:00:00";
constexpr std::size_t kZoneLength = 6; // "+08:00"

bool IsCalendarDate(std::wstring_view date) {
    if (!platform::HasForm(date, kDateForm)) {
        return false;
    }
    // Of each clip of a list twice: its digits are known to be digits.
    const auto two = [date](std::size_t first) {
        return static_cast<int>((date[first] - L'0') * 10 + (date[first + 1] - L'0'));
    };
    COleDateTime moment;
    return moment.SetDateTime(two(0) * 100 + two(2), two(5), two(8), two(11), two(14), two(17)) ==
           COleDateTime::valid;
}

wchar_t* PutTwoDigits(wchar_t* place, int number) {
    *place++ = static_cast<wchar_t>(L'0' + number / 10);
    *place++ = static_cast<wchar_t>(L'0' + number % 10);
    return place;
}

wchar_t* PutZone(wchar_t* place, int zone) {
    constexpr int kMinutes = 60;
    *place++ = zone < 0 ? L'-' : L'+';
    place = PutTwoDigits(place, std::abs(zone) / kMinutes);
    *place++ = L':';
    return PutTwoDigits(place, std::abs(zone) % kMinutes);
}

/// What stands behind the seconds, without a part of one.
std::wstring_view WithoutFraction(std::wstring_view rest) {
    std::size_t end = 1;
    while (end < rest.size() && platform::IsDigit(rest[end])) {
        ++end;
    }
    const bool isFraction = end > 1 && (rest[0] == L'.' || rest[0] == L',');
    return isFraction ? rest.substr(end) : rest;
}

/// Put together without a text between: a list asks for two of each clip.
CString DateWithZone(std::wstring_view date, std::int16_t zone) {
    const std::optional<std::int16_t> own = media::ZoneOf(date);
    const std::wstring_view moment = date.substr(0, kDateForm.size());
    const std::wstring_view rest = WithoutFraction(date.substr(moment.size()));
    const bool isUtc = rest == L"Z";
    if (!IsCalendarDate(moment) ||
        (!rest.empty() && !isUtc && (!own || rest.size() != kZoneLength))) {
        return {};
    }
    std::array<wchar_t, 32> text{};
    wchar_t* end = std::copy(moment.begin(), moment.end(), text.data());
    if (isUtc) {
        *end++ = L'Z';
    } else if (const std::int16_t told = own.value_or(zone); told != ClipTold::kNoZone) {
        end = PutZone(end, told);
    }
    return CString(std::wstring_view(text.data(), static_cast<std::size_t>(end - text.data())));
}

} // namespace

const FrameRate* FindFrameRate(const CString& text) noexcept {
    return media::FindRate(text.View());
}

CString ClipTimecode(const _tag_P2Clip& clip, std::int64_t offset) noexcept {
    return platform::Guarded(CString(), [&] { return TimecodeOf(clip, offset); });
}

CString FrameTimecode(std::int64_t frame, const FrameRate& rate, bool dropFrame) noexcept {
    return platform::Guarded(CString(),
                             [&] { return TimecodeOf(frame, ShownRate(rate, dropFrame)); });
}

std::int64_t TimecodeFrame(const CString& text, const FrameRate& rate, bool dropFrame) noexcept {
    return platform::Guarded(std::int64_t{-1},
                             [&] { return FrameOf(text, ShownRate(rate, dropFrame)); });
}

CString IsoDate(const CString& date, std::int16_t zone) noexcept {
    return platform::Guarded(CString(), [&] { return DateWithZone(date.View(), zone); });
}

} // namespace nqp2
