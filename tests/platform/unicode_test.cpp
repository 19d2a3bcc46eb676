// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/unicode.h"

#include "platform/case_fold.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <clocale>

namespace nqp2::platform {
namespace {

std::wstring OneElement(std::uint32_t code) {
    return std::wstring(1, static_cast<wchar_t>(code));
}

TEST(UnicodeTest, EveryElementComesBackFromUtf8AndUtf16) {
    // In ascending blocks: no high surrogate comes to stand before a low one.
    for (std::uint32_t block = 0; block <= 0x10FF; ++block) {
        std::wstring text;
        for (std::uint32_t code = 0; code < 0x100; ++code) {
            text += OneElement(block * 0x100 + code);
        }
        ASSERT_EQ(TextFromUtf8(Utf8FromText(text)).View(), text) << block;
        ASSERT_EQ(TextFromUtf16(Utf16FromText(text)).View(), text) << block;
    }
}

TEST(UnicodeTest, FindsBytesBeyondAsciiAtEveryPlace) {
    for (std::size_t before = 0; before < 20; ++before) {
        for (std::size_t after = 0; after < 20; ++after) {
            const std::string bytes =
                std::string(before, 'a') + "\xC3\xA4" + std::string(after, 'z');
            const std::wstring text =
                std::wstring(before, L'a') + L"\u00E4" + std::wstring(after, L'z');
            ASSERT_EQ(TextFromUtf8(bytes).View(), text);
            ASSERT_EQ(Utf8FromText(text), bytes);
        }
    }
}

TEST(UnicodeTest, IllFormedBytesOfContentBecomeReplacementsOneForOne) {
    const std::pair<const char*, const wchar_t*> rows[] = {
        {"a\x80z", L"a\uFFFDz"},
        {"\xE2\x82z", L"\uFFFD\uFFFDz"}, // cut; what follows is kept
        {"\xF0\x9F\x98", L"\uFFFD\uFFFD\uFFFD"},
        {"\xC1\xBF", L"\uFFFD\uFFFD"}, // overlong
        {"\xE0\x80\xAF", L"\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x80\x80\xAF", L"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"}, // beyond U+10FFFF
        {"\xFE\xFF", L"\uFFFD\uFFFD"},
        {"\xC3\xC3\xA4", L"\uFFFD\u00E4"} // a new sequence starts at once
    };
    for (const auto& [bytes, expected] : rows) {
        EXPECT_EQ(TextFromUtf8(bytes), expected);
    }
}

TEST(UnicodeTest, SurrogatesOfContent) {
    const std::wstring high = OneElement(0xD83D);
    const std::wstring low = OneElement(0xDE00);
    EXPECT_EQ(Utf8FromText(OneElement(0xDFFF) + L"z"), "\xED\xBF\xBFz");
    EXPECT_EQ(Utf8FromText(high + low), "\xF0\x9F\x98\x80") << "a pair is one code point";
    EXPECT_EQ(Utf8FromText(high + high + low), "\xED\xA0\xBD\xF0\x9F\x98\x80");
    EXPECT_EQ(Utf8FromText(low + high), "\xED\xB8\x80\xED\xA0\xBD") << "no pair";
    const std::u16string units{0xDC00, 0xD800, 'a', 0xD83D, 0xD83D, 0xDE00, 0xDBFF};
    EXPECT_EQ(TextFromUtf16(units)[4], L'\U0001F600');
    EXPECT_EQ(Utf16FromText(TextFromUtf16(units).View()), units) << "passed unchanged";
}

TEST(UnicodeTest, ElementsThatAreNoCodePointBecomeReplacements) {
    for (const std::uint32_t code : {0x110000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(Utf8FromText(OneElement(code)), "\xEF\xBF\xBD") << code;
        EXPECT_EQ(NameBytesFromText(OneElement(code)), "\xEF\xBF\xBD") << code;
        EXPECT_EQ(Utf16FromText(OneElement(code)), u"\uFFFD") << code;
    }
}

void ExpectSameName(const std::string& bytes) {
    const CString text = TextFromNameBytes(bytes);
    ASSERT_EQ(NameBytesFromText(text.View()), bytes);
    const CString overTheWire = TextFromUtf16(Utf16FromText(text.View()));
    ASSERT_EQ(NameBytesFromText(overTheWire.View()), bytes);
}

TEST(UnicodeTest, EveryNameComesBackAsTheSameBytes) {
    // Of each kind of byte the borders, so that all short sequences can be tried.
    const std::string kinds("\x00\x7F\x80\x8F\x90\x9F\xA0\xBF\xC1\xC2\xDF\xE0\xE1\xED\xEE\xEF"
                            "\xF0\xF1\xF4\xF5\xFF",
                            21);
    for (const char a : kinds) {
        for (const char b : kinds) {
            ExpectSameName({a, b});
            for (const char c : kinds) {
                ExpectSameName({a, b, c});
                ExpectSameName({a, b, c, '\x80'});
            }
        }
    }
}

TEST(UnicodeTest, BytesOfNamesThatSpellSurrogatesStayBytes) {
    const std::string name = "\xED\xB2\x80"; // the generalised form of U+DC80
    const CString text = TextFromNameBytes(name);
    EXPECT_EQ(text.View(), OneElement(0xDCED) + OneElement(0xDCB2) + OneElement(0xDC80));
    EXPECT_EQ(NameBytesFromText(text.View()), name);
    EXPECT_EQ(NameBytesFromText(OneElement(0xDCE4)), "\xE4");
    EXPECT_EQ(NameBytesFromText(OneElement(0xDC7F)), "\xED\xB1\xBF") << "stands for no byte";
}

TEST(CaseFoldTest, FoldsLettersInEveryLocale) {
    ASSERT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C") << "the process's own locale";
    const std::pair<wchar_t, wchar_t> cases[] = {{L'a', L'A'},           {L'z', L'Z'},
                                                 {L'\u00E4', L'\u00C4'}, {L'\u03C9', L'\u03A9'},
                                                 {L'\u0436', L'\u0416'}, {L'\uFF41', L'\uFF21'}};
    for (const auto& [lower, upper] : cases) {
        EXPECT_EQ(ToUpper(lower), upper);
        EXPECT_EQ(ToLower(upper), lower);
        EXPECT_EQ(ToUpper(upper), upper);
        EXPECT_EQ(ToLower(lower), lower);
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

TEST(CaseFoldTest, FoldsNamesAndKeepsForeignBytes) {
    EXPECT_EQ(FoldCase(L"stra\u00DFe \u00E4"), L"STRA\u00DFE \u00C4") << "one for one";
    EXPECT_EQ(FoldNameCase("\xC3\xA4.mxf"), "\xC3\x84.MXF");
    EXPECT_EQ(FoldNameCase("a\xE4z"), "A\xE4Z");
    EXPECT_EQ(FoldNameCase("\xED\xB2\x80 x"), "\xED\xB2\x80 X");
    EXPECT_TRUE(EqualNoCase(L"Clip\u00C4", L"cLIP\u00E4"));
    EXPECT_FALSE(EqualNoCase(L"clip", L"clip1"));
    EXPECT_FALSE(EqualNoCase(L"[", L"{")) << "32 apart, but no letters";
}

} // namespace
} // namespace nqp2::platform
