// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/file_date.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <optional>
#include <string>

namespace nqp2::media {
namespace {

/// Another time zone for one test.
class TimeZone {
public:
    explicit TimeZone(const char* zone) {
        const char* const before = std::getenv("TZ");
        m_before = before != nullptr ? std::optional<std::string>(before) : std::nullopt;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~TimeZone() {
        m_before ? setenv("TZ", m_before->c_str(), 1) : unsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    std::optional<std::string> m_before;
};

TEST(FileDateTest, IsLocalTimeWithTwoDigitFields) {
    {
        const TimeZone zone("UTC0");
        EXPECT_EQ(FileDateText(0), L"1970-01-01T00:00:00");
        EXPECT_EQ(FileDateText(-1), L"1969-12-31T23:59:59");
        EXPECT_EQ(FileDateText(1795248309), L"2026-11-21T08:05:09");
        EXPECT_EQ(FileDateText(253402300800), L"10000-01-01T00:00:00");
    }
    const TimeZone zone("XST-5:30XDT,M3.2.0,M11.1.0");
    EXPECT_EQ(FileDateText(1795248309), L"2026-11-21T13:35:09") << "standard time";
    EXPECT_EQ(FileDateText(1780000000), L"2026-05-29T02:56:40") << "summer time";
}

TEST(FileDateTest, IsUnknowWithoutATimeThatFits) {
    EXPECT_EQ(FileDateText(std::nullopt), L"Unknow");
    EXPECT_EQ(FileDateText(std::numeric_limits<std::time_t>::max()), L"Unknow");
    EXPECT_EQ(FileDateText(std::numeric_limits<std::time_t>::min()), L"Unknow");
    constexpr std::time_t kLastYearOfTm = 67'768'036'191'676'799; // of 32 bits from 1900 on
    const TimeZone zone("UTC0");
    EXPECT_EQ(FileDateText(kLastYearOfTm).Right(15), L"-12-31T23:59:59");
}

TEST(FileDateTest, AsAMomentIsTheSameLocalTime) {
    const TimeZone zone("XST-5:30XDT,M3.2.0,M11.1.0");
    COleDateTime expected;
    expected.SetDateTime(2026, 11, 21, 13, 35, 9);
    EXPECT_DOUBLE_EQ(FileMoment(1795248309).GetDays(), expected.GetDays());
    EXPECT_EQ(FileMoment(1795248309).GetStatus(), COleDateTime::valid);
    for (const std::optional<std::time_t> none : {std::optional<std::time_t>(),
                                                  {std::numeric_limits<std::time_t>::max()},
                                                  {253402300800}}) {
        EXPECT_EQ(FileMoment(none).GetStatus(), COleDateTime::invalid);
        EXPECT_EQ(FileMoment(none).GetDays(), 0.0);
    }
}

} // namespace
} // namespace nqp2::media
