// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/clip_date.h"

#include <gtest/gtest.h>

namespace nqp2::media {
namespace {

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

TEST(ClipDate, AnotherLengthLeavesTheValue) {
    for (const wchar_t* text : {L"", L"2005-02-01T08:58:44", L"2005-02-01T08:58:44+08:0",
                                L"2005-02-01T08:58:44+08:000"}) {
        COleDateTime moment(kOldDays);
        EXPECT_FALSE(ReadClipDate(text, moment));
        EXPECT_EQ(moment.GetDays(), kOldDays);
        EXPECT_EQ(moment.GetStatus(), COleDateTime::valid);
    }
}

TEST(ClipDate, AnImpossibleDateIsInvalid) {
    for (const wchar_t* text :
         {L"2005-02-29T08:58:44+08:00", L"2005-13-01T08:58:44+08:00", L"2005-02-01T24:00:00+08:00",
          L"2005-02-01T08:60:44+08:00", L"a date of 25 elements ..."}) {
        COleDateTime moment(kOldDays);
        EXPECT_TRUE(ReadClipDate(text, moment));
        EXPECT_EQ(moment.GetStatus(), COleDateTime::invalid);
    }
}

TEST(ClipDate, ZoneIsCutBehindTheTimeOnly) {
    constexpr struct {
        const wchar_t* text;
        const wchar_t* local;
    } kRows[] = {
        {L"2013-05-01T10:20:30+09:00", L"2013-05-01T10:20:30"},
        {L"2013-05-01T10:20:30-05:00", L"2013-05-01T10:20:30"},
        {L"2013-05-01T10:20:30", L"2013-05-01T10:20:30"}, // "-" of the date stays
        {L"2013-05-01T10:20:30Z", L"2013-05-01T10:20:30Z"},
        {L"2013-05-01 10:20:30+09:00", L"2013-05-01 10:20:30+09:00"}, // no "T": whole
        {L"2013-05-01t10:20:30+09:00", L"2013-05-01t10:20:30+09:00"},
        {L"2013-05-01T1+2+3-4", L"2013-05-01T1+2"}, // the last "+" goes before any "-"
        {L"2013+05T10-1-2", L"2013+05T10-1"},
        {L"T+", L"T"},
        {L"", L""},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(WithoutZone(row.text).View(), row.local) << "row " << &row - kRows;
    }
}

} // namespace
} // namespace nqp2::media
