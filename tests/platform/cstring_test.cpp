// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/CString.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

CString Joined(const std::vector<CString>& texts) {
    CString joined;
    for (const CString& text : texts) {
        joined += L"|" + text;
    }
    return joined.Mid(1);
}

TEST(CStringTest, CopySharesUntilOneSideChanges) {
    const CString original(L"P2 card");
    using Change = void (*)(CString&);
    const Change changes[] = {[](CString& text) { text += L'!'; },
                              [](CString& text) { text.SetAt(0, L'Q'); },
                              [](CString& text) { text.MakeUpper(); },
                              [](CString& text) { text.Remove(L'a'); },
                              [](CString& text) { text.Replace(L"P2", L"SD"); },
                              [](CString& text) { text.GetBuffer(3)[0] = L'Q'; },
                              [](CString& text) { text.Empty(); }};
    const auto changeAll = [&] {
        for (int turn = 0; turn < 700; ++turn) {
            CString copy = original;
            const CString second = copy;
            ASSERT_EQ(copy.GetString(), original.GetString());
            changes[turn % 7](copy);
            ASSERT_NE(copy, original);
            ASSERT_STREQ(second.GetString(), L"P2 card");
        }
    };
    const std::jthread others[] = {std::jthread(changeAll), std::jthread(changeAll)};
    changeAll();
}

TEST(CStringTest, TakesPartsOfItselfAndIsUsableWhenMovedFrom) {
    CString text(L"abcdef");
    CString& same = text;
    text = same;
    text = std::move(same);
    text += text.GetString() + 3;
    EXPECT_EQ(text, L"abcdefdef");
    text.GetBuffer(100); // room for appending in place
    text += text;
    text = text.GetString() + 6;
    EXPECT_EQ(text, L"defabcdefdef");
    text = text.Mid(1, 4);
    text.Replace(text, text.GetString() + 2);
    text.Format(L"%s%s", text, text.GetString());
    EXPECT_EQ(text, L"abab");
    const CString target = std::move(text);
    text += L"new"; // NOLINT(bugprone-use-after-move): what is tested
    EXPECT_EQ(text, L"new");
}

