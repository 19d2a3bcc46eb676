// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/codec_family.h"

#include <gtest/gtest.h>

#include <string>

namespace nqp2::media {
namespace {

TEST(CodecFamily, IsToldByTheCodecName) {
    constexpr struct {
        const wchar_t* codec;
        CodecFamily family;
        bool carriesClass;
    } kRows[] = {
        {L"AVC-LongG422", CodecFamily::LongGop, true},
        {L"avc-longg420", CodecFamily::LongGop, true},
        {L"AVC-LongG422-50M", CodecFamily::LongGop, false},
        {L"avc-longg422-50m", CodecFamily::Other, false}, // a part must match in case
        {L"My AVC-Long", CodecFamily::LongGop, false},
        {L"AVC-Intra4K_422", CodecFamily::Intra, false},
        {L"avc-intra4k_444", CodecFamily::Intra, false},
        {L"AVC-INTRA_422", CodecFamily::Intra, false},
        {L"AVC-Intra2K_444", CodecFamily::Intra, false},
        {L"avc-intra2k_444", CodecFamily::Other, false},
        {L"AVC-I_1080/50i", CodecFamily::Other, false},
        {L"DV25_411", CodecFamily::Other, false},
        {L"", CodecFamily::Other, false},
    };
    for (const auto& row : kRows) {
        const std::string name = testing::PrintToString(std::wstring(row.codec));
        EXPECT_EQ(FamilyOfCodec(row.codec), row.family) << name;
        EXPECT_EQ(NameCarriesClass(row.codec), row.carriesClass) << name;
    }
}

} // namespace
} // namespace nqp2::media
