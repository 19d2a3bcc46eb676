// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/guid_text.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

namespace nqp2::platform {
namespace {

constexpr const wchar_t* kText = L"00112233-4455-6677-8899-aabbccddeeff";
const GUID kGuid{0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};

TEST(GuidTextTest, WritesLowerCaseAndReadsAnyCase) {
    EXPECT_EQ(GuidText(kGuid), kText);
    EXPECT_EQ(GuidText(GUID()), L"00000000-0000-0000-0000-000000000000");
    GUID guid;
    EXPECT_TRUE(GuidFromText(kText, guid));
    EXPECT_EQ(guid, kGuid);
    guid = GUID();
    EXPECT_TRUE(GuidFromText(L"00112233-4455-6677-8899-AABBCCDDEEFF", guid));
    EXPECT_EQ(guid, kGuid);
}

TEST(GuidTextTest, AnyOtherTextGivesZero) {
    const wchar_t* const others[] = {
        L"",
        L"00112233-4455-6677-8899-aabbccddeef",
        L"00112233-4455-6677-8899-aabbccddeeff0",
        L"00112233-4455-6677-8899-aabbccddeefg",
        L"00112233445566778899aabbccddeeff",
        L"{0112233-4455-6677-8899-aabbccddeef}",
        L"001122334-455-6677-8899-aabbccddeeff",
        L"00112233-4455-6677-8899-aabbccddee-f",
        L"+0112233-4455-6677-8899-aabbccddeeff",
        L" 0112233-4455-6677-8899-aabbccddeeff",
        L"0x112233-4455-6677-8899-aabbccddeeff",
        L"\uFF10\uFF10112233-4455-6677-8899-aabbccddeeff",
    };
    for (const wchar_t* const other : others) {
        GUID guid = kGuid;
        EXPECT_FALSE(GuidFromText(other, guid)) << CString(other);
        EXPECT_EQ(guid, GUID()) << CString(other);
    }
}

TEST(GuidTextTest, NewIdentifiersAreRandomVersion4) {
    const GUID first = NewGuid();
    const GUID second = NewGuid();
    EXPECT_NE(first, second);
    for (int i = 0; i < 100; ++i) {
        const CString text = GuidText(NewGuid());
        EXPECT_EQ(text[14], L'4') << text;
        EXPECT_GE(CString(L"89ab").Find(text[19]), 0) << text;
        GUID back;
        EXPECT_TRUE(GuidFromText(text.View(), back)) << text;
    }
}

} // namespace
} // namespace nqp2::platform