TEST(CStringTest, GivesPartsAndChangedTexts) {
    EXPECT_EQ(
        Joined({CString(nullptr), CString(nullptr, 5), CString(L"abc", -1), CString(L'x', -3)}),
        L"|||");
    CString text(L"clip");
    for (const int outside : {4, 5, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(text[outside], L'\0');
        text.SetAt(outside, L'x');
    }
    EXPECT_EQ(Joined({text.Left(2), text.Left(9), text.Left(INT_MIN), text.Right(2), text.Right(9),
                      text.Right(-1), text.Mid(1), text.Mid(9), text.Mid(-1), text.Mid(1, INT_MAX),
                      text.Mid(1, -1), text.Mid(-5, 2), text.Mid(INT_MAX, INT_MAX)}),
              L"cl|clip||ip|clip||lip||clip|lip||cl|");
    const CString spaced(L" \t\r\n\v\f a b\u00A0 \n"); // white space is ASCII's only
    EXPECT_EQ(Joined({CString(spaced).Trim(), CString(spaced).TrimLeft(), CString(L" \t ").Trim(),
                      CString(L"E:\\a\\/\\").TrimRight(L"/\\"), CString(L"a ").TrimRight(nullptr)}),
              L"a b\u00A0|a b\u00A0 \n||E:\\a|a ");
    EXPECT_EQ(CString(L"clip \u00E4\u03B1").MakeUpper(), L"CLIP \u00C4\u0391");
    EXPECT_EQ(CString(L"CLIP \u00C4\u0391").MakeLower(), L"clip \u00E4\u03B1");
    EXPECT_EQ(CString(L"a\0b", 3) + CString(L"\0", 1), CString(L"a\0b\0", 4));
    const CString found(L"aXbXc");
    EXPECT_TRUE(found.Find(L"X", 2) == 3 && found.Find(L"X", -7) == 1 && found.Find(L"", 5) == 5);
    EXPECT_EQ(found.Find(L'X', INT_MAX) + found.Find(L"", 6) + found.ReverseFind(L'x'), -3);
    EXPECT_TRUE(CString(L"\u00E4b").CompareNoCase(L"\u00C4BC") < 0 &&
                CString(L"a_").Compare(L"AB") > 0);
    std::fill_n(text.GetBuffer(10), 10, L'z');
    text.ReleaseBuffer(INT_MAX);
    EXPECT_EQ(text.GetLength(), 10) << "never longer than the buffer";
}

TEST(CStringTest, ReplacesFromLeftToRightAndRefusesTextsThatNoIntCanCount) {
    using Text = const wchar_t*;
    const std::tuple<Text, Text, Text, int, Text> rows[] = {
        {L"a/b/c", L"/", L"\\", 2, L"a\\b\\c"}, {L"aaa", L"aa", L"b", 1, L"ba"},
        {L"aaa", L"a", L"aa", 3, L"aaaaaa"},    {L"xaxax", L"a", L"", 2, L"xxx"},
        {L"abc", nullptr, L"x", 0, L"abc"},     {L"abc", L"b", nullptr, 1, L"ac"}};
    for (const auto& [before, from, to, count, after] : rows) {
        CString text(before);
        EXPECT_EQ(text.Replace(from, to), count) << after;
        EXPECT_EQ(text, after);
    }
    CString text(L'a', 1 << 16);
    EXPECT_THROW(text.Replace(L"a", CString(L'b', 1 << 16)), std::length_error);
    EXPECT_EQ(text, CString(L'a', 1 << 16));
}

template <class... Arguments>
CString Formatted(const wchar_t* pattern, const Arguments&... arguments) {
    CString text;
    text.Format(pattern, arguments...);
    return text;
}

TEST(CStringFormatTest, WritesEachPattern) {
    EXPECT_EQ(Formatted(L"%I64d|%I32u|%ld|%hd|%zu|%Id", INT64_MIN, 1U, INT64_MAX, short{-3},
                        std::size_t{7}, 9),
              L"-9223372036854775808|1|9223372036854775807|-3|7|9");
    EXPECT_EQ(Formatted(L"%x %X %u %hhx", std::int8_t{-1}, std::int16_t{-2}, -1, std::int64_t{-1}),
              L"ff FFFE 4294967295 ffffffffffffffff")
        << "unsigned conversions use the argument's own width";
    EXPECT_EQ(Joined({Formatted(L"%s %s %s", 42, UINT64_MAX, 0.1),
                      Formatted(L"%s%d%c", L'c', L"text", L"text"), Formatted(L"%d %f", 1.5, 3),
                      Formatted(L"[%6x]", L"ab"), Formatted(L"%c", -1)}),
              L"42 18446744073709551615 0.1|ctexttext|1.5 3|[    ab]|\uFFFD")
        << "what does not fit its conversion is written in its natural form";
    EXPECT_EQ(Joined({Formatted(L"a%d%s%fb"), Formatted(L"%*d", 5), Formatted(L"%n%p%", 1),
                      Formatted(L"%5.2q%d%%", 1), Formatted(L"%hI64d"), Formatted(nullptr, 1)}),
              L"ab||%n%p%|%5.2q1%|%hI64d|")
        << "nothing reads beyond the arguments, and what is unknown is kept and takes none";
    EXPECT_EQ(Formatted(L"[%5s][%-5s][%5.1s][%.s][%05s]", CString(L"abc"), L"abc", L"abc", L"abc",
                        L"abc"),
              L"[  abc][abc  ][    a][][  abc]");
    EXPECT_EQ(Formatted(L"[%*s][%*s][%.*s][%.*s][%3c][%-3c]", 4, L"a", -3, L"c", 2, L"abc", -1,
                        L"abc", L'x', L'\u00E4'),
              L"[   a][c  ][ab][abc][  x][\u00E4  ]");
    for (const CString& bounded :
         {Formatted(L"%99999999999999999999d", 1), Formatted(L"%.99999999999999999999d", 1),
          Formatted(L"%*s", INT_MAX, L"x"), Formatted(L"%*s", INT64_MIN, L"x"),
          Formatted(L"%.5000f", std::numeric_limits<double>::max()).Mid(309 + 1)}) {
        EXPECT_EQ(bounded.GetLength(), 4096);
    }
}

template <class Value>
void ExpectAsTheCLibrary(const std::string& pattern, Value value) {
    char text[512];
    const int length = std::snprintf(text, sizeof(text), pattern.c_str(), value);
    EXPECT_EQ(Formatted(std::wstring(pattern.begin(), pattern.end()).c_str(), value),
              CString(std::wstring(text, text + length)))
        << pattern << " of " << value;
}

/// With every mix of flags, widths and precisions.
template <class Value>
void ExpectAsTheCLibrary(char letter, std::initializer_list<Value> values) {
    for (const char* flags : {"", "-", "+", " ", "0", "#", "-+", "+0", "-0", "#0", "+ "}) {
        for (const char* size : {"", "1", "12", ".0", ".3", "12.5", "3.7"}) {
            for (const Value value : values) {
                ExpectAsTheCLibrary(std::string("%") + flags + size + letter, value);
            }
        }
    }
}

TEST(CStringFormatTest, NumbersAgreeWithTheCLibraryAndWithNoLocale) {
    using Limits = std::numeric_limits<double>;
    for (const char letter : {'d', 'i', 'x', 'X'}) {
        ExpectAsTheCLibrary(letter, {0, 1, -1, 255, 123456, INT_MAX, INT_MIN});
    }
    for (const char letter : {'f', 'F', 'e', 'E', 'g', 'G'}) {
        ExpectAsTheCLibrary(letter, {0.0, -0.0, 1.0, -1.5, 0.1, 1e-7, 123456789.0, 1e100,
                                     Limits::infinity(), Limits::quiet_NaN()});
    }
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8"); // where installed: a decimal comma
    const CString text = Formatted(L"%.2f", 1.5);
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(text, L"1.50");
}

} // namespace
