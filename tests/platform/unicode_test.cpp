// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/unicode.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <random>

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

TEST(UnicodeTest, WritesKnownForms) {
    const struct {
        std::wstring text;
        std::string utf8;
        std::u16string utf16;
    } cases[] = {
        {L"", "", u""},
        {L"P2 CONTENTS", "P2 CONTENTS", u"P2 CONTENTS"},
        {std::wstring(L"a\0b", 3), std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
        {L"\u00E4", "\xC3\xA4", u"\u00E4"},
        {L"\u20AC", "\xE2\x82\xAC", u"\u20AC"},
        {L"\U0001F600", "\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(Utf8FromText(row.text), row.utf8);
        EXPECT_EQ(NameBytesFromText(row.text), row.utf8);
        EXPECT_EQ(Utf16FromText(row.text), row.utf16);
        EXPECT_EQ(TextFromUtf8(row.utf8).View(), row.text);
        EXPECT_EQ(TextFromNameBytes(row.utf8).View(), row.text);
        EXPECT_EQ(TextFromUtf16(row.utf16).View(), row.text);
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
    const struct {
        const char* bytes;
        const wchar_t* expected;
        const char* reason;
    } cases[] = {
        {"a\x80z", L"a\uFFFDz", "lone tail"},
        {"\xC3", L"\uFFFD", "cut after the first byte"},
        {"\xE2\x82", L"\uFFFD\uFFFD", "cut after the second byte"},
        {"\xE2\x82z", L"\uFFFD\uFFFDz", "what follows is kept"},
        {"\xF0\x9F\x98", L"\uFFFD\uFFFD\uFFFD", "cut after the third byte"},
        {"\xC0\xAF", L"\uFFFD\uFFFD", "overlong, two bytes"},
        {"\xC1\xBF", L"\uFFFD\uFFFD", "overlong, two bytes"},
        {"\xE0\x80\xAF", L"\uFFFD\uFFFD\uFFFD", "overlong, three bytes"},
        {"\xF0\x80\x80\xAF", L"\uFFFD\uFFFD\uFFFD\uFFFD", "overlong, four bytes"},
        {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD", "beyond U+10FFFF"},
        {"\xF5\x80\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD", "no first byte"},
        {"\xFE\xFF", L"\uFFFD\uFFFD", "mark of another encoding"},
        {"\xC3\xC3\xA4", L"\uFFFD\u00E4", "a new sequence starts at once"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(TextFromUtf8(row.bytes), row.expected) << row.reason;
    }
}

TEST(UnicodeTest, SurrogatesOfContent) {
    EXPECT_EQ(Utf8FromText(OneElement(0xD800)), "\xED\xA0\x80");
    EXPECT_EQ(Utf8FromText(OneElement(0xDFFF) + L"z"), "\xED\xBF\xBFz");
    const std::wstring high = OneElement(0xD83D);
    const std::wstring low = OneElement(0xDE00);
    EXPECT_EQ(Utf8FromText(high + low), "\xF0\x9F\x98\x80") << "a pair is one code point";
    EXPECT_EQ(Utf8FromText(high + high + low), "\xED\xA0\xBD\xF0\x9F\x98\x80");
    EXPECT_EQ(Utf8FromText(low + high), "\xED\xB8\x80\xED\xA0\xBD") << "no pair";
}

TEST(UnicodeTest, UnpairedUnitsPassUtf16Unchanged) {
    const std::u16string units{0xDC00, 0xD800, 'a', 0xD83D, 0xD83D, 0xDE00, 0xDBFF};
    const CString text = TextFromUtf16(units);
    EXPECT_EQ(text.GetLength(), 6);
    EXPECT_EQ(text[4], L'\U0001F600');
    EXPECT_EQ(Utf16FromText(text.View()), units);
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
    const std::string kinds("\x00\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xED\xEE\xEF"
                            "\xF0\xF1\xF4\xF5\xFF",
                            22);
    for (const char a : kinds) {
        ExpectSameName({a});
        for (const char b : kinds) {
            ExpectSameName({a, b});
            for (const char c : kinds) {
                ExpectSameName({a, b, c});
            }
        }
    }
    std::mt19937 random(20260102);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(random() % 12, '\0');
        for (char& byte : bytes) {
            byte = (random() % 2) != 0 ? kinds[random() % kinds.size()]
                                       : static_cast<char>(random() % 256);
        }
        ExpectSameName(bytes);
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

} // namespace
} // namespace nqp2::platform
