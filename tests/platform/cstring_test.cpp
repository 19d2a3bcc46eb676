// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/CString.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdio>
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

TEST(CStringTest, EmptyTextsAreZeroTerminatedAndAllocateNothing) {
    const wchar_t* const null = nullptr;
    const CString empties[] = {
        CString(),         CString(null),          CString(L""),
        CString(null, 5),  CString(L"abc", 0),     CString(L"abc", -1),
        CString(L'x', -3), CString(L"abc").Mid(3), CString(std::wstring_view())};
    for (const CString& text : empties) {
        EXPECT_EQ(text.GetString(), CString().GetString());
        EXPECT_STREQ(text.GetString(), L"");
        EXPECT_TRUE(text.IsEmpty());
    }
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
    for (const Change change : changes) {
        CString copy = original;
        EXPECT_EQ(copy.GetString(), original.GetString());
        change(copy);
        EXPECT_NE(copy, original);
        EXPECT_STREQ(original.GetString(), L"P2 card");
    }
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
    EXPECT_EQ(text, L"ab");
    text = L"a%s";
    text.Format(text, text);
    text.Format(L"%s%s", text, text.GetString());
    EXPECT_EQ(text, L"aa%saa%s");
    CString target(L"old");
    target = std::move(text);
    text += L"new"; // NOLINT(bugprone-use-after-move): what is tested
    EXPECT_EQ(text, L"new");
}

TEST(CStringTest, GivesZeroForElementsOutsideTheText) {
    CString text(L"ab");
    EXPECT_EQ(text[1], L'b');
    for (const int outside : {2, 3, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(text[outside], L'\0');
        text.SetAt(outside, L'x');
    }
    EXPECT_EQ(text, L"ab");
}

TEST(CStringTest, GivesPartsAndChangedTexts) {
    const CString text(L"clip");
    const CString spaced(L" \t\r\n\v\f a b\u00A0 \n"); // white space is ASCII's only
    EXPECT_EQ(Joined({text.Left(2), text.Left(9), text.Left(INT_MIN), text.Right(2), text.Right(9),
                      text.Right(-1)}),
              L"cl|clip||ip|clip|");
    EXPECT_EQ(Joined({text.Mid(1), text.Mid(9), text.Mid(-1), text.Mid(1, INT_MAX), text.Mid(1, -1),
                      text.Mid(-5, 2), text.Mid(INT_MAX, INT_MAX)}),
              L"lip||clip|lip||cl|");
    EXPECT_EQ(Joined({CString(spaced).Trim(), CString(spaced).TrimLeft(), CString(L" \t ").Trim(),
                      CString(L"E:\\a\\/\\").TrimRight(L"/\\"), CString(L"a ").TrimRight(nullptr)}),
              L"a b\u00A0|a b\u00A0 \n||E:\\a|a ");
    EXPECT_EQ(CString(L"clip \u00E4\u03B1").MakeUpper(), L"CLIP \u00C4\u0391");
    EXPECT_EQ(CString(L"CLIP \u00C4\u0391").MakeLower(), L"clip \u00E4\u03B1");
    EXPECT_EQ(CString(L"a\0b", 3) + CString(L"\0", 1), CString(L"a\0b\0", 4))
        << "zeros end nothing";
    CString marked(L"-a--b-");
    EXPECT_EQ(marked.Remove(L'-'), 4);
    EXPECT_EQ(marked, L"ab");
}

TEST(CStringTest, ComparesAndFinds) {
    const std::tuple<const wchar_t*, const wchar_t*, int, int> rows[] = {
        {L"abc", L"ABC", 1, 0}, {L"abc", L"ABCD", 1, -1},     {L"abc", L"ab", 1, 1},
        {L"a", nullptr, 1, 1},  {L"\u00E4", L"\u00C4", 1, 0}, {L"a_", L"AB", 1, 1}};
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    for (const auto& [left, right, exact, noCase] : rows) {
        EXPECT_EQ(sign(CString(left).Compare(right)), exact) << CString(left);
        EXPECT_EQ(sign(CString(left).CompareNoCase(right)), noCase) << CString(left);
    }
    const CString text(L"aXbXc");
    const std::vector<int> found = {text.Find(L"X", 2),     text.Find(L"x"),
                                    text.Find(L"X", -7),    text.Find(L'X', INT_MAX),
                                    text.Find(L"", 5),      text.Find(L"", 6),
                                    text.ReverseFind(L'X'), CString(L"a\0b", 3).Find(L'b')};
    EXPECT_EQ(found, (std::vector<int>{3, -1, 1, -1, 5, -1, 3, 2}));
}

TEST(CStringTest, ReplacesFromLeftToRight) {
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
}

TEST(CStringTest, BufferIsCutToWhatWasWritten) {
    CString text(L"ab");
    const CString copy = text;
    wchar_t* const buffer = text.GetBuffer(10);
    EXPECT_STREQ(buffer, L"ab");
    std::fill_n(buffer, 10, L'z');
    text.ReleaseBuffer(4);
    EXPECT_EQ(text, L"zzzz");
    EXPECT_EQ(copy, L"ab");
    text.ReleaseBuffer(INT_MAX);
    EXPECT_EQ(text.GetLength(), 10) << "never longer than the buffer";
}

TEST(CStringTest, RefusesTextsThatNoIntCanCount) {
    CString text(L'a', 1 << 16);
    const CString other(L'b', 1 << 16);
    EXPECT_THROW(text.Replace(L"a", other), std::length_error);
    EXPECT_EQ(text.GetLength(), 1 << 16);
    EXPECT_EQ(text[0], L'a');
}

TEST(CStringTest, CopiesMayBeUsedFromSeveralThreads) {
    const CString shared(L"shared text");
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&shared] {
            for (int turn = 0; turn < 2000; ++turn) {
                CString copy = shared;
                const CString second = copy;
                copy += L'x';
                ASSERT_EQ(second, L"shared text");
            }
        });
    }
    threads.clear();
    EXPECT_EQ(shared, L"shared text");
}

