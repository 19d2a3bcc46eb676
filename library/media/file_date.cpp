// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/file_date.h"

#include <cstdint>

namespace nqp2::media {

namespace {

constexpr int kEpochYear = 1900;

/// False when there is no time or it fits no calendar.
bool LocalTime(std::optional<std::time_t> time, std::tm& parts) {
    return time && localtime_r(&*time, &parts) != nullptr;
}

} // namespace

CString FileDateText(std::optional<std::time_t> time) {
    std::tm parts{};
    if (!LocalTime(time, parts)) {
        return L"Unknow";
    }
    CString text;
    text.Format(L"%ld-%02d-%02dT%02d:%02d:%02d", std::int64_t{parts.tm_year} + kEpochYear,
                parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
    return text;
}

COleDateTime FileMoment(std::optional<std::time_t> time) {
    COleDateTime moment;
    std::tm parts{};
    constexpr int kLastYear = 9999; // and no sum beyond it runs over
    if (LocalTime(time, parts) && parts.tm_year <= kLastYear) {
        moment.SetDateTime(parts.tm_year + kEpochYear, parts.tm_mon + 1, parts.tm_mday,
                           parts.tm_hour, parts.tm_min, parts.tm_sec);
    } else {
        moment.SetStatus(COleDateTime::invalid);
    }
    return moment;
}

} // namespace nqp2::media
