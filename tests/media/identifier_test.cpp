// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/identifier.h"

#include "platform/guid_text.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

namespace nqp2::media {
namespace {

constexpr GUID kGuid{0x01234567, 0x89ab, 0xcdef, {0x10, 0x32, 0x54, 0x76, 0x98, 0xba, 0xdc, 0xfe}};

TEST(Identifier, CarriesTheGuidBetweenLabelAndClosingDigits) {
    EXPECT_EQ(IdentifierFromGuid(kGuid).View(), L"060A2B340101010501010D431300"
                                                L"0123456789ABCDEF1032547698BADCFE"
                                                L"2008");
}

TEST(Identifier, DoesNotGiveItsGuidBack) {
    const GUID back = GuidFromIdentifier(IdentifierFromGuid(kGuid));
    EXPECT_EQ(platform::GuidText(back).View(), L"456789ab-cdef-1032-5476-98badcfe2008");
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
    constexpr struct {
        const wchar_t* identifier;
        const wchar_t* guid;
    } kRows[] = {
        {L"", L"00000000-0000-0000-0000-000000000000"},
        {L"1", L"00000000-0000-0000-0000-000000000001"},
        {L"123456789abcdef0123456789ABCDEF", L"01234567-89ab-cdef-0123-456789abcdef"},
        {L"0123456789ABCDEF1032547698badcfe", L"01234567-89ab-cdef-1032-547698badcfe"},
        {L"F0123456789ABCDEF1032547698BADCFE", L"01234567-89ab-cdef-1032-547698badcfe"},
        {L"060a2b340101010501010f2013000000798ae7c6a09e4b6fa5a11f6e2d08e5c0",
         L"798ae7c6-a09e-4b6f-a5a1-1f6e2d08e5c0"},
        {L"no digits, but 32 elements after 0123456789ABCDEF1032547698BADCFE",
         L"01234567-89ab-cdef-1032-547698badcfe"},
        {L"0123456789ABCDEF1032547698BADCFG", L"00000000-0000-0000-0000-000000000000"},
        {L" ", L"00000000-0000-0000-0000-000000000000"},
        {L"01234567-89ab-cdef-1032-547698badcfe", L"00000000-0000-0000-0000-000000000000"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(platform::GuidText(GuidFromIdentifier(row.identifier)).View(), row.guid)
            << "row " << &row - kRows;
    }
}

TEST(Identifier, OfAGuidTextGivesTheGuidBack) {
    constexpr const wchar_t* kText = L"01234567-89AB-cdef-1032-547698badcfe";
    constexpr const wchar_t* kOwn =
        L"060A2B340101010501010D43130000000123456789ABCDEF1032547698BADCFE";
    const CString digits = L"0123456789abcdef1032547698badcfe";
    const std::pair<CString, CString> rows[] = {
        {L"", kOwn},
        {L"a remark", kOwn},
        {digits, kOwn},
        {L"ffffffffffffffffffffffffffffffff" + digits,
         L"FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF0123456789ABCDEF1032547698BADCFE"},
        {L"0ffffffffffffffffffffffffffffffff" + digits, kOwn},
        {L"gfffffffffffffffffffffffffffffff" + digits, kOwn},
        {digits + L"ffffffffffffffffffffffffffffffff", kOwn},
    };
    for (const auto& [note, expected] : rows) {
        CString identifier;
        EXPECT_TRUE(IdentifierForGuidText(kText, note, identifier)) << note;
        EXPECT_EQ(identifier, expected) << note;
        EXPECT_EQ(GuidFromIdentifier(identifier), kGuid) << note;
    }
}

TEST(Identifier, OfATextThatIsNoGuidIsNone) {
    for (const wchar_t* text :
         {L"", L"0123456789abcdef1032547698badcfe", L"g1234567-89ab-cdef-1032-547698badcfe",
          L"{01234567-89ab-cdef-1032-547698badcfe}"}) {
        CString identifier = L"untouched";
        EXPECT_FALSE(IdentifierForGuidText(text, L"", identifier)) << CString(text);
        EXPECT_EQ(identifier, L"untouched");
    }
}

} // namespace
} // namespace nqp2::media
