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
        std::wstring text(block % 20, L'a'); // bytes beyond ASCII are found at every place
        for (std::uint32_t code = 0; code < 0x100; ++code) {
            text += OneElement(block * 0x100 + code);
        }
        ASSERT_EQ(TextFromUtf8(Utf8FromText(text)).View(), text) << block;
        ASSERT_EQ(TextFromUtf16(Utf16FromText(text)).View(), text) << block;
    }
}

TEST(UnicodeTest, IllFormedBytesOfContentBecomeReplacementsOneForOne) {
    // Cut, what follows is kept; overlong; beyond U+10FFFF; a new sequence starts at once.
    const std::pair<const char*, const wchar_t*> rows[] = {
        {"abcdefg\x80z", L"abcdefg\uFFFDz"},
        {"\xE2\x82z", L"\uFFFD\uFFFDz"},
        {"\xF0\x9F\x98", L"\uFFFD\uFFFD\uFFFD"},
        {"\xC1\xBF", L"\uFFFD\uFFFD"},
        {"\xE0\x80\xAF", L"\uFFFD\uFFFD\uFFFD"},
        {"\xC3\xC3\xA4", L"\uFFFD\u00E4"},
        {"\xF0\x80\x80\xAF", L"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"}};
    for (const auto& [bytes, expected] : rows) {
        EXPECT_EQ(TextFromUtf8(bytes), expected);
    }
}

TEST(UnicodeTest, SurrogatesAndElementsThatAreNoCodePoint) {
    const std::wstring high = OneElement(0xD83D);
    const std::wstring low = OneElement(0xDE00);
    EXPECT_EQ(Utf8FromText(high + high + low), "\xED\xA0\xBD\xF0\x9F\x98\x80");
    EXPECT_EQ(Utf8FromText(low + high), "\xED\xB8\x80\xED\xA0\xBD") << "no pair";
    const std::u16string units{0xDC00, 0xD800, 'a', 0xD83D, 0xD83D, 0xDE00, 0xDBFF};
    EXPECT_EQ(TextFromUtf16(units)[4], L'\U0001F600');
    EXPECT_EQ(Utf16FromText(TextFromUtf16(units).View()), units) << "passed unchanged";
    for (const std::uint32_t code : {0x110000U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(Utf8FromText(OneElement(code)), "\xEF\xBF\xBD") << code;
        EXPECT_EQ(NameBytesFromText(OneElement(code)), "\xEF\xBF\xBD") << code;
        EXPECT_EQ(Utf16FromText(OneElement(code)), u"\uFFFD") << code;
    }
}

TEST(UnicodeTest, EveryNameComesBackAsTheSameBytes) {
    for (int code = 0; code < 0x10000; ++code) { // two bytes between others
        const std::string name = {'\xE2', static_cast<char>(code >> 8), static_cast<char>(code),
                                  '\x80'};
        const CString text = TextFromNameBytes(name);
        ASSERT_EQ(NameBytesFromText(text.View()), name);
        ASSERT_EQ(TextFromUtf16(Utf16FromText(text.View())), text) << "over the wire";
    }
    EXPECT_EQ(TextFromNameBytes("\xED\xB2\x80").View(), // the generalised form of U+DC80
              OneElement(0xDCED) + OneElement(0xDCB2) + OneElement(0xDC80));
    EXPECT_EQ(NameBytesFromText(OneElement(0xDC7F)), "\xED\xB1\xBF") << "stands for no byte";
}

TEST(CaseFoldTest, FoldsLettersInEveryLocaleAndNothingElse) {
    ASSERT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C") << "the process's own locale";
    constexpr std::wstring_view kLower = L"az\u00DF\u00E4\u03C9\u0436\uFF41@[`{0\u3042\U0010FFFF";
    constexpr std::wstring_view kUpper = L"AZ\u00DF\u00C4\u03A9\u0416\uFF21@[`{0\u3042\U0010FFFF";
    EXPECT_EQ(FoldCase(kLower), kUpper);
    EXPECT_EQ(FoldCase(kUpper), kUpper);
    EXPECT_EQ(CString(kUpper).MakeLower().View(), kLower);
    for (const std::uint32_t code : {0xD800U, 0xDC80U, 0x110000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(ToUpper(OneElement(code)[0]), OneElement(code)[0]) << code;
    }
    EXPECT_EQ(FoldNameCase("a\xE4z \xC3\xA4 \xED\xB2\x80"), "A\xE4Z \xC3\x84 \xED\xB2\x80");
    EXPECT_TRUE(EqualNoCase(L"Clip\u00C4", L"cLIP\u00E4"));
    EXPECT_FALSE(EqualNoCase(L"clip", L"clip1") || EqualNoCase(L"[", L"{"));
}

} // namespace
} // namespace nqp2::platform
