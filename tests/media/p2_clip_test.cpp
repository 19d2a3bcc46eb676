// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/P2Clip.h"

#include "media/identifier.h"
#include "platform/guid_text.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

namespace {

using Clip = _tag_P2Clip;

constexpr std::pair<std::int32_t Clip::*, std::int32_t> kNumbers[] = {
    {&Clip::ActivePixel, 0},  {&Clip::ActiveLine, 0},      {&Clip::BitDepth, 0},
    {&Clip::ClipIdDigit, -1}, {&Clip::AvcIntraClass50, 0}, {&Clip::Duration, 0},
    {&Clip::UnusedOffset, 0}, {&Clip::StartTimecode, 0},   {&Clip::DropFrame, 1},
    {&Clip::SourceKind, 0},
};
constexpr std::int64_t Clip::*kWideNumbers[] = {
    &Clip::AudioStartByteOffset, &Clip::AudioDataSize, &Clip::VideoStartByteOffset,
    &Clip::VideoDataSize,        &Clip::OffsetInShot,
};
constexpr GUID Clip::*kIdentities[] = {&Clip::GlobalClipGuid, &Clip::TopClipGuid,
                                       &Clip::NextClipGuid, &Clip::PreviousClipGuid};
constexpr CString Clip::*kTexts[] = {
    &Clip::GlobalClipID, &Clip::CodecName,   &Clip::ExtraPath,    &Clip::IconPath,
    &Clip::VideoPath,    &Clip::XmlPath,     &Clip::ProxyPath,    &Clip::ProxyVideoCodecName,
    &Clip::CodecClass,   &Clip::FrameRate,   &Clip::StartDate,    &Clip::EndDate,
    &Clip::ClipName,     &Clip::AspectRatio, &Clip::UserClipName,
};
constexpr CString Clip::*kKeptTexts[] = {
    &Clip::TopClipName,      &Clip::PreviousClipName, &Clip::NextClipName,       &Clip::TopSerialNo,
    &Clip::PreviousSerialNo, &Clip::NextSerialNo,     &Clip::AudioBitsPerSample,
};

void SetEach(Clip& clip, const auto& fields, const auto& value) {
    for (const auto field : fields) {
        clip.*field = value;
    }
}

/// Every field away from its reset value.
Clip FilledClip() {
    Clip clip;
    clip.ShootStartTime = COleDateTime(38384.5);
    clip.GlobalShotGuid.Data1 = 9;
    for (const auto& [field, value] : kNumbers) {
        clip.*field = 7;
    }
    SetEach(clip, kWideNumbers, 7);
    SetEach(clip, kIdentities, GUID{9, 0, 0, {}});
    SetEach(clip, kTexts, L"old");
    SetEach(clip, kKeptTexts, L"kept");
    for (CString& path : clip.AudioPath) {
        path = L"old";
    }
    clip.Proxy.ProxyResolution = 7;
    clip.Proxy.ProxyExt = L".MOV";
    clip.Proxy.ProxyAudioMask = 7;
    clip.Reserved276 = clip.Reserved288 = 7;
    clip.EssenceMask = 7;
    clip.Memos.Add(_tag_P2Memo());
    return clip;
}

void ExpectResetFields(const Clip& clip) {
    for (const auto& [field, value] : kNumbers) {
        EXPECT_EQ(clip.*field, value);
    }
    for (const auto field : kWideNumbers) {
        EXPECT_EQ(clip.*field, 0);
    }
    for (const auto field : kIdentities) {
        EXPECT_TRUE(clip.*field == GUID());
    }
    for (const auto& field : kTexts) {
        EXPECT_TRUE((clip.*field).IsEmpty()) << "text " << &field - kTexts;
    }
    for (const CString& path : clip.AudioPath) {
        EXPECT_TRUE(path.IsEmpty());
    }
    EXPECT_EQ(clip.Proxy.ProxyResolution, -1);
    EXPECT_TRUE(clip.Proxy.ProxyExt.IsEmpty());
    EXPECT_EQ(clip.Proxy.ProxyAudioMask, 0U);
    EXPECT_EQ(clip.Reserved276 + clip.Reserved288, 0U);
    EXPECT_EQ(clip.EssenceMask, 0U);
    EXPECT_TRUE(clip.Memos.IsEmpty());
}

TEST(P2Clip, ResetMakesItFreshButLeavesTheCarriedFieldsAlone) {
    ExpectResetFields(Clip());
    Clip clip = FilledClip();
    clip.Reset();
    ExpectResetFields(clip);
    EXPECT_EQ(clip.ShootStartTime.GetDays(), 38384.5);
    EXPECT_EQ(clip.GlobalShotGuid.Data1, 9U);
    for (const auto& field : kKeptTexts) {
        EXPECT_TRUE(clip.*field == L"kept") << "kept text " << &field - kKeptTexts;
    }
}

TEST(P2Memo, DescribesAWaveRecordingByDefault) {
    const _tag_P2Memo memo;
    EXPECT_TRUE(memo.VoiceFormat == L"WAV");
    EXPECT_EQ(memo.VoiceSamplingRate, 1200);
    EXPECT_EQ(memo.VoiceBitsPerSample, 16);
    EXPECT_EQ(memo.VoiceChannelFlag, 1);
}

} // namespace

