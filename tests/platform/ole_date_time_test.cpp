// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/OleDateTime.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(OleDateTimeTest, StartsValidAtDayZero) {
    const COleDateTime start;
    EXPECT_EQ(start.GetDays(), 0.0);
    EXPECT_EQ(start.GetStatus(), COleDateTime::valid);
}

TEST(OleDateTimeTest, CountsDaysFromTheEndOf1899) {
    const struct {
        int year, month, day, hour, minute, second;
        double days;
        const char* reason;
    } cases[] = {
        {1899, 12, 30, 0, 0, 0, 0.0, "day zero"},
        {1899, 12, 30, 18, 0, 0, 0.75, "a fraction of a day"},
        {1900, 1, 1, 0, 0, 0, 2.0, "two days on"},
        {1899, 12, 29, 0, 0, 0, -1.0, "the day before"},
        {1899, 12, 29, 6, 0, 0, -1.25, "time of day counts away from zero"},
        {1899, 12, 28, 12, 0, 0, -2.5, "time of day counts away from zero"},
        {1900, 3, 1, 0, 0, 0, 61.0, "1900 was no leap year"},
        {1970, 1, 1, 0, 0, 0, 25569.0, "start of the other count"},
        {2000, 2, 29, 0, 0, 0, 36585.0, "2000 was a leap year"},
        {2026, 1, 2, 12, 0, 0, 46024.5, "our days"},
        {9999, 12, 31, 0, 0, 0, 2958465.0, "the last day"},
        {100, 1, 1, 0, 0, 0, -657434.0, "the first day"},
    };
    for (const auto& row : cases) {
        COleDateTime moment;
        EXPECT_EQ(
            moment.SetDateTime(row.year, row.month, row.day, row.hour, row.minute, row.second),
            COleDateTime::valid)
            << row.reason;
        EXPECT_DOUBLE_EQ(moment.GetDays(), row.days) << row.reason;
    }
}

TEST(OleDateTimeTest, ImpossibleMomentsAreInvalidAtDayZero) {
    const struct {
        int year, month, day, hour, minute, second;
    } cases[] = {
        {99, 1, 1, 0, 0, 0},         {10000, 1, 1, 0, 0, 0},    {2026, 0, 1, 0, 0, 0},
        {2026, 13, 1, 0, 0, 0},      {2026, 1, 0, 0, 0, 0},     {2026, 4, 31, 0, 0, 0},
        {2026, 2, 29, 0, 0, 0},      {1900, 2, 29, 0, 0, 0},    {2026, 1, 1, 24, 0, 0},
        {2026, 1, 1, 0, 60, 0},      {2026, 1, 1, 0, 0, 60},    {2026, 1, 1, -1, 0, 0},
        {2026, 1, 1, 0, -1, 0},      {2026, 1, 1, 0, 0, -1},    {2026, -1, 1, 0, 0, 0},
        {2026, 1, -1, 0, 0, 0},      {-2026, 1, 1, 0, 0, 0},    {INT_MIN, 1, 1, 0, 0, 0},
        {2026, INT_MAX, 1, 0, 0, 0}, {2026, 257, 257, 0, 0, 0}, {65536 + 2026, 1, 1, 0, 0, 0},
    };
    for (const auto& row : cases) {
        COleDateTime moment(1.5);
        EXPECT_EQ(
            moment.SetDateTime(row.year, row.month, row.day, row.hour, row.minute, row.second),
            COleDateTime::invalid)
            << row.year << '-' << row.month << '-' << row.day;
        EXPECT_EQ(moment.GetStatus(), COleDateTime::invalid);
        EXPECT_EQ(moment.GetDays(), 0.0);
    }
}

TEST(OleDateTimeTest, AValidMomentClearsTheStatus) {
    COleDateTime moment;
    moment.SetStatus(COleDateTime::null);
    moment.SetDateTime(2026, 1, 2, 0, 0, 0);
    EXPECT_EQ(moment.GetStatus(), COleDateTime::valid);
}

} // namespace