template <class... Arguments>
CString Formatted(const wchar_t* pattern, const Arguments&... arguments) {
    CString text;
    text.Format(pattern, arguments...);
    return text;
}

TEST(CStringFormatTest, WritesEachPattern) {
    EXPECT_EQ(Formatted(L"%04d-%02d-%02dT", 2026, 1, 2), L"2026-01-02T");
    EXPECT_EQ(Formatted(L"%I64d|%I32u|%ld|%hd|%zu|%Id", INT64_MIN, 1U, INT64_MAX, short{-3},
                        std::size_t{7}, 9),
              L"-9223372036854775808|1|9223372036854775807|-3|7|9")
        << "modifiers are ignored";
    EXPECT_EQ(Formatted(L"%s%c%s 100%% %5.1f%%", CString(L"clip"), L'\u00E4', L"_", 12.34),
              L"clip\u00E4_ 100%  12.3%");
    EXPECT_EQ(Joined({Formatted(L"%x %X", std::int8_t{-1}, std::int16_t{-2}),
                      Formatted(L"%u %x", std::int32_t{-1}, std::int32_t{-1}),
                      Formatted(L"%hhx", std::int64_t{-1}), Formatted(L"%d", UINT32_MAX)}),
              L"ff FFFE|4294967295 ffffffff|ffffffffffffffff|4294967295")
        << "unsigned conversions use the argument's own width";
    EXPECT_EQ(Joined({Formatted(L"%s %s %s", 42, UINT64_MAX, 0.1),
                      Formatted(L"%s%d%c", L'c', L"text", L"text"), Formatted(L"%d %f", 1.5, 3),
                      Formatted(L"[%6x]", L"ab"), Formatted(L"%c", -1)}),
              L"42 18446744073709551615 0.1|ctexttext|1.5 3|[    ab]|\uFFFD")
        << "what does not fit its conversion is written in its natural form";
    EXPECT_EQ(Joined({Formatted(L"a%d%s%fb"), Formatted(L"%*d", 5), Formatted(L"%n%p%", 1),
                      Formatted(L"%5.2q%d", 1), Formatted(L"%hI64d"), Formatted(nullptr, 1)}),
              L"ab||%n%p%|%5.2q1|%hI64d|")
        << "nothing reads beyond the arguments, and what is unknown is kept and takes none";
    EXPECT_EQ(Formatted(L"[%5s][%-5s][%5.1s][%.0s][%.s][%05s]", L"abc", L"abc", L"abc", L"abc",
                        L"abc", L"abc"),
              L"[  abc][abc  ][    a][][][  abc]");
    EXPECT_EQ(Formatted(L"[%*s][%-*s][%*s][%.*s][%.*s][%3c][%-3c]", 4, L"a", 3, L"b", -3, L"c", 2,
                        L"abc", -1, L"abc", L'x', L'y'),
              L"[   a][b  ][c  ][ab][abc][  x][y  ]");
}

TEST(CStringFormatTest, WidthsAndPrecisionsAreBounded) {
    for (const CString& bounded :
         {Formatted(L"%99999999999999999999d", 1), Formatted(L"%.99999999999999999999d", 1),
          Formatted(L"%*s", INT_MAX, L"x"), Formatted(L"%*s", INT64_MIN, L"x"),
          Formatted(L"%*s", UINT64_MAX, L"x")}) {
        EXPECT_EQ(bounded.GetLength(), 4096);
    }
    EXPECT_EQ(Formatted(L"%.5000f", std::numeric_limits<double>::max()).GetLength(),
              309 + 1 + 4096);
}

/// Every mix of flags, widths and precisions for the conversion letters of `letters`.
std::vector<std::string> PatternsFor(const std::string& letters) {
    std::vector<std::string> patterns;
    for (const char letter : letters) {
        for (const char* flags : {"", "-", "+", " ", "0", "#", "-+", "+0", "-0", "#0", "+ "}) {
            for (const char* size : {"", "1", "12", ".0", ".3", "12.5", "3.7"}) {
                patterns.push_back(std::string("%") + flags + size + letter);
            }
        }
    }
    return patterns;
}

template <class Value>
void ExpectAsTheCLibrary(const std::string& pattern, Value value) {
    char expected[512];
    const int length = std::snprintf(expected, sizeof(expected), pattern.c_str(), value);
    ASSERT_GT(static_cast<int>(sizeof(expected)), length);
    const std::wstring wide(pattern.begin(), pattern.end());
    EXPECT_EQ(Formatted(wide.c_str(), value), CString(std::wstring(expected, expected + length)))
        << pattern << " of " << value;
}

TEST(CStringFormatTest, NumbersAgreeWithTheCLibrary) {
    for (const std::string& pattern : PatternsFor("dixX")) {
        for (const int value : {0, 1, -1, 255, 123456, INT_MAX, INT_MIN}) {
            ExpectAsTheCLibrary(pattern, value);
        }
    }
    for (const std::string& pattern : PatternsFor("fFeEgG")) {
        for (const double value :
             {0.0, -0.0, 1.0, -1.5, 0.1, 1e-7, 123456789.0, 1e100,
              std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
            ExpectAsTheCLibrary(pattern, value);
        }
    }
}

TEST(CStringFormatTest, RealNumbersKeepTheirPointInEveryLocale) {
    if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    const CString text = Formatted(L"%.2f", 1.5);
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(text, L"1.50");
}

} // namespace
