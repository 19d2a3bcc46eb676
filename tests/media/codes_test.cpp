// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/families.h"
#include "media/proxy_codes.h"
#include "media/rates.h"
#include "media/timecode.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <tuple>

namespace nqp2 {
namespace {

struct CodeTypeRow {
    const wchar_t* codec;
    const wchar_t* rate;
    int type; ///< as a number: the values are fixed
    int class50Type;
};

void ExpectTypes(std::span<const CodeTypeRow> rows,
                 std::initializer_list<const wchar_t*> codecClasses) {
    for (const CodeTypeRow& row : rows) {
        for (const wchar_t* codecClass : codecClasses) {
            const int other = CodeTypeFromCodec(row.codec, row.rate, 0, codecClass);
            EXPECT_EQ(other, row.type) << CString(row.codec) << CString(row.rate);
            EXPECT_EQ(CodeTypeFromCodec(row.codec, row.rate, 1, codecClass), row.class50Type);
            EXPECT_EQ(CodeTypeFromCodec(row.codec, row.rate, 2, codecClass), row.class50Type);
            EXPECT_STRNE(CodeTypeName(static_cast<eCodeType>(other)), "") << row.type;
        }
    }
}

TEST(CodeType, FollowsCodecRateFlagAndClass) {
    constexpr CodeTypeRow kDv[] = {
        {L"DV25_411", L"25p", 12, 12},    {L"DV25_411", L"59.94i", 23, 23},
        {L"DV25_411", L"29.97p", 24, 24}, {L"DV25_411", L"50i", 0, 0},
        {L"DV25_420", L"25p", 12, 12},    {L"DV25_420", L"59.94i", 23, 23},
        {L"DV25_420", L"29.97p", 24, 24}, {L"DV25_420", L"", 0, 0},
        {L"DV50_422", L"25p", 13, 13},    {L"dv50_422", L"59.94I", 26, 26},
        {L"DV50_422", L"29.97p", 27, 27}, {L"DV50_422", L"50i", 1, 1}};
    ExpectTypes(kDv, {L"", L"50", L"200"});
    constexpr CodeTypeRow kOthers[] = {
        {L"DV100_1080/50i", L"50i", 2, 2},       {L"DV100_1080/50i", L"", 14, 14},
        {L"DV100_720/50p", L"50p", 16, 16},      {L"DV100_720/50p", L"25p", 15, 15},
        {L"DV100_1080/59.94i", L"", 30, 30},     {L"DV100_1080/59.94i", L"59.94i", 29, 29},
        {L"DV100_720/59.94p", L"", 33, 33},      {L"DV100_720/59.94p", L"59.94p", 32, 32},
        {L"AVC-I_1080/50i", L"", 5, 7},          {L"AVC-I_1080/25p", L"50p", 17, 20},
        {L"AVC-I_720/50p", L"", 19, 22},         {L"AVC-I_1080/59.94i", L"", 35, 43},
        {L"AVC-I_1080/29.97p", L"", 36, 44},     {L"AVC-I_720/59.94p", L"50p", 38, 46},
        {L"AVCHD_1920_1080_50i", L"", 200, 200}, {L"AVCHD_1440_1080_50i", L"", 201, 201},
        {L"AVCHD_1920_1080_25p", L"", 202, 202}, {L"AVCHD_1440_1080_25p", L"", 203, 203},
        {L"AVCHD_1280_720_50p", L"", 204, 204},  {L"AVCHD_1280_720_25p", L"", 205, 205},
        {L"AVC-I_1080/50p", L"50p", 0, 0},       {L"AVC-LongG422", L"50i", 0, 0}};
    ExpectTypes(kOthers, {L"", L"50", L"2000"});
    // The interlaced one where nothing else fits.
    constexpr CodeTypeRow kClass200[] = {
        {L"AVC-I_1080/50i", L"50i", 51, 51},       {L"AVC-I_1080/59.94i", L"59.94i", 51, 51},
        {L"AVCHD_1920_1080_50i", L"50i", 51, 51},  {L"AVC-I_720/50p", L"50p", 58, 58},
        {L"AVC-I_720/59.94p", L"59.94p", 59, 59},  {L"AVC-I_1080/25p", L"25p", 53, 53},
        {L"AVC-I_1080/25p", L"50p", 55, 55},       {L"avc-i_1080/29.97p", L"29.97p", 54, 54},
        {L"avc-i_1080/29.97p", L"59.94P", 56, 56}, {L"AVC-I_1080/50p", L"25p", 55, 55},
        {L"AVC-I_1080/59.94p", L"", 56, 56}};
    ExpectTypes(kClass200, {L"200"});
    EXPECT_STREQ(CodeTypeName(static_cast<eCodeType>(3)), "");
}

TEST(Rate, TextGivesIndexFamilyAndNominalRate) {
    constexpr std::tuple<const wchar_t*, int, int, int> kRows[] = {
        {L"50i", 0, 1, 25},  {L"59.94i", 1, 0, 30}, {L"23.98p", 2, 6, 24}, {L"59.94P", 3, 3, 60},
        {L"25p", 4, 1, 25},  {L"29.97p", 5, 0, 30}, {L"24p", 6, 1, 24},    {L"50p", 7, 4, 50},
        {L"60i", 8, 2, 30},  {L"30p", 9, 2, 30},    {L"60p", 10, 5, 60},   {L"59.94", 0, 1, 25},
        {L"50 p", 0, 1, 25}, {L"", 0, 1, 25},
    };
    for (const auto& [text, index, standard, nominal] : kRows) {
        EXPECT_EQ(RateIndexFromText(text), index) << CString(text);
        EXPECT_EQ(StandardFromRateIndex(index), standard);
        EXPECT_EQ(media::NominalRate(text), nominal);
    }
}

TEST(Rate, NumberGivesTheIndexWithinAThousandthAndAFileTheNearestOfItsScan) {
    constexpr std::pair<double, int> kRows[] = {
        {25.0, 0},           {29.97, 1},   {30.0, 8},    {24.0, 6},           {50.0, 7},
        {59.94, 3},          {60.0, 10},   {29.9701, 1}, {29.98, 0},          {29.9685, 0},
        {30.0009, 8},        {30.0011, 0}, {23.976, 0},  {60000.0 / 1001, 3}, {0.0, 0},
        {30000.0 / 1001, 1}, {-25.0, 0}};
    for (const auto& [fps, index] : kRows) {
        EXPECT_EQ(RateIndexFromFps(fps), index) << fps;
    }
    for (const FrameRate& rate : kFrameRates) {
        const FrameRate inFile = {rate.frames * 20000, rate.seconds * 20000 + 1};
        EXPECT_EQ(media::FindRate(inFile, rate.IsInterlaced()), &rate) << CString(rate.text);
    }
    EXPECT_EQ(media::FindRate({24, 1}, true), media::FindRate(L"24p"));
    EXPECT_EQ(media::FindRate({12, 1}, false), nullptr);
    EXPECT_EQ(media::EditUnitText(*media::FindRate(L"29.97p")), L"1001/30000");
}

} // namespace
} // namespace nqp2

