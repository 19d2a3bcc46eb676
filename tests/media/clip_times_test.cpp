// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/dates.h"
#include "media/timecode.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <optional>
#include <string>

namespace nqp2::media {
namespace {

TEST(Timecode, TextIsReadByTheGrammarOnly) {
    for (const wchar_t* text :
         {L"", L"01:00:00", L"01:00:00:", L"1:00:00:00", L"01:00:00:000", L" 01:00:00:00",
          L"01:00:00: 0", L"01:0a:00:00", L"-1:00:00:00", L"01-00-00-00", L"01:00:00,00",
          L"0100:00:00", L"\x0660\x0661:00:00:00"}) {
        EXPECT_FALSE(ParseTimecode(text)) << testing::PrintToString(std::wstring(text));
        EXPECT_EQ(ClipFrameCount(text, L"25p", false), 0);
    }
}

TEST(Timecode, EachRateCountsItsOwnNumbers) {
    // Unknown rates count 25, and so do those without a row; any mark may separate the numbers.
    constexpr std::tuple<const wchar_t*, const wchar_t*, bool, std::int32_t> kRows[] = {
        {L"01:02:03:04", L"50i", true, 93079},     {L"01:02:03:04", L"", false, 93079},
        {L"01:02:03:04", L"30p", false, 93079},    {L"01:02:03:04", L"24p", false, 93079},
        {L"01:02:03:04", L"60i", true, 93079},     {L"01:02:03:04", L"59.94i", false, 111694},
        {L"01:02:03:04", L"29.97P", true, 111582}, {L"01:02:03:04", L"23.98p", true, 89356},
        {L"01:02:03:04", L"59.94p", true, 223160}, {L"01:02:03:04", L"60p", true, 223384},
        {L"01:02:03:04", L"50p", true, 186154},    {L"01;02.03:4", L"50p", false, 186154},
    };
    for (const auto& [text, rate, dropFrame, count] : kRows) {
        EXPECT_EQ(ClipFrameCount(text, rate, dropFrame), count) << CString(text) << CString(rate);
    }
    EXPECT_EQ(ClipFrameCount(L"00:00:01:29", L"50p", false), 79) << "frames up to 29 stand at 50p";
    EXPECT_EQ(ClipFrameCount(L"00:01:00:00", L"29.97p", true), 1798) << "dropped, yet it counts";
    EXPECT_EQ(ClipFrameCount(L"99:99:99:99", L"59.94p", true), 21724695) << "no overflow";
}

/// Walks the numbers that a counter shows in a day and returns the length of the day in frames,
/// or the first count that the arithmetic gives differently, negated.
std::int32_t DayWalkedIn(const TimecodeRate& rate) {
    std::int32_t count = 0;
    for (int second = 0; second < 24 * 60 * 60; ++second) {
        const Timecode shown{second / 3600, second / 60 % 60, second % 60, 0};
        const bool skips = shown.seconds == 0 && shown.minutes % 10 != 0;
        for (int frame = skips ? rate.droppedNumbers : 0; frame < rate.nominal; ++frame, ++count) {
            if (FrameCount({shown.hours, shown.minutes, shown.seconds, frame}, rate) != count) {
                return -count - 1;
            }
        }
    }
    return count;
}

TEST(Timecode, CountsEveryFrameOfADayInOrder) {
    EXPECT_EQ(DayWalkedIn(ClipTimecodeRate(L"59.94i", true)), 2589408);
    EXPECT_EQ(DayWalkedIn(ClipTimecodeRate(L"59.94p", true)), 5178816);
    EXPECT_EQ(DayWalkedIn(ClipTimecodeRate(L"59.94i", false)), 2592000);
    EXPECT_EQ(DayWalkedIn(ClipTimecodeRate(L"23.98p", true)), 2073600);
}

TEST(Timecode, EditListsCountPlainFramesOfTheirUnit) {
    // 1001/30000 has 29 a second, 1001/60000 59; frames are doubled from 50 on.
    constexpr std::tuple<const wchar_t*, std::int32_t, std::int32_t, std::int32_t> kRows[] = {
        {L"01:02:03:04", 1, 25, 93079},
        {L"01:02:03:04", 1001, 30000, 107971},
        {L"00:00:01:28", 1001, 30000, 57},
        {L"00:00:01:29", 1001, 30000, 0},
        {L"00:00:01:02", 1, 50, 54},
        {L"00:00:01:49", 1, 50, 148},
        {L"00:00:01:50", 1, 50, 0},
        {L"00:00:01:02", 1001, 60000, 63},
        {L"00:00:01:02", 1, 49, 51},
        {L"23:59:59:24", 1, 25, 2159999},
        {L"24:00:00:00", 1, 25, 0},
        {L"00:60:00:00", 1, 25, 0},
        {L"00:00:60:00", 1, 25, 0},
        {L"00:00:01:00", 2, 1, 0},
        {L"00:00:01:00", 0, 25, 0},
        {L"00:00:01:00", -1, -25, 0},
        {L"00:00:01:00", 1, 0, 0},
        {L"00:00:01", 1, 25, 0},
        {L"23:59:59:99", 1, INT32_MAX, INT32_MAX},
    };
    for (const auto& [text, numerator, denominator, count] : kRows) {
        EXPECT_EQ(EditFrameCount(text, numerator, denominator), count) << CString(text);
    }
}

TEST(Timecode, RateTextsHaveNominalRates) {
    const std::pair<const wchar_t*, int> rows[] = {
        {L"50i", 25},    {L"25p", 25},    {L"", 25},       {L"unknown", 25},
        {L"59.94i", 30}, {L"29.97P", 30}, {L"60i", 30},    {L"23.98p", 24},
        {L"24p", 24},    {L"50P", 50},    {L"59.94p", 60}, {L"60p", 60},
    };
    for (const auto& [text, rate] : rows) {
        EXPECT_EQ(NominalRate(text), rate) << CString(text);
    }
}

TEST(Timecode, FramesAreShownWithinADay) {
    constexpr std::tuple<std::int64_t, int, const wchar_t*> kRows[] = {
        {93079, 25, L"01:02:03:04"},     {1799, 30, L"00:00:59:29"},    {59, 60, L"00:00:00:59"},
        {2159999, 25, L"23:59:59:24"},   {2160000, 25, L"--:--:--:--"}, {-1, 25, L"--:--:--:--"},
        {INT64_MAX, 60, L"--:--:--:--"},
    };
    for (const auto& [frames, rate, text] : kRows) {
        EXPECT_EQ(TimecodeText(frames, rate), text) << frames;
    }
}

constexpr double kOldDays = 12345.25;

TEST(ClipDate, IsReadByPositionWithoutItsZone) {
    constexpr double kMoment = 38384.0 + (8 * 3600 + 58 * 60 + 44) / 86400.0;
    for (const wchar_t* text : {L"2005-02-01T08:58:44+08:00", L"2005-02-01T08:58:44-05:00",
                                L"2005/02/01 08.58.44 UTC+8", L"2005-2 -1 T08:58:44......"}) {
        COleDateTime moment(kOldDays);
        EXPECT_TRUE(ReadClipDate(text, moment));
        EXPECT_EQ(moment.GetStatus(), COleDateTime::valid);
        EXPECT_NEAR(moment.GetDays(), kMoment, 1e-9);
    }
}

TEST(ClipDate, AnotherLengthLeavesTheValueAndAnImpossibleDateIsInvalid) {
    const std::pair<const wchar_t*, bool> rows[] = {{L"", false},
                                                    {L"2005-02-01T08:58:44+08:0", false},
                                                    {L"2005-02-01T08:58:44+08:000", false},
                                                    {L"2005-02-29T08:58:44+08:00", true},
                                                    {L"a date of 25 elements ...", true}};
    for (const auto& [text, taken] : rows) {
        COleDateTime moment(kOldDays);
        EXPECT_EQ(ReadClipDate(text, moment), taken);
        EXPECT_EQ(moment.GetStatus(), taken ? COleDateTime::invalid : COleDateTime::valid);
        EXPECT_EQ(moment.GetDays() == kOldDays, !taken);
    }
}

TEST(ClipDate, ZoneIsCutBehindTheTimeOnly) {
    constexpr std::pair<const wchar_t*, const wchar_t*> kRows[] = {
        {L"2013-05-01T10:20:30+09:00", L"2013-05-01T10:20:30"},
        {L"2013-05-01T10:20:30-05:00", L"2013-05-01T10:20:30"},
        {L"2013-05-01T10:20:30", L"2013-05-01T10:20:30"}, // "-" of the date stays
        {L"2013-05-01T10:20:30Z", L"2013-05-01T10:20:30Z"},
        {L"2013-05-01 10:20:30+09:00", L"2013-05-01 10:20:30+09:00"}, // no "T": whole
        {L"2013-05-01T1+2+3-4", L"2013-05-01T1+2"}, // the last "+" goes before any "-"
        {L"2013+05T10-1-2", L"2013+05T10-1"},
        {L"T+", L"T"},
        {L"", L""}};
    for (const auto& [text, local] : kRows) {
        EXPECT_EQ(WithoutZone(text).View(), local);
    }
}

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
    const std::optional<std::time_t> none[] = {
        std::nullopt, std::numeric_limits<std::time_t>::max(), 253402300800};
    for (const auto& time : none) {
        EXPECT_EQ(FileMoment(time).GetStatus(), COleDateTime::invalid);
        EXPECT_EQ(FileMoment(time).GetDays(), 0.0);
    }
}

} // namespace
} // namespace nqp2::media
