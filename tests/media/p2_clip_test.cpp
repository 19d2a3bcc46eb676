// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/P2Clip.h"

#include <gtest/gtest.h>

namespace {

using Clip = _tag_P2Clip;

struct ResetNumber {
    std::int32_t Clip::*field;
    std::int32_t value;
};

constexpr ResetNumber kNumbers[] = {
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

/// Every field away from its reset value.
Clip FilledClip() {
    Clip clip;
    clip.ShootStartTime = COleDateTime(38384.5);
    clip.GlobalShotGuid.Data1 = 9;
    for (const ResetNumber& number : kNumbers) {
        clip.*number.field = 7;
    }
    for (const auto field : kWideNumbers) {
        clip.*field = 7;
    }
    for (const auto field : kIdentities) {
        (clip.*field).Data4[7] = 7;
    }
    for (const auto field : kTexts) {
        clip.*field = L"old";
    }
    for (const auto field : kKeptTexts) {
        clip.*field = L"kept";
    }
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
    for (const ResetNumber& number : kNumbers) {
        EXPECT_EQ(clip.*number.field, number.value) << "number " << &number - kNumbers;
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

TEST(P2Clip, IsFreshWhenConstructed) {
    const Clip clip;
    ExpectResetFields(clip);
    EXPECT_EQ(clip.ShootStartTime.GetDays(), 0.0);
    EXPECT_EQ(clip.ShootStartTime.GetStatus(), COleDateTime::valid);
    EXPECT_TRUE(clip.GlobalShotGuid == GUID());
}

TEST(P2Clip, ResetLeavesTheCarriedFieldsAlone) {
    Clip clip = FilledClip();
    clip.Reset();
    ExpectResetFields(clip);
    EXPECT_EQ(clip.ShootStartTime.GetDays(), 38384.5);
    EXPECT_EQ(clip.GlobalShotGuid.Data1, 9U);
    for (const auto& field : kKeptTexts) {
        EXPECT_TRUE(clip.*field == L"kept") << "kept text " << &field - kKeptTexts;
    }
}

TEST(P2Clip, CopyHasItsOwnMemos) {
    const Clip original = FilledClip();
    Clip copy = original;
    copy.Memos[0].Text = L"changed";
    copy.Memos.Add(_tag_P2Memo());
    EXPECT_EQ(original.Memos.GetSize(), 1);
    EXPECT_TRUE(original.Memos[0].Text.IsEmpty());
}

TEST(P2Memo, DescribesAWaveRecordingByDefault) {
    const _tag_P2Memo memo;
    EXPECT_TRUE(memo.VoiceFormat == L"WAV");
    EXPECT_EQ(memo.VoiceSamplingRate, 1200);
    EXPECT_EQ(memo.VoiceBitsPerSample, 16);
    EXPECT_EQ(memo.VoiceChannelFlag, 1);
}

} // namespace
