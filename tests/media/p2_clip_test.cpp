// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/P2Clip.h"

#include "media/identifier.h"
#include "tests/support/print_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

namespace nqp2::media {
namespace {

/// Calls `visit` with a value and the fields that a reset gives it.
void VisitFields(_tag_P2Clip& clip, const auto& visit) {
    visit(0, clip.ActivePixel, clip.ActiveLine, clip.BitDepth, clip.AvcIntraClass50,
          clip.Reserved276, clip.Duration, clip.UnusedOffset, clip.Reserved288,
          clip.AudioStartByteOffset, clip.AudioDataSize, clip.VideoStartByteOffset,
          clip.VideoDataSize, clip.EssenceMask, clip.OffsetInShot, clip.StartTimecode,
          clip.SourceKind, clip.Proxy.ProxyAudioMask);
    visit(1, clip.DropFrame);
    visit(-1, clip.ClipIdDigit, clip.Proxy.ProxyResolution);
    visit(GUID(), clip.GlobalClipGuid, clip.TopClipGuid, clip.NextClipGuid, clip.PreviousClipGuid);
    visit(CString(), clip.GlobalClipID, clip.CodecName, clip.ExtraPath, clip.IconPath,
          clip.VideoPath, clip.AudioPath[0], clip.AudioPath[7], clip.XmlPath, clip.ProxyPath,
          clip.ProxyVideoCodecName, clip.Proxy.ProxyExt, clip.CodecClass, clip.FrameRate,
          clip.StartDate, clip.EndDate, clip.ClipName, clip.AspectRatio, clip.UserClipName);
}

/// The same with the fields that a reset leaves alone.
void VisitCarriedFields(_tag_P2Clip& clip, const auto& visit) {
    visit(GUID(), clip.GlobalShotGuid);
    visit(CString(), clip.TopClipName, clip.PreviousClipName, clip.NextClipName, clip.TopSerialNo,
          clip.PreviousSerialNo, clip.NextSerialNo, clip.AudioBitsPerSample);
}

template <class Value>
Value Other() {
    if constexpr (std::is_same_v<Value, GUID>) {
        return {9, 0, 0, {}};
    } else if constexpr (std::is_same_v<Value, CString>) {
        return L"other";
    } else {
        return static_cast<Value>(7);
    }
}

TEST(P2Clip, ResetMakesItFreshButLeavesTheCarriedFieldsAlone) {
    std::vector<bool> right; // one for each field, in their order above
    const auto fill = [](const auto&, auto&... fields) {
        ((fields = Other<std::remove_reference_t<decltype(fields)>>()), ...);
    };
    const auto isFresh = [&](const auto& value, const auto&... fields) {
        (right.push_back(fields == static_cast<std::remove_cvref_t<decltype(fields)>>(value)), ...);
    };
    const auto isOther = [&](const auto&, const auto&... fields) {
        (right.push_back(fields == Other<std::remove_cvref_t<decltype(fields)>>()), ...);
    };
    _tag_P2Clip clip;
    VisitFields(clip, isFresh);
    VisitFields(clip, fill);
    VisitCarriedFields(clip, fill);
    clip.Memos.Add(_tag_P2Memo());
    clip.ShootStartTime = COleDateTime(38384.5);
    clip.Reset();
    VisitFields(clip, isFresh);
    VisitCarriedFields(clip, isOther);
    EXPECT_THAT(right, testing::Each(true));
    EXPECT_TRUE(clip.Memos.IsEmpty());
    EXPECT_EQ(clip.ShootStartTime.GetDays(), 38384.5);
}

constexpr GUID kGuid{0x01234567, 0x89ab, 0xcdef, {0x10, 0x32, 0x54, 0x76, 0x98, 0xba, 0xdc, 0xfe}};

TEST(Identifier, CarriesTheGuidOrAFreshOneBetweenLabelAndClosingDigits) {
    const CString identifier = IdentifierFromGuid(kGuid);
    EXPECT_EQ(identifier, L"060A2B340101010501010D431300"
                          L"0123456789ABCDEF1032547698BADCFE2008");
    const CString first = IdentifierFromGuid(GUID());
    EXPECT_EQ(first.Left(28) + first.Right(4), identifier.Left(28) + identifier.Right(4));
    EXPECT_NE(first, IdentifierFromGuid(GUID()));
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
    for (const CString& note :
         {CString(), digits, L"0" + label + digits, L"g" + label.Mid(1) + digits, digits + label}) {
        EXPECT_TRUE(IdentifierForGuidText(kText, note, identifier)) << note;
        EXPECT_EQ(identifier, kOwn) << note;
    }
    EXPECT_FALSE(IdentifierForGuidText(digits, L"", identifier));
    EXPECT_EQ(identifier, kOwn) << "untouched";
    for (const CString& same : {CString(kOwn), L"no digits, but elements before " + digits}) {
        EXPECT_EQ(GuidFromIdentifier(same), kGuid) << same;
    }
    EXPECT_EQ(GuidFromIdentifier(digits.Left(31) + L'G'), GUID());
    EXPECT_NE(GuidFromIdentifier(digits.Left(31)), GUID()) << "zeros are added";
}

} // namespace
} // namespace nqp2::media
