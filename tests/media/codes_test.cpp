// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/families.h"
#include "media/proxy_codes.h"
#include "NQP2ParserU/CodeType.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace nqp2 {
namespace {

using TypesByRate = std::vector<std::pair<const wchar_t*, int>>;

void ExpectTypes(const wchar_t* codec, int class50, const wchar_t* codecClass,
                 const TypesByRate& types) {
    for (const auto& [rate, type] : types) {
        EXPECT_EQ(CodeTypeFromCodec(codec, rate, class50, codecClass), type)
            << testing::PrintToString(std::wstring(codec) + L" " + rate + L" " + codecClass);
        EXPECT_STRNE(CodeTypeName(static_cast<eCodeType>(type)), "") << type;
    }
}

// The types as numbers: the values are fixed. DV25 and DV50 come before the class.
TEST(CodeType, IsDecidedByCodecAndRate) {
    const std::pair<const wchar_t*, TypesByRate> rows[] = {
        {L"DV25_411", {{L"25p", 12}, {L"59.94i", 23}, {L"29.97p", 24}, {L"50i", 0}, {L"", 0}}},
        {L"DV25_420", {{L"25p", 12}, {L"59.94i", 23}, {L"29.97p", 24}, {L"50i", 0}, {L"", 0}}},
        {L"DV50_422", {{L"25p", 13}, {L"59.94i", 26}, {L"29.97p", 27}, {L"50i", 1}}},
        {L"dv50_422", {{L"59.94I", 26}}}, // letter case is ignored
    };
    for (const auto& [codec, types] : rows) {
        ExpectTypes(codec, 0, L"", types);
        ExpectTypes(codec, 0, L"200", types);
    }
    ExpectTypes(L"DV100_1080/50i", 0, L"", {{L"50i", 2}, {L"", 14}});
    ExpectTypes(L"DV100_720/50p", 0, L"", {{L"50p", 16}, {L"25p", 15}});
    ExpectTypes(L"DV100_1080/59.94i", 0, L"", {{L"59.94i", 29}, {L"29.97p", 30}});
    ExpectTypes(L"DV100_720/59.94p", 0, L"", {{L"59.94p", 32}, {L"29.97p", 33}});
    ExpectTypes(L"AVC-I_1080/50p", 0, L"", {{L"50p", 0}}); // known to class 200 only
    ExpectTypes(L"AVC-LongG422", 0, L"50", {{L"50i", 0}, {L"", 0}});
}

TEST(CodeType, OfAvcFollowsTheFlagOfClass50) {
    const std::tuple<const wchar_t*, int, int> rows[] = {
        {L"AVC-I_1080/50i", 5, 7},          {L"AVC-I_1080/25p", 17, 20},
        {L"AVC-I_720/50p", 19, 22},         {L"AVC-I_1080/59.94i", 35, 43},
        {L"AVC-I_1080/29.97p", 36, 44},     {L"AVC-I_720/59.94p", 38, 46},
        {L"AVCHD_1920_1080_50i", 200, 200}, {L"AVCHD_1440_1080_50i", 201, 201},
        {L"AVCHD_1920_1080_25p", 202, 202}, {L"AVCHD_1440_1080_25p", 203, 203},
        {L"AVCHD_1280_720_50p", 204, 204},  {L"AVCHD_1280_720_25p", 205, 205},
    };
    for (const auto& [codec, plain, flagged] : rows) {
        ExpectTypes(codec, 0, L"2000", {{L"", plain}, {L"50p", plain}});
        ExpectTypes(codec, 1, L"100", {{L"", flagged}});
        ExpectTypes(codec, 2, L"50", {{L"", flagged}});
    }
}

TEST(CodeType, OfClass200IsTheInterlacedOneWhereNothingElseFits) {
    for (const int class50 : {0, 1}) { // the flag is not asked
        const std::pair<const wchar_t*, TypesByRate> rows[] = {
            {L"AVC-I_1080/50i", {{L"50i", 51}}},
            {L"AVC-I_1080/59.94i", {{L"59.94i", 51}}}, // not 52
            {L"DV100_1080/50i", {{L"50i", 51}}},
            {L"AVCHD_1920_1080_50i", {{L"50i", 51}}},
            {L"AVC-I_720/50p", {{L"50p", 58}}},
            {L"AVC-I_720/59.94p", {{L"59.94p", 59}}},
            {L"AVC-I_1080/25p", {{L"25p", 53}, {L"50p", 55}}},
            {L"avc-i_1080/29.97p", {{L"29.97p", 54}, {L"59.94P", 56}}},
            {L"AVC-I_1080/50p", {{L"25p", 55}}},
            {L"AVC-I_1080/59.94p", {{L"", 56}}},
        };
        for (const auto& [codec, types] : rows) {
            ExpectTypes(codec, class50, L"200", types);
        }
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
    std::map<int, CodeTypeFamily> expected;
    const std::pair<CodeTypeFamily, std::vector<int>> families[] = {
        {StandardRate, {0, 12, 23, 24}},
        {DoubleRate, {1, 13, 26, 27}},
        {HighDefinition, {2, 14, 15, 16, 29, 30, 31, 32, 33, 34}},
        {IntraHighRate, {5, 17, 18, 19, 35, 36, 37, 38, 39, 40, 41, 42}},
        {IntraLowRate, {7, 20, 21, 22, 43, 44, 45, 46, 47, 48, 49, 50}}};
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
}

TEST(CodecFamily, IsToldByTheCodecName) {
    using enum CodecFamily;
    // A part must match in case where the whole name is not one that is known.
    constexpr std::tuple<const wchar_t*, CodecFamily, bool> kRows[] = {
        {L"AVC-LongG422", LongGop, true},      {L"avc-longg420", LongGop, true},
        {L"AVC-LongG422-50M", LongGop, false}, {L"avc-longg422-50m", Other, false},
        {L"My AVC-Long", LongGop, false},      {L"AVC-Intra4K_422", Intra, false},
        {L"avc-intra4k_444", Intra, false},    {L"AVC-INTRA_422", Intra, false},
        {L"AVC-Intra2K_444", Intra, false},    {L"avc-intra2k_444", Other, false},
        {L"AVC-I_1080/50i", Other, false},     {L"", Other, false},
    };
    for (const auto& [codec, family, carriesClass] : kRows) {
        EXPECT_EQ(FamilyOfCodec(codec), family) << testing::PrintToString(std::wstring(codec));
        EXPECT_EQ(NameCarriesClass(codec), carriesClass);
    }
}

TEST(ProxyCodes, AreToldByTheDescriptionTexts) {
    using Codes = std::vector<std::pair<const wchar_t*, int>>;
    const std::pair<std::int32_t (*)(std::wstring_view), Codes> rows[] = {
        {ProxyFormatCode, {{L"mp4", 1}, {L"MOV", 2}, {L"AVI", 0}, {L"", 0}}},
        {ProxyVideoCodecCode, {{L"AVC", 1}, {L"Mpeg-4", 2}, {L"MPEG4", 0}}},
        {ProxyAudioCodecCode, {{L"AAC", 1}, {L"lpcm", 2}, {L"PCM", 0}}},
        {ProxyResolutionCode, {{L"QVGA", 0}, {L"SIF_NTSC", 1}, {L"SIF_PAL", 2}, {L"480X270", 3}}},
        {ProxyResolutionCode, {{L"640x360", 4}, {L"960x540", 5}, {L"1280x720", 6}}},
        {ProxyResolutionCode, {{L"1920x1080", 7}, {L"1920x108", -1}, {L"", -1}}},
    };
    for (const auto& [codeOf, codes] : rows) {
        for (const auto& [text, code] : codes) {
            EXPECT_EQ(codeOf(text), code) << testing::PrintToString(std::wstring(text));
        }
    }
}

} // namespace
} // namespace nqp2::media
