// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/timecode.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <string>

namespace nqp2::media {
namespace {

TEST(Timecode, TextIsReadByTheGrammarOnly) {
    for (const wchar_t* text :
         {L"", L"01:00:00", L"01:00:00:", L"1:00:00:00", L"01:00:00:000", L" 01:00:00:00",
          L"01:00:00:00 ", L"01:00:00: 0", L"01:0a:00:00", L"-1:00:00:00", L"01-00-00-00",
          L"01:00:00,00", L"0100:00:00", L"\x0660\x0661:00:00:00", L"--:--:--:--"}) {
        EXPECT_FALSE(ParseTimecode(text)) << testing::PrintToString(std::wstring(text));
        EXPECT_EQ(ClipFrameCount(text, L"25p", false), 0);
    }
}

TEST(Timecode, EachRateCountsItsOwnNumbers) {
    constexpr struct {
        const wchar_t* text;
        const wchar_t* rate;
        bool dropFrame;
        std::int32_t count;
    } kRows[] = {
        {L"01:02:03:04", L"50i", true, 93079},
        {L"01:02:03:04", L"25p", false, 93079},
        {L"01:02:03:04", L"", false, 93079},    // an unknown rate counts 25
        {L"01:02:03:04", L"30p", false, 93079}, // so do rates without a row
        {L"01:02:03:04", L"24p", false, 93079},
        {L"01:02:03:04", L"60i", true, 93079},
        {L"01:02:03:04", L"59.94i", false, 111694},
        {L"01:02:03:04", L"29.97P", true, 111582}, // 56 of 62 minutes drop two
        {L"01:02:03:04", L"23.98p", true, 89356},
        {L"01:02:03:04", L"59.94p", false, 223384},
        {L"01:02:03:04", L"59.94p", true, 223160},
        {L"01:02:03:04", L"60p", true, 223384},
        {L"01:02:03:04", L"50p", true, 186154},
        {L"01;02.03:4", L"50p", false, 186154}, // any separator, one frame digit
        {L"00:00:01:29", L"50p", false, 79},    // frames 0 to 29 at 50p stand as they are
        {L"00:00:59:29", L"29.97p", true, 1799},
        {L"00:01:00:00", L"29.97p", true, 1798}, // a dropped number still counts
        {L"00:01:00:02", L"29.97p", true, 1800},
        {L"00:10:00:00", L"29.97p", true, 17982},
        {L"00:01:00:04", L"59.94p", true, 3600},
        {L"99:99:99:99", L"59.94p", true, 21724695}, // largest text: no overflow
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(ClipFrameCount(row.text, row.rate, row.dropFrame), row.count)
            << "row " << &row - kRows;
    }
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
    constexpr struct {
        const wchar_t* text;
        std::int32_t numerator;
        std::int32_t denominator;
        std::int32_t count;
    } kRows[] = {
        {L"01:02:03:04", 1, 25, 93079},
        {L"01:02:03:04", 1001, 30000, 107971}, // 29 a second
        {L"00:00:01:28", 1001, 30000, 57},
        {L"00:00:01:29", 1001, 30000, 0}, // out of range at 29
        {L"00:00:01:02", 1, 50, 54},      // frames doubled from 50 on
        {L"00:00:01:49", 1, 50, 148},
        {L"00:00:01:50", 1, 50, 0},
        {L"00:00:01:02", 1001, 60000, 63}, // 59 a second
        {L"00:00:01:02", 1, 49, 51},
        {L"23:59:59:24", 1, 25, 2159999},
        {L"24:00:00:00", 1, 25, 0},
        {L"00:60:00:00", 1, 25, 0},
        {L"00:00:60:00", 1, 25, 0},
        {L"00:00:01:00", 2, 1, 0}, // less than one a second: no frame is in range
        {L"00:00:01:00", 0, 25, 0},
        {L"00:00:01:00", -1, -25, 0},
        {L"00:00:01:00", 1, 0, 0},
        {L"", 1, 25, 0},
        {L"00:00:01", 1, 25, 0},
        {L"23:59:59:99", 1, INT32_MAX, INT32_MAX},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(EditFrameCount(row.text, row.numerator, row.denominator), row.count)
            << "row " << &row - kRows;
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
    constexpr struct {
        std::int64_t frames;
        int rate;
        const wchar_t* text;
    } kRows[] = {
        {0, 25, L"00:00:00:00"},
        {93079, 25, L"01:02:03:04"},
        {1799, 30, L"00:00:59:29"},
        {59, 60, L"00:00:00:59"},
        {24LL * 3600 * 25 - 1, 25, L"23:59:59:24"},
        {24LL * 3600 * 25, 25, L"--:--:--:--"},
        {-1, 25, L"--:--:--:--"},
        {INT64_MAX, 60, L"--:--:--:--"},
        {INT64_MIN, 24, L"--:--:--:--"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(TimecodeText(row.frames, row.rate), row.text) << row.frames;
    }
}

} // namespace
} // namespace nqp2::media
