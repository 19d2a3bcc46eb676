// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/dates.h"
#include "media/timecode.h"
#include "NQP2ParserU/ClipTimes.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <optional>

namespace nqp2::media {
namespace {

TEST(Timecode, TextIsReadByTheGrammarOnly) {
    for (const wchar_t* text :
         {L"", L"01:00:00", L"01:00:00:", L"1:00:00:00", L"01:00:00:000", L" 01:00:00:00",
          L"01:00:00: 0", L"01:0a:00:00", L"-1:00:00:00", L"01-00-00-00", L"01:00:00,00",
          L"0100:00:00", L"\x0660\x0661:00:00:00"}) {
        EXPECT_FALSE(ParseTimecode(text)) << CString(text);
        EXPECT_EQ(ClipFrameCount(text, L"25p", false), 0);
    }
}

TEST(Timecode, EachRateCountsItsOwnNumbers) {
    // Unknown rates count 25, and so do those without a row; any mark may separate the numbers.
    constexpr std::tuple<const wchar_t*, const wchar_t*, bool, std::int32_t> kRows[] = {
        {L"01:02:03:04", L"50i", true, 93079},       {L"01:02:03:04", L"", false, 93079},
        {L"01:02:03:04", L"30p", false, 93079},      {L"01:02:03:04", L"24p", false, 93079},
        {L"01:02:03:04", L"60i", true, 93079},       {L"01:02:03:04", L"59.94i", false, 111694},
        {L"01:02:03:04", L"29.97P", true, 111582},   {L"01:02:03:04", L"23.98p", true, 89356},
        {L"01:02:03:04", L"59.94p", true, 223160},   {L"01:02:03:04", L"60p", true, 223384},
        {L"01:02:03:04", L"50p", true, 186154},      {L"01;02.03:4", L"50p", false, 186154},
        {L"00:00:01:29", L"50p", false, 79},         {L"00:01:00:00", L"29.97p", true, 1798},
        {L"99:99:99:99", L"59.94p", true, 21724695},
    };
    for (const auto& [text, rate, dropFrame, count] : kRows) {
        EXPECT_EQ(ClipFrameCount(text, rate, dropFrame), count) << CString(text) << CString(rate);
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
            if (FrameCount({shown.hours, shown.minutes, shown.seconds, frame}, rate) != count ||
                FrameNumber(count, rate) != std::int64_t{second} * rate.nominal + frame) {
                return -count - 1;
            }
        }
    }
    return count;
}

TEST(Timecode, CountsEveryFrameOfADayInOrderAndBack) {
    constexpr std::tuple<const wchar_t*, bool, std::int32_t> kRows[] = {{L"59.94i", true, 2589408},
                                                                        {L"59.94p", true, 5178816},
                                                                        {L"59.94i", false, 2592000},
                                                                        {L"23.98p", true, 2073600}};
    for (const auto& [rate, dropFrame, frames] : kRows) {
        EXPECT_EQ(DayWalkedIn(ClipTimecodeRate(rate, dropFrame)), frames) << CString(rate);
    }
}

TEST(Timecode, EditListsCountPlainFramesOfTheirUnit) {
    // 1001/30000 has 29 a second; frames are doubled from 50 on.
    constexpr std::tuple<const wchar_t*, std::int32_t, std::int32_t, std::int32_t> kRows[] = {
        {L"01:02:03:04", 1, 25, 93079},    {L"01:02:03:04", 1001, 30000, 107971},
        {L"00:00:01:28", 1001, 30000, 57}, {L"00:00:01:29", 1001, 30000, 0},
        {L"00:00:01:49", 1, 50, 148},      {L"00:00:01:50", 1, 50, 0},
        {L"00:00:01:02", 1, 49, 51},       {L"24:00:00:00", 1, 25, 0},
        {L"00:60:00:00", 1, 25, 0},        {L"00:00:60:00", 1, 25, 0},
        {L"00:00:01:00", 2, 1, 0},         {L"00:00:01:00", 0, 25, 0},
        {L"00:00:01:00", -1, -25, 0},      {L"00:00:01:00", 1, 0, 0},
        {L"00:00:01", 1, 25, 0},           {L"23:59:59:99", 1, INT32_MAX, INT32_MAX},
    };
    for (const auto& [text, numerator, denominator, count] : kRows) {
        EXPECT_EQ(EditFrameCount(text, numerator, denominator), count) << CString(text);
    }
}

TEST(Timecode, FramesAreShownWithinADay) {
    constexpr std::tuple<std::int64_t, int, const wchar_t*> kRows[] = {
        {93079, 25, L"01:02:03:04"},   {2159999, 25, L"23:59:59:24"},
        {2160000, 25, L"--:--:--:--"}, {-1, 25, L"--:--:--:--"},
        {59, 60, L"00:00:00:59"},      {INT64_MAX, 60, L"--:--:--:--"}};
    for (const auto& [frames, rate, text] : kRows) {
        EXPECT_EQ(TimecodeText(frames, rate), text) << frames;
    }
}

constexpr double kOldDays = 12345.25;

TEST(ClipDate, IsReadByPositionAndForItsLengthAlone) {
    constexpr double kMoment = 38384.0 + (8 * 3600 + 58 * 60 + 44) / 86400.0;
    constexpr std::tuple<const wchar_t*, bool, double> kRows[] = {
        {L"2005/02/01 08.58.44 UTC-5", true, kMoment},
        {L"2005-2 -1 T08:58:44......", true, kMoment},
        {L"2005-02-29T08:58:44+08:00", true, 0.0},
        {L"a date of 25 elements ...", true, 0.0},
        {L"2005-02-01T08:58:44+08:0", false, kOldDays}};
    for (const auto& [text, taken, days] : kRows) {
        COleDateTime moment(kOldDays);
        EXPECT_EQ(ReadClipDate(text, moment), taken);
        EXPECT_EQ(moment.GetStatus(), days == 0 ? COleDateTime::invalid : COleDateTime::valid);
        EXPECT_NEAR(moment.GetDays(), days, 1e-9) << CString(text);
    }
}

TEST(ClipDate, ZoneIsCutBehindTheTimeOnly) {
    // Without "T" all is kept; the last "+" goes before any "-".
    constexpr std::pair<const wchar_t*, const wchar_t*> kRows[] = {
        {L"2013-05-01T10:20:30+09:00", L"2013-05-01T10:20:30"},
        {L"2013-05-01T10:20:30-05:00", L"2013-05-01T10:20:30"},
        {L"2013-05-01 10:20:30+09:00", L"2013-05-01 10:20:30+09:00"},
        {L"2013-05-01T1+2+3-4", L"2013-05-01T1+2"}};
    for (const auto& [text, local] : kRows) {
        EXPECT_EQ(WithoutZone(text).View(), local);
    }
}

TEST(FileDate, IsLocalTimeOrUnknowWithoutATimeThatFits) {
    // Standard and summer time; moments end with the year 9999.
    const std::tuple<std::optional<std::time_t>, const wchar_t*, bool> rows[] = {
        {-1, L"1970-01-01T05:29:59", true},
        {1795248309, L"2026-11-21T13:35:09", true},
        {1780000000, L"2026-05-29T02:56:40", true},
        {253402300800, L"10000-01-01T05:30:00", false},
        {std::numeric_limits<std::time_t>::max(), L"Unknow", false},
        {std::nullopt, L"Unknow", false}};
    setenv("TZ", "XST-5:30XDT,M3.2.0,M11.1.0", 1);
    tzset();
    for (const auto& [time, text, isMoment] : rows) {
        EXPECT_EQ(FileDateText(time), text);
        EXPECT_EQ(FileMoment(time).GetStatus(),
                  isMoment ? COleDateTime::valid : COleDateTime::invalid);
    }
    EXPECT_NEAR(FileMoment(1795248309).GetDays(), 46347.5660763889, 1e-9);
    unsetenv("TZ");
    tzset();
}

TEST(ClipTimes, TimecodeIsTheTextThatWasCounted) {
    // At 59.94p as recorders of AVCHD are read: all frames are counted.
    constexpr std::tuple<const wchar_t*, bool, const wchar_t*, std::int64_t, const wchar_t*>
        kRows[] = {{L"50i", true, L"10:00:00:24", 1, L"10:00:01:00"},
                   {L"29.97p", true, L"00:00:59;29", 1, L"00:01:00;02"},
                   {L"29.97p", false, L"00:00:59:29", 1, L"00:01:00:00"},
                   {L"59.94p", true, L"00:08:59;59", 1, L"00:09:00;04"},
                   {L"24p", false, L"01:00:00:23", 1, L"01:00:01:00"},
                   {L"23.98p", true, L"23:59:59:23", 1, L"00:00:00:00"},
                   {L"60p", true, L"00:00:01:59", 0, L"00:00:01:59"},
                   {L"", false, L"00:00:01:24", 25, L"00:00:02:24"}};
    for (const auto& [rate, dropFrame, text, offset, then] : kRows) {
        _tag_P2Clip clip;
        clip.FrameRate = rate;
        clip.DropFrame = dropFrame ? 1 : 0;
        clip.StartTimecode = ClipFrameCount(text, rate, dropFrame);
        clip.SourceKind = CString(rate) == L"59.94p" ? 1 : 0;
        EXPECT_EQ(ClipTimecode(clip), text) << CString(rate);
        EXPECT_EQ(ClipTimecode(clip, offset), then) << CString(rate);
    }
    // Thirty numbers that were counted as twenty-five, and counts of no timecode.
    for (const auto& [rate, count] : {std::pair(L"30p", 100), {L"25p", -1}, {L"25p", 2160000}}) {
        _tag_P2Clip clip;
        clip.FrameRate = rate;
        clip.StartTimecode = count;
        EXPECT_EQ(ClipTimecode(clip), L"") << CString(rate);
    }
}

TEST(ClipTimes, NumbersOfEverySecondFrameCountTwice) {
    constexpr std::tuple<const wchar_t*, bool, const wchar_t*, const wchar_t*> kRows[] = {
        {L"50p", false, L"18:09:30:24", L"18:09:30:48"},
        {L"50p", false, L"18:09:30:25", L"18:09:30:25"},
        {L"60p", false, L"00:00:00:29", L"00:00:00:58"},
        {L"59.94p", false, L"00:01:00:00", L"00:01:00:00"},
        {L"59.94p", true, L"00:00:59;29", L"00:00:59;58"},
        {L"59.94p", true, L"00:01:00;02", L"00:01:00;04"},
        {L"59.94p", true, L"00:01:00;03", L"00:01:00;06"},
        {L"59.94p", true, L"00:10:00;01", L"00:10:00;02"},
        {L"59.94p", true, L"23:59:59;29", L"23:59:59;58"}};
    for (const auto& [rate, dropFrame, written, shown] : kRows) {
        _tag_P2Clip clip;
        clip.FrameRate = rate;
        clip.DropFrame = dropFrame ? 1 : 0;
        clip.StartTimecode = ClipFrameCount(written, rate, dropFrame);
        EXPECT_EQ(ClipTimecode(clip), shown) << CString(rate) << CString(written);
    }
}

TEST(ClipTimes, FramesOfADayHaveTimecodesOfTheirOwn) {
    for (const FrameRate& rate : kFrameRates) {
        for (const bool dropFrame : {false, true}) {
            const bool drops = dropFrame && rate.droppedNumbers != 0;
            const std::int64_t day =
                media::FrameCount({24, 0, 0, 0}, {rate.Nominal(), drops ? rate.droppedNumbers : 0});
            for (const std::int64_t frame : {std::int64_t{0}, std::int64_t{17981}, day - 1}) {
                const CString text = FrameTimecode(frame, rate, dropFrame);
                EXPECT_EQ(TimecodeFrame(text, rate, dropFrame), frame) << text;
                EXPECT_EQ(FrameTimecode(frame + day, rate, dropFrame), text);
                EXPECT_EQ(FrameTimecode(frame - day, rate, dropFrame), text);
                EXPECT_EQ(text.Find(L';') >= 0, drops);
            }
        }
    }
    for (const wchar_t* text : {L"", L"24:00:00;00", L"00:60:00;00", L"00:00:60;00", L"00:00:00;30",
                                L"00:01:00;01", L"1:00:00;00"}) {
        EXPECT_EQ(TimecodeFrame(text, kFrameRates[1], true), -1) << CString(text);
    }
}

TEST(ClipTimes, DatesHaveTheirOwnZoneOrTheGivenOne) {
    constexpr std::tuple<const wchar_t*, std::int16_t, const wchar_t*> kRows[] = {
        {L"2024-02-29T08:58:44", ClipTold::kNoZone, L"2024-02-29T08:58:44"},
        {L"2024-02-29T08:58:44", -210, L"2024-02-29T08:58:44-03:30"},
        {L"2024-02-29T08:58:44+08:00", 60, L"2024-02-29T08:58:44+08:00"},
        {L"2024-02-29T08:58:44Z", 60, L"2024-02-29T08:58:44Z"},
        {L"2024-02-29T08:58:44.040+08:00", 60, L"2024-02-29T08:58:44+08:00"},
        {L"2024-02-29T08:58:44,5", 60, L"2024-02-29T08:58:44+01:00"},
        {L"2024-02-29T08:58:44.000000Z", 60, L"2024-02-29T08:58:44Z"},
        {L"2024-02-29T08:58:44.", 60, L""},
        {L"2023-02-29T08:58:44", 60, L""},
        {L"2024-02-29T24:00:00", 60, L""},
        {L"2024-02-29", 60, L""},
        {L"", 60, L""},
        {L"2024-02-29T08:58:44+24:00", 60, L""},
        {L"2024-02-29T08:58:44 +08:00", 60, L""},
        {L"2024-02-29T08:58:4\x0664", 60, L""},
    };
    for (const auto& [date, zone, shown] : kRows) {
        EXPECT_EQ(IsoDate(date, zone), shown) << CString(date);
    }
}

} // namespace
} // namespace nqp2::media
