// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/case_fold.h"

#include <gtest/gtest.h>

#include <clocale>

namespace nqp2::platform {
namespace {

TEST(CaseFoldTest, FoldsLettersInEveryLocale) {
    ASSERT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C") << "the process's own locale";
    const struct {
        wchar_t lower;
        wchar_t upper;
    } cases[] = {
        {L'a', L'A'},           {L'z', L'Z'},           {L'\u00E4', L'\u00C4'},
        {L'\u03C9', L'\u03A9'}, {L'\u0436', L'\u0416'}, {L'\uFF41', L'\uFF21'},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(ToUpper(row.lower), row.upper);
        EXPECT_EQ(ToLower(row.upper), row.lower);
        EXPECT_EQ(ToUpper(row.upper), row.upper);
        EXPECT_EQ(ToLower(row.lower), row.lower);
    }
}

TEST(CaseFoldTest, LeavesEverythingElse) {
    for (const std::uint32_t code : {0x0U, 0x40U, 0x5BU, 0x60U, 0x7BU, 0x30U, 0x3042U, 0xD800U,
                                     0xDC80U, 0x10FFFFU, 0x110000U, 0xFFFFFFFFU}) {
        const auto ch = static_cast<wchar_t>(code);
        EXPECT_EQ(ToUpper(ch), ch) << code;
        EXPECT_EQ(ToLower(ch), ch) << code;
    }
}

TEST(CaseFoldTest, FoldsOneElementForOne) {
    EXPECT_EQ(FoldCase(L"stra\u00DFe \u00E4.mxf"), L"STRA\u00DFE \u00C4.MXF");
    EXPECT_EQ(FoldCase(L""), L"");
}

TEST(CaseFoldTest, FoldsNamesAndKeepsForeignBytes) {
    EXPECT_EQ(FoldNameCase("0001ab.Mxf"), "0001AB.MXF");
    EXPECT_EQ(FoldNameCase("\xC3\xA4.mxf"), "\xC3\x84.MXF");
    EXPECT_EQ(FoldNameCase("a\xE4z"), "A\xE4Z");
    EXPECT_EQ(FoldNameCase("\xED\xB2\x80 x"), "\xED\xB2\x80 X");
}

TEST(CaseFoldTest, ComparesWithoutCase) {
    EXPECT_TRUE(EqualNoCase(L"Clip\u00C4", L"cLIP\u00E4"));
    EXPECT_FALSE(EqualNoCase(L"clip", L"clip1"));
    EXPECT_FALSE(EqualNoCase(L"clip1", L"clip"));
    EXPECT_FALSE(EqualNoCase(L"[", L"{")) << "32 apart, but no letters";
    EXPECT_TRUE(EqualNoCase(L"", L""));
}

} // namespace
} // namespace nqp2::platform
