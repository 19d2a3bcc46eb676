// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/recorder_data.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

namespace nqp2::avchd {
namespace {

constexpr int kNoNumber = -1;

/// Two decimal digits; kNoNumber when a half byte is none.
int Decimal(unsigned byte) {
    const unsigned tens = byte >> 4U;
    const unsigned units = byte & 0x0FU;
    return tens > 9 || units > 9 ? kNoNumber : static_cast<int>(tens * 10 + units);
}

bool IsIn(int number, int limit) {
    return number >= 0 && number < limit;
}

} // namespace

COleDateTime MomentOf(const media::CalendarTime& date) {
    COleDateTime moment;
    moment.SetDateTime(static_cast<int>(date.year), date.month, date.day, date.hour, date.minute,
                       date.second);
    return moment;
}

std::optional<media::CalendarTime> DecodeDate(Bytes bytes) {
    constexpr std::size_t kFields = 7;
    if (bytes.size() != kFields) {
        return std::nullopt;
    }
    int fields[kFields];
    for (std::size_t i = 0; i < kFields; ++i) {
        fields[i] = Decimal(bytes[i]);
        if (fields[i] == kNoNumber) {
            return std::nullopt;
        }
    }
    const media::CalendarTime date = {
        fields[0] * 100 + fields[1], fields[2], fields[3], fields[4], fields[5], fields[6]};
    return MomentOf(date).GetStatus() == COleDateTime::valid ? std::optional(date) : std::nullopt;
}

std::optional<std::int16_t> ZoneOf(unsigned zone) {
    constexpr unsigned kNoHours = 15;
    const unsigned hours = zone >> 1U & 0x0FU;
    if (hours == kNoHours) {
        return std::nullopt;
    }
    const int minutes = static_cast<int>(hours * 60 + ((zone & 1U) != 0 ? 30 : 0));
    return static_cast<std::int16_t>((zone & 0x20U) != 0 ? -minutes : minutes);
}

CString ZoneText(unsigned zone) {
    CString text;
    if (const std::optional<std::int16_t> minutes = ZoneOf(zone)) {
        const int distance = std::abs(*minutes);
        text.Format(L"%c%02d:%02d", *minutes < 0 ? L'-' : L'+', distance / 60, distance % 60);
    }
    return text;
}

std::optional<RecordedTimecode> DecodeTimecode(Bytes bytes) {
    if (bytes.size() != 4) {
        return std::nullopt;
    }
    // The upper bits carry flags; of these only that of drop frame says anything about a clip.
    RecordedTimecode recorded;
    recorded.dropFrame = (bytes[0] & 0x40U) != 0;
    media::Timecode& timecode = recorded.timecode;
    timecode = {Decimal(bytes[3] & 0x3FU), Decimal(bytes[2] & 0x7FU), Decimal(bytes[1] & 0x7FU),
                Decimal(bytes[0] & 0x3FU)};
    const bool possible = IsIn(timecode.hours, 24) && IsIn(timecode.minutes, 60) &&
                          IsIn(timecode.seconds, 60) && IsIn(timecode.frames, 30);
    return possible ? std::optional(recorded) : std::nullopt;
}

std::optional<GlobalClipId> DecodeClipId(Bytes data) {
    GlobalClipId id = {};
    if (data.size() < id.size()) {
        return std::nullopt;
    }
    std::copy_n(data.begin(), id.size(), id.begin());
    const bool isSet =
        std::any_of(id.begin(), id.end(), [](std::uint8_t byte) { return byte != 0; });
    return isSet ? std::optional(id) : std::nullopt;
}

CString ClipIdText(const GlobalClipId& id) {
    constexpr std::wstring_view kDigits = L"0123456789ABCDEF";
    std::wstring text;
    text.reserve(2 * id.size());
    for (const unsigned byte : id) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0x0FU];
    }
    return CString(text);
}

} // namespace nqp2::avchd
