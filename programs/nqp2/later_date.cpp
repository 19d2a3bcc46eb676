// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/later_date.h"

#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <chrono>
#include <cstdio>

namespace nqp2::tool {

CString LaterDate(const CString& date, std::int64_t seconds) {
    constexpr std::int64_t kBeforeZone = 19;
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
    if (std::sscanf(BytesFromText(date).c_str(), "%4d-%2u-%2uT%2u:%2u:%2u", &year, &month, &day,
                    &hour, &minute, &second) != 6) {
        return {};
    }
    namespace chrono = std::chrono;
    const chrono::sys_days begin{chrono::year{year} / chrono::month{month} / chrono::day{day}};
    const chrono::sys_seconds end = begin + chrono::hours{hour} + chrono::minutes{minute} +
                                    chrono::seconds{second} + chrono::seconds{seconds};
    const chrono::sys_days lastDay = chrono::floor<chrono::days>(end);
    const chrono::year_month_day last{lastDay};
    const chrono::hh_mm_ss clock{end - lastDay};
    return TextFromBytes(fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", int{last.year()},
                                     unsigned{last.month()}, unsigned{last.day()},
                                     clock.hours().count(), clock.minutes().count(),
                                     clock.seconds().count())) +
           date.Mid(kBeforeZone);
}

} // namespace nqp2::tool
