// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/code_type_family.h"
#include "media/codec_family.h"
#include "media/CodeType.h"
#include "media/proxy_codes.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace nqp2 {
namespace {

/// Codec, rate, whether class 50, and the type as a number: the values are fixed.
constexpr std::tuple<const wchar_t*, const wchar_t*, int, int> kOfClass200[] = {
    {L"DV50_422", L"50i", 0, 1}, // DV25 and DV50 come before the class
    {L"AVC-I_1080/50i", L"50i", 0, 51},
    {L"AVC-I_1080/59.94i", L"59.94i", 0, 51}, // not 52
    {L"DV100_1080/50i", L"50i", 0, 51},       // unknown to the class
    {L"AVCHD_1920_1080_50i", L"50i", 1, 51},
    {L"AVC-I_720/50p", L"50p", 1, 58}, // the class-50 flag is not asked
    {L"AVC-I_720/59.94p", L"59.94p", 0, 59},
    {L"AVC-I_1080/25p", L"25p", 0, 53},
    {L"AVC-I_1080/25p", L"50p", 0, 55},
    {L"AVC-I_1080/29.97p", L"29.97p", 0, 54},
    {L"AVC-I_1080/29.97p", L"59.94p", 0, 56},
    {L"AVC-I_1080/50p", L"25p", 0, 55},
    {L"AVC-I_1080/59.94p", L"", 0, 56},
    {L"avc-i_1080/25P", L"50P", 0, 55}};

/// The same with another class before the type.
constexpr std::tuple<const wchar_t*, const wchar_t*, int, const wchar_t*, int> kDecided[] = {
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
    {L"dv50_422", L"59.94I", 0, L"", 26} // letter case is ignored
};

TEST(CodeType, IsDecidedByCodecRateFlagAndClass) {
    const auto check = [](const wchar_t* codec, const wchar_t* rate, int class50,
                          const wchar_t* codecClass, int type) {
        EXPECT_EQ(CodeTypeFromCodec(codec, rate, class50, codecClass), type)
            << testing::PrintToString(std::wstring(codec) + L" " + rate + L" " + codecClass);
        EXPECT_STRNE(CodeTypeName(static_cast<eCodeType>(type)), "") << type;
    };
    for (const auto& [codec, rate, class50, type] : kOfClass200) {
        check(codec, rate, class50, L"200", type);
    }
    for (const auto& [codec, rate, class50, codecClass, type] : kDecided) {
        check(codec, rate, class50, codecClass, type);
    }
}

TEST(CodeType, ValuesHaveNames) {
    EXPECT_STREQ(CodeTypeName(static_cast<eCodeType>(52)), "CT_AVCI200_1080_5994I");
    EXPECT_STREQ(CodeTypeName(static_cast<eCodeType>(46)), "CT_AVCI50_720_5994P");
    EXPECT_STREQ(CodeTypeName(static_cast<eCodeType>(3)), "");
    EXPECT_STREQ(CodeTypeName(static_cast<eCodeType>(-1)), "");
    EXPECT_STREQ(StandardName(static_cast<eP2_VIDEO_STANDARD>(6)), "VS_2398P");
    EXPECT_STREQ(StandardName(static_cast<eP2_VIDEO_STANDARD>(7)), "");
}

constexpr std::tuple<const wchar_t*, int, int> kRateTexts[] = {
    {L"50i", 0, 1},    {L"59.94i", 1, 0}, {L"23.98p", 2, 6}, {L"59.94p", 3, 3}, {L"25p", 4, 1},
    {L"29.97p", 5, 0}, {L"24p", 6, 1},    {L"50p", 7, 4},    {L"60i", 8, 2},    {L"30p", 9, 2},
    {L"60p", 10, 5},   {L"59.94P", 3, 3}, {L"59.94", 0, 1},  {L"50 p", 0, 1},   {L"", 0, 1},
};

TEST(Rate, TextGivesIndexAndFamily) {
    for (const auto& [text, index, standard] : kRateTexts) {
        EXPECT_EQ(RateIndexFromText(text), index) << testing::PrintToString(std::wstring(text));
        EXPECT_EQ(StandardFromRateIndex(index), standard);
    }
    EXPECT_EQ(StandardFromRateIndex(-1), VS_50I);
    EXPECT_EQ(StandardFromRateIndex(11), VS_50I);
}

TEST(Rate, NumberGivesTheIndexWithinAThousandth) {
    constexpr std::pair<double, int> kRows[] = {
        {25.0, 0},           {29.97, 1},   {30.0, 8},    {24.0, 6},           {50.0, 7},
        {59.94, 3},          {60.0, 10},   {29.9701, 1}, {29.98, 0},          {29.9685, 0},
        {30.0009, 8},        {30.0011, 0}, {23.976, 0},  {60000.0 / 1001, 3}, {0.0, 0},
        {30000.0 / 1001, 1}, {-25.0, 0},
    };
    for (const auto& [fps, index] : kRows) {
        EXPECT_EQ(RateIndexFromFps(fps), index) << fps;
    }
}

} // namespace
} // namespace nqp2