namespace nqp2::media {
namespace {

TEST(CodeTypeFamilyTest, EveryValueBelongsToOneFamilyOrToNone) {
    // By code type the family's number; 5 is none.
    constexpr std::string_view kFamilies = "012553545555012223334440051152222223333333344444444";
    for (int value = -3; value < 210; ++value) {
        const auto place = static_cast<std::size_t>(value);
        const int family = place < kFamilies.size() ? kFamilies[place] - '0' : 5;
        EXPECT_EQ(static_cast<int>(FamilyOf(static_cast<eCodeType>(value))), family) << value;
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
        EXPECT_EQ(FamilyOfCodec(codec), family) << CString(codec);
        EXPECT_EQ(NameCarriesClass(codec), carriesClass);
    }
}

TEST(ProxyCodes, OfResolutionsFollowTheirSize) {
    constexpr const wchar_t* kSizes[] = {L"QVGA",    L"SIF_NTSC", L"sif_pal",  L"480x270",
                                         L"640X360", L"960x540",  L"1280x720", L"1920x1080"};
    for (std::int32_t code = 0; code < 8; ++code) {
        EXPECT_EQ(ProxyResolutionCode(kSizes[code]), code);
    }
    EXPECT_EQ(ProxyResolutionCode(L"1920x108"), -1);
}

} // namespace
} // namespace nqp2::media