namespace nqp2::media {
namespace {

constexpr GUID kGuid{0x01234567, 0x89ab, 0xcdef, {0x10, 0x32, 0x54, 0x76, 0x98, 0xba, 0xdc, 0xfe}};

TEST(Identifier, CarriesTheGuidBetweenLabelAndClosingDigits) {
    EXPECT_EQ(IdentifierFromGuid(kGuid).View(), L"060A2B340101010501010D431300"
                                                L"0123456789ABCDEF1032547698BADCFE"
                                                L"2008");
    const GUID back = GuidFromIdentifier(IdentifierFromGuid(kGuid));
    EXPECT_EQ(platform::GuidText(back).View(), L"456789ab-cdef-1032-5476-98badcfe2008") << "kept";
}

TEST(Identifier, IsFreshForAnAllZeroGuid) {
    const CString first = IdentifierFromGuid(GUID());
    const CString second = IdentifierFromGuid(GUID());
    EXPECT_EQ(first.GetLength(), 64);
    EXPECT_EQ(first.Left(28).View(), L"060A2B340101010501010D431300");
    EXPECT_EQ(first.Right(4).View(), L"2008");
    EXPECT_NE(first.View(), second.View());
}

TEST(Identifier, GuidComesFromTheLast32Digits) {
    constexpr std::pair<const wchar_t*, const wchar_t*> kRows[] = {
        {L"", L"00000000-0000-0000-0000-000000000000"},
        {L"123456789abcdef0123456789ABCDEF", L"01234567-89ab-cdef-0123-456789abcdef"},
        {L"F0123456789ABCDEF1032547698BADCFE", L"01234567-89ab-cdef-1032-547698badcfe"},
        {L"no digits, but 32 elements after 0123456789ABCDEF1032547698BADCFE",
         L"01234567-89ab-cdef-1032-547698badcfe"},
        {L"0123456789ABCDEF1032547698BADCFG", L"00000000-0000-0000-0000-000000000000"},
    };
    for (const auto& [identifier, guid] : kRows) {
        EXPECT_EQ(platform::GuidText(GuidFromIdentifier(identifier)).View(), guid);
    }
}

TEST(Identifier, OfAGuidTextGivesTheGuidBackAndOfNoneNothing) {
    constexpr const wchar_t* kText = L"01234567-89AB-cdef-1032-547698badcfe";
    constexpr const wchar_t* kOwn =
        L"060A2B340101010501010D43130000000123456789ABCDEF1032547698BADCFE";
    const CString digits = L"0123456789abcdef1032547698badcfe";
    const CString label = L"ffffffffffffffffffffffffffffffff";
    CString identifier;
    EXPECT_TRUE(IdentifierForGuidText(kText, label + digits, identifier));
    EXPECT_EQ(identifier, CString(label + digits).MakeUpper());
    for (const CString& note : {CString(), CString(L"a remark"), digits, L"0" + label + digits,
                                L"g" + label.Mid(1) + digits, digits + label}) {
        EXPECT_TRUE(IdentifierForGuidText(kText, note, identifier)) << note;
        EXPECT_EQ(identifier, kOwn) << note;
    }
    EXPECT_EQ(GuidFromIdentifier(kOwn), kGuid);
    for (const wchar_t* text :
         {L"", digits.GetString(), L"{01234567-89ab-cdef-1032-547698badcfe}"}) {
        EXPECT_FALSE(IdentifierForGuidText(text, L"", identifier)) << CString(text);
        EXPECT_EQ(identifier, kOwn) << "untouched";
    }
}

} // namespace
} // namespace nqp2::media
