// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/P2Clip.h"

#include "media/identifier.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <tuple>

namespace nqp2::media {
namespace {

constexpr GUID kGuid{0x01234567, 0x89ab, 0xcdef, {0x10, 0x32, 0x54, 0x76, 0x98, 0xba, 0xdc, 0xfe}};

TEST(P2Clip, ResetMakesItFreshButLeavesTheCarriedFieldsAlone) {
    const auto shown = [](const _tag_P2Clip& clip) {
        return std::tuple(clip.Duration, clip.DropFrame, clip.ClipIdDigit,
                          clip.Proxy.ProxyResolution, clip.GlobalClipGuid, clip.PreviousClipGuid,
                          clip.GlobalClipID, clip.AudioPath[7], clip.Proxy.ProxyExt,
                          clip.UserClipName);
    };
    _tag_P2Clip clip;
    clip.Duration = clip.DropFrame = clip.ClipIdDigit = clip.Proxy.ProxyResolution = 7;
    clip.GlobalClipGuid = clip.PreviousClipGuid = clip.GlobalShotGuid = kGuid;
    clip.GlobalClipID = clip.AudioPath[7] = clip.Proxy.ProxyExt = clip.UserClipName = L"other";
    clip.TopClipName = clip.NextSerialNo = clip.AudioBitsPerSample = L"carried";
    clip.Memos.Add(_tag_P2Memo());
    clip.ShootStartTime = COleDateTime(38384.5);
    clip.Reset();
    EXPECT_EQ(shown(clip), shown(_tag_P2Clip()));
    EXPECT_TRUE(clip.Memos.IsEmpty() && clip.DropFrame == 1 && clip.ClipIdDigit == -1);
    EXPECT_EQ(clip.TopClipName + clip.NextSerialNo + clip.AudioBitsPerSample,
              L"carriedcarriedcarried");
    EXPECT_TRUE(clip.GlobalShotGuid == kGuid && clip.ShootStartTime.GetDays() == 38384.5);
}

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
    EXPECT_EQ(GuidFromIdentifier(kOwn), kGuid);
    EXPECT_EQ(GuidFromIdentifier(digits.Left(31) + L'G'), GUID());
}

} // namespace
} // namespace nqp2::media
