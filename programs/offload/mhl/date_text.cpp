// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/date_text.h"

#include "platform/number_text.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace nqp2::mhl {
namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kFirstTime = -62135596800; ///< of the year 1
constexpr std::int64_t kLastTime = 253402300799;  ///< of the year 9999

/// Year, month, day, hour, minute and second in a form of printf.
std::string Printed(std::int64_t time, const char* form) {
    const std::chrono::sys_seconds moment{seconds(time)};
    const sys_days day = std::chrono::floor<days>(moment);
    const year_month_day date(day);
    const std::chrono::hh_mm_ss clock(moment - day);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), form, static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text.data();
}

bool IsInRange(std::int64_t time) {
    return time >= kFirstTime && time <= kLastTime;
}

/// Takes numbers of fixed length and the signs between them away from a text.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_text(text) {}

    int Number(std::size_t digits) {
        int value = 0;
        for (std::size_t i = 0; i < digits; ++i) {
            const char ch = m_text.empty() ? '\0' : m_text.front();
            m_isSound = m_isSound && platform::IsDigit(ch);
            value = value * 10 + (ch - '0');
            m_text.remove_prefix(m_text.empty() ? 0 : 1);
        }
        return m_isSound ? value : 0;
    }
    bool Skip(char ch) {
        const bool isNext = m_text.starts_with(ch);
        m_text.remove_prefix(isNext ? 1 : 0);
        return isNext;
    }
    void Expect(char ch) { m_isSound = Skip(ch) && m_isSound; }
    void SkipFraction() {
        if (Skip('.')) {
            Number(1);
            while (!m_text.empty() && platform::IsDigit(m_text.front())) {
                m_text.remove_prefix(1);
            }
        }
    }
    /// East of Greenwich, in seconds.
    std::int64_t Offset() {
        const bool isEast = Skip('+');
        if (!isEast && !Skip('-')) {
            Skip('Z');
            return 0;
        }
        const std::int64_t hours = Number(2);
        Expect(':');
        const std::int64_t size = hours * kHour + Number(2) * kMinute;
        return isEast ? size : -size;
    }
    [[nodiscard]] bool IsWhole() const { return m_isSound && m_text.empty(); }

private:
    std::string_view m_text;
    bool m_isSound = true;
};

} // namespace

std::string DateText(std::int64_t time) {
    return IsInRange(time) ? Printed(time, "%04d-%02u-%02uT%02d:%02d:%02dZ") : "";
}

std::string DateForName(std::int64_t time) {
    return Printed(IsInRange(time) ? time : 0, "%04d-%02u-%02u_%02d%02d%02dZ");
}

std::optional<std::int64_t> ParseDate(std::string_view text) {
    Scanner scanner(text);
    const std::chrono::year year(scanner.Number(4));
    scanner.Expect('-');
    const std::chrono::month month(static_cast<unsigned>(scanner.Number(2)));
    scanner.Expect('-');
    const std::chrono::day day(static_cast<unsigned>(scanner.Number(2)));
    scanner.Expect('T');
    const int hour = scanner.Number(2);
    scanner.Expect(':');
    const int minute = scanner.Number(2);
    scanner.Expect(':');
    const int second = scanner.Number(2);
    scanner.SkipFraction();
    const std::int64_t offset = scanner.Offset();
    const year_month_day date(year, month, day);
    // The hour 24 and a 60th second are in use.
    if (!scanner.IsWhole() || !date.ok() || hour > 24 || minute > 59 || second > 60) {
        return std::nullopt;
    }
    return seconds(sys_days(date).time_since_epoch()).count() + hour * kHour + minute * kMinute +
           second - offset;
}

} // namespace nqp2::mhl
