// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/OleDateTime.h"

#include <cstdint>
#include <ctime>
#include <optional>
#include <string_view>

/// Date texts of metadata and of files.
namespace nqp2::media {

/// A moment of the calendar, in no zone.
struct CalendarTime {
    std::int64_t year = 0;
    int month = 0; ///< from 1
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/// "2026-11-21T08:05:09".
CString DateText(const CalendarTime& time);

/// Reads a date text of the length of "2005-02-01T08:58:44+08:00" by its fixed positions; the zone
/// is ignored. A text of another length leaves `moment` as it is; an impossible date sets its
/// status. Returns whether the length fitted.
bool ReadClipDate(const CString& text, COleDateTime& moment);

/// The text without its zone suffix: from the last "+" at or after the "T", else from the last
/// "-" there. A text without "T" is kept whole.
CString WithoutZone(const CString& text);

/// The zone at the end of a date text, in minutes before UTC: "+08:00"; nothing for any other end.
std::optional<std::int16_t> ZoneOf(std::wstring_view date);

/// A file's time as local date text; "Unknow" (sic: hosts compare it) when there is none.
CString FileDateText(std::optional<std::time_t> time);

/// The same moment as a local date-time value; of status `invalid` when there is none.
COleDateTime FileMoment(std::optional<std::time_t> time);

} // namespace nqp2::media
