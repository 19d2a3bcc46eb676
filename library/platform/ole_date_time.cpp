// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/OleDateTime.h"

#include <chrono>

namespace {

constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;
constexpr double kSecondsADay = 86400.0;
constexpr std::chrono::sys_days kDayZero{std::chrono::year{1899} / 12 / 30};

bool IsWithin(int value, int first, int last) {
    return value >= first && value <= last;
}

bool IsTime(int hour, int minute, int second) {
    return IsWithin(hour, 0, 23) && IsWithin(minute, 0, 59) && IsWithin(second, 0, 59);
}

bool IsDate(int year, int month, int day) {
    return IsWithin(year, kFirstYear, kLastYear) && IsWithin(month, 1, 12) &&
           IsWithin(day, 1, 31) && (std::chrono::year{year} / month / day).ok();
}

} // namespace

COleDateTime::DateTimeStatus COleDateTime::SetDateTime(int year, int month, int day, int hour,
                                                       int minute, int second) {
    if (!IsDate(year, month, day) || !IsTime(hour, minute, second)) {
        m_dt = 0.0;
        m_status = invalid;
        return m_status;
    }
    const std::chrono::sys_days date{std::chrono::year{year} / month / day};
    const auto days = static_cast<double>((date - kDayZero).count());
    const double timeOfDay = (hour * 60 + minute) * 60 + second;
    // Automation dates count the time of day away from zero also before day 0.
    m_dt = days + (days < 0 ? -timeOfDay : timeOfDay) / kSecondsADay;
    m_status = valid;
    return m_status;
}