namespace nqp2::media {
namespace {

TEST(CodeTypeFamilyTest, EveryValueBelongsToOneFamilyOrToNone) {
    using enum CodeTypeFamily;
    const std::map<CodeTypeFamily, std::vector<int>> families = {
        {StandardRate, {0, 12, 23, 24}},
        {DoubleRate, {1, 13, 26, 27}},
        {HighDefinition, {2, 14, 15, 16, 29, 30, 31, 32, 33, 34}},
        {IntraHighRate, {5, 17, 18, 19, 35, 36, 37, 38, 39, 40, 41, 42}},
        {IntraLowRate, {7, 20, 21, 22, 43, 44, 45, 46, 47, 48, 49, 50}}};
    std::map<int, CodeTypeFamily> expected;
    for (const auto& [family, values] : families) {
        for (const int value : values) {
            expected[value] = family;
        }
    }
    for (int value = -3; value < 200; ++value) {
        const auto row = expected.find(value);
        EXPECT_EQ(FamilyOf(static_cast<eCodeType>(value)),
                  row != expected.end() ? row->second : Other)
            << value;
    }
    EXPECT_EQ(FamilyOf(static_cast<eCodeType>(INT32_MIN)), Other);
    EXPECT_EQ(FamilyOf(static_cast<eCodeType>(INT32_MAX)), Other);
}

TEST(CodecFamily, IsToldByTheCodecName) {
    using enum CodecFamily;
    constexpr std::tuple<const wchar_t*, CodecFamily, bool> kRows[] = {
        {L"AVC-LongG422", LongGop, true},
        {L"avc-longg420", LongGop, true},
        {L"AVC-LongG422-50M", LongGop, false},
        {L"avc-longg422-50m", Other, false}, // a part must match in case
        {L"My AVC-Long", LongGop, false},
        {L"AVC-Intra4K_422", Intra, false},
        {L"avc-intra4k_444", Intra, false},
        {L"AVC-INTRA_422", Intra, false},
        {L"AVC-Intra2K_444", Intra, false},
        {L"avc-intra2k_444", Other, false},
        {L"AVC-I_1080/50i", Other, false},
        {L"DV25_411", Other, false},
        {L"", Other, false}};
    for (const auto& [codec, family, carriesClass] : kRows) {
        EXPECT_EQ(FamilyOfCodec(codec), family) << testing::PrintToString(std::wstring(codec));
        EXPECT_EQ(NameCarriesClass(codec), carriesClass);
    }
}

TEST(ProxyCodes, AreToldByTheDescriptionTexts) {
    constexpr struct {
        std::int32_t (*codeOf)(std::wstring_view);
        const wchar_t* text;
        std::int32_t code;
    } kRows[] = {
        {ProxyFormatCode, L"mp4", 1},           {ProxyFormatCode, L"MOV", 2},
        {ProxyFormatCode, L"AVI", 0},           {ProxyFormatCode, L"", 0},
        {ProxyVideoCodecCode, L"AVC", 1},       {ProxyVideoCodecCode, L"Mpeg-4", 2},
        {ProxyVideoCodecCode, L"MPEG4", 0},     {ProxyAudioCodecCode, L"AAC", 1},
        {ProxyAudioCodecCode, L"lpcm", 2},      {ProxyAudioCodecCode, L"PCM", 0},
        {ProxyResolutionCode, L"QVGA", 0},      {ProxyResolutionCode, L"SIF_NTSC", 1},
        {ProxyResolutionCode, L"SIF_PAL", 2},   {ProxyResolutionCode, L"480X270", 3},
        {ProxyResolutionCode, L"640x360", 4},   {ProxyResolutionCode, L"960x540", 5},
        {ProxyResolutionCode, L"1280x720", 6},  {ProxyResolutionCode, L"1920x1080", 7},
        {ProxyResolutionCode, L"1920x108", -1}, {ProxyResolutionCode, L"", -1},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(row.codeOf(row.text), row.code) << "row " << &row - kRows;
    }
}

} // namespace
} // namespace nqp2::media
