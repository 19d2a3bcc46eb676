// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/CodeType.h"

#include <gtest/gtest.h>

#include <string>

namespace nqp2 {
namespace {

struct Decided {
    const wchar_t* codec;
    const wchar_t* rate;
    int class50;
    const wchar_t* codecClass;
    int type; // as a number: the values are fixed
};

constexpr Decided kDecided[] = {
    {L"DV25_411", L"25p", 0, L"", 12},
    {L"DV25_411", L"59.94i", 0, L"", 23},
    {L"DV25_420", L"29.97p", 0, L"", 24},
    {L"DV25_420", L"25p", 0, L"", 12},
    {L"DV25_420", L"59.94i", 0, L"", 23},
    {L"DV25_411", L"29.97p", 0, L"", 24},
    {L"DV25_411", L"50i", 0, L"", 0},
    {L"DV25_420", L"", 0, L"", 0},
    {L"DV50_422", L"25p", 0, L"", 13},
    {L"DV50_422", L"59.94i", 0, L"", 26},
    {L"DV50_422", L"29.97p", 0, L"", 27},
    {L"DV50_422", L"50i", 0, L"", 1},
    {L"DV50_422", L"50i", 0, L"200", 1}, // DV25 and DV50 come before the class
    {L"AVC-I_1080/50i", L"50i", 0, L"200", 51},
    {L"AVC-I_1080/59.94i", L"59.94i", 0, L"200", 51}, // not 52
    {L"DV100_1080/50i", L"50i", 0, L"200", 51},       // unknown to the class
    {L"AVCHD_1920_1080_50i", L"50i", 1, L"200", 51},
    {L"AVC-I_720/50p", L"50p", 1, L"200", 58}, // the class-50 flag is not asked
    {L"AVC-I_720/59.94p", L"59.94p", 0, L"200", 59},
    {L"AVC-I_1080/25p", L"25p", 0, L"200", 53},
    {L"AVC-I_1080/25p", L"50p", 0, L"200", 55},
    {L"AVC-I_1080/29.97p", L"29.97p", 0, L"200", 54},
    {L"AVC-I_1080/29.97p", L"59.94p", 0, L"200", 56},
    {L"AVC-I_1080/50p", L"25p", 0, L"200", 55},
    {L"AVC-I_1080/59.94p", L"", 0, L"200", 56},
    {L"AVC-I_1080/50p", L"50p", 0, L"", 0}, // known to class 200 only
    {L"AVC-I_1080/50i", L"50i", 0, L"2000", 5},
    {L"DV100_1080/50i", L"50i", 0, L"", 2},
    {L"DV100_1080/50i", L"", 0, L"", 14},
    {L"DV100_720/50p", L"50p", 0, L"", 16},
    {L"DV100_720/50p", L"25p", 0, L"", 15},
    {L"DV100_1080/59.94i", L"59.94i", 0, L"", 29},
    {L"DV100_1080/59.94i", L"29.97p", 0, L"", 30},
    {L"DV100_720/59.94p", L"59.94p", 0, L"", 32},
    {L"DV100_720/59.94p", L"29.97p", 0, L"", 33},
    {L"AVC-I_1080/50i", L"", 0, L"100", 5},
    {L"AVC-I_1080/50i", L"", 1, L"50", 7},
    {L"AVC-I_1080/25p", L"", 0, L"", 17},
    {L"AVC-I_1080/25p", L"50p", 1, L"", 20},
    {L"AVC-I_720/50p", L"", 0, L"", 19},
    {L"AVC-I_720/50p", L"", 2, L"", 22},
    {L"AVC-I_1080/59.94i", L"", 0, L"", 35},
    {L"AVC-I_1080/59.94i", L"", 1, L"", 43},
    {L"AVC-I_1080/29.97p", L"", 0, L"", 36},
    {L"AVC-I_1080/29.97p", L"", 1, L"", 44},
    {L"AVC-I_720/59.94p", L"", 0, L"", 38},
    {L"AVC-I_720/59.94p", L"", 1, L"", 46},
    {L"AVCHD_1920_1080_50i", L"", 1, L"", 200},
    {L"AVCHD_1440_1080_50i", L"", 0, L"", 201},
    {L"AVCHD_1920_1080_25p", L"", 0, L"", 202},
    {L"AVCHD_1440_1080_25p", L"", 0, L"", 203},
    {L"AVCHD_1280_720_50p", L"", 0, L"", 204},
    {L"AVCHD_1280_720_25p", L"", 0, L"", 205},
    {L"AVC-LongG422", L"50i", 0, L"50", 0},
    {L"", L"", 0, L"", 0},
    {L"dv50_422", L"59.94I", 0, L"", 26}, // letter case is ignored
    {L"avc-i_1080/25P", L"50P", 0, L"200", 55},
    {L"avchd_1280_720_50P", L"", 0, L"", 204},
};

TEST(CodeType, IsDecidedByCodecRateFlagAndClass) {
    for (const Decided& row : kDecided) {
        EXPECT_EQ(CodeTypeFromCodec(row.codec, row.rate, row.class50, row.codecClass), row.type)
            << testing::PrintToString(std::wstring(row.codec)) << " row " << &row - kDecided;
    }
}

TEST(CodeType, EveryDecidedValueHasAName) {
    for (const Decided& row : kDecided) {
        EXPECT_STRNE(CodeTypeName(static_cast<eCodeType>(row.type)), "") << row.type;
    }
    EXPECT_STREQ(CodeTypeName(static_cast<eCodeType>(52)), "CT_AVCI200_1080_5994I");
    EXPECT_STREQ(CodeTypeName(static_cast<eCodeType>(46)), "CT_AVCI50_720_5994P");
    EXPECT_STREQ(CodeTypeName(static_cast<eCodeType>(3)), "");
    EXPECT_STREQ(CodeTypeName(static_cast<eCodeType>(-1)), "");
    EXPECT_STREQ(StandardName(static_cast<eP2_VIDEO_STANDARD>(6)), "VS_2398P");
    EXPECT_STREQ(StandardName(static_cast<eP2_VIDEO_STANDARD>(7)), "");
}

struct RateText {
    const wchar_t* text;
    int index;
    int standard;
};

constexpr RateText kRateTexts[] = {
    {L"50i", 0, 1},    {L"59.94i", 1, 0}, {L"23.98p", 2, 6}, {L"59.94p", 3, 3}, {L"25p", 4, 1},
    {L"29.97p", 5, 0}, {L"24p", 6, 1},    {L"50p", 7, 4},    {L"60i", 8, 2},    {L"30p", 9, 2},
    {L"60p", 10, 5},   {L"59.94P", 3, 3}, {L"59.94", 0, 1},  {L"50 p", 0, 1},   {L"", 0, 1},
};

TEST(Rate, TextGivesIndexAndFamily) {
    for (const RateText& row : kRateTexts) {
        const int index = RateIndexFromText(row.text);
        EXPECT_EQ(index, row.index) << "row " << &row - kRateTexts;
        EXPECT_EQ(StandardFromRateIndex(index), row.standard) << "row " << &row - kRateTexts;
    }
    EXPECT_EQ(StandardFromRateIndex(-1), VS_50I);
    EXPECT_EQ(StandardFromRateIndex(11), VS_50I);
}

TEST(Rate, NumberGivesTheIndexWithinAThousandth) {
    constexpr struct {
        double fps;
        int index;
    } kRows[] = {
        {25.0, 0},           {29.97, 1},   {30.0, 8},    {24.0, 6},           {50.0, 7},
        {59.94, 3},          {60.0, 10},   {29.9701, 1}, {29.98, 0},          {29.9685, 0},
        {30.0009, 8},        {30.0011, 0}, {23.976, 0},  {60000.0 / 1001, 3}, {0.0, 0},
        {30000.0 / 1001, 1}, {-25.0, 0},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(RateIndexFromFps(row.fps), row.index) << row.fps;
    }
}

} // namespace
} // namespace nqp2
