// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/dates.h"

#include "platform/number_text.h"

#include <string_view>

namespace nqp2::media {
namespace {

constexpr std::wstring_view kSampleDate = L"2005-02-01T08:58:44+08:00";

/// Nothing when there is no time or it fits no calendar.
std::optional<CalendarTime> LocalTime(std::optional<std::time_t> time) {
    constexpr int kEpochYear = 1900;
    std::tm parts{};
    if (!time || localtime_r(&*time, &parts) == nullptr) {
        return std::nullopt;
    }
    return CalendarTime{std::int64_t{parts.tm_year} + kEpochYear,
                        parts.tm_mon + 1,
                        parts.tm_mday,
                        parts.tm_hour,
                        parts.tm_min,
                        parts.tm_sec};
}

} // namespace

CString DateText(const CalendarTime& time) {
    CString text;
    text.Format(L"%ld-%02d-%02dT%02d:%02d:%02d", time.year, time.month, time.day, time.hour,
                time.minute, time.second);
    return text;
}

bool ReadClipDate(const CString& text, COleDateTime& moment) {
    const std::wstring_view date = text.View();
    if (date.size() != kSampleDate.size()) {
        return false;
    }
    const auto field = [date](std::size_t first, std::size_t count) {
        return platform::ToInt32(date.substr(first, count));
    };
    moment.SetDateTime(field(0, 4), field(5, 2), field(8, 2), field(11, 2), field(14, 2),
                       field(17, 2));
    return true;
}

CString WithoutZone(const CString& text) {
    const int time = text.Find(L'T');
    if (time < 0) {
        return text;
    }
    for (const wchar_t sign : {L'+', L'-'}) {
        const int zone = text.ReverseFind(sign);
        if (zone > time) {
            return text.Left(zone);
        }
    }
    return text;
}

std::optional<std::int16_t> ZoneOf(std::wstring_view date) {
    constexpr std::wstring_view kForm = L"+00:00";
    constexpr int kHours = 24;
    constexpr int kMinutes = 60;
    if (date.size() <= kForm.size() || date.find(L'T') == std::wstring_view::npos) {
        return std::nullopt;
    }
    const std::wstring_view zone = date.substr(date.size() - kForm.size());
    const bool hasSign = zone[0] == L'+' || zone[0] == L'-';
    if (!hasSign || !platform::HasForm(zone.substr(1), kForm.substr(1))) {
        return std::nullopt;
    }
    const int hours = platform::ToInt32(zone.substr(1, 2));
    const int minutes = platform::ToInt32(zone.substr(4));
    if (hours >= kHours || minutes >= kMinutes) {
        return std::nullopt;
    }
    const int before = hours * kMinutes + minutes;
    return static_cast<std::int16_t>(zone[0] == L'-' ? -before : before);
}

CString FileDateText(std::optional<std::time_t> time) {
    const std::optional<CalendarTime> local = LocalTime(time);
    return local ? DateText(*local) : L"Unknow";
}

COleDateTime FileMoment(std::optional<std::time_t> time) {
    constexpr std::int64_t kLastYear = 9999; // of date-time values
    const std::optional<CalendarTime> local = LocalTime(time);
    COleDateTime moment;
    if (local && local->year <= kLastYear) {
        moment.SetDateTime(static_cast<int>(local->year), local->month, local->day, local->hour,
                           local->minute, local->second);
    } else {
        moment.SetStatus(COleDateTime::invalid);
    }
    return moment;
}

} // namespace nqp2::media
