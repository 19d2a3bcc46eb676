// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/CString.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

namespace {

template <class... Arguments>
CString Formatted(const wchar_t* pattern, const Arguments&... arguments) {
    CString text;
    text.Format(pattern, arguments...);
    return text;
}

struct Case {
    CString actual;
    const wchar_t* expected;
    const char* reason;
};

void ExpectAll(const std::vector<Case>& cases) {
    for (const Case& row : cases) {
        EXPECT_EQ(row.actual, row.expected) << row.reason;
    }
}

TEST(CStringFormatTest, WritesThePatternsOfTheLibrary) {
    ExpectAll({
        {Formatted(L"%04d-%02d-%02dT%02d:%02d:%02d", 2026, 1, 2, 3, 4, 5), L"2026-01-02T03:04:05",
         "a date"},
        {Formatted(L"%ld-%02d", std::int64_t{12}, std::int32_t{3}), L"12-03", "l is ignored"},
        {Formatted(L"%I64d|%I32u|%lld|%hd|%zu|%Id", INT64_MIN, 1U, INT64_MAX, short{-3},
                   std::size_t{7}, 9),
         L"-9223372036854775808|1|9223372036854775807|-3|7|9", "every modifier is ignored"},
        {Formatted(L"Code = 0x%x\n", static_cast<std::int32_t>(0xC00CE556U)),
         L"Code = 0xc00ce556\n", "a negative status shows its own 32 bits"},
        {Formatted(L"%s%c%s", CString(L"clip"), L'\u00E4', L"01"),
         L"clip\u00E4"
         L"01",
         "texts and a character"},
        {Formatted(L"100%% %5.1f%%", 12.34), L"100%  12.3%", "percent signs"},
    });
}

TEST(CStringFormatTest, UnsignedConversionsUseTheArgumentsOwnWidth) {
    ExpectAll({
        {Formatted(L"%x", std::int8_t{-1}), L"ff", "8 bits"},
        {Formatted(L"%X", std::int16_t{-2}), L"FFFE", "16 bits"},
        {Formatted(L"%u", std::int32_t{-1}), L"4294967295", "32 bits"},
        {Formatted(L"%hhx", std::int64_t{-1}), L"ffffffffffffffff", "the modifier cuts nothing"},
        {Formatted(L"%d", UINT32_MAX), L"4294967295", "an unsigned argument stays positive"},
        {Formatted(L"%d %x", L'A', L'A'), L"65 41", "a character is a whole number, too"},
    });
}

TEST(CStringFormatTest, ArgumentsThatDoNotFitAreWrittenInTheirNaturalForm) {
    ExpectAll({
        {Formatted(L"%s", 42), L"42", "number as text"},
        {Formatted(L"%s", UINT64_MAX), L"18446744073709551615", "large number as text"},
        {Formatted(L"%s", 0.1), L"0.1", "real as text"},
        {Formatted(L"%s", L'c'), L"c", "character as text"},
        {Formatted(L"%d", L"text"), L"text", "text as number"},
        {Formatted(L"%d", 1.5), L"1.5", "real as whole number"},
        {Formatted(L"%f", 3), L"3", "whole number as real"},
        {Formatted(L"%c", L"text"), L"text", "text as character"},
        {Formatted(L"[%6x]", L"ab"), L"[    ab]", "the width counts all the same"},
        {Formatted(L"%c", -1), L"\uFFFD", "no code point"},
    });
}

TEST(CStringFormatTest, NoPatternReadsBeyondTheArguments) {
    ExpectAll({
        {Formatted(L"a%d%s%fb"), L"ab", "missing arguments are written as nothing"},
        {Formatted(L"%*d", 5), L"", "the width took the only argument"},
        {Formatted(L"%n%p%", 1), L"%n%p%", "unknown conversions stand as written"},
        {Formatted(L"%5.2q%d", 1), L"%5.2q1", "and take no argument"},
        {Formatted(L"%-08.3", 1), L"%-08.3", "an unfinished one as well"},
        {Formatted(L"%hI64d"), L"%hI64d", "only one kind of modifier is known"},
        {Formatted(nullptr, 1), L"", "no pattern"},
        {Formatted(L"%d", 1, 2, 3), L"1", "too many arguments"},
    });
}

TEST(CStringFormatTest, WidthsAndPrecisionsAreBounded) {
    EXPECT_EQ(Formatted(L"%99999999999999999999d", 1).GetLength(), 4096);
    EXPECT_EQ(Formatted(L"%.99999999999999999999d", 1).GetLength(), 4096);
    EXPECT_EQ(Formatted(L"%*s", INT_MAX, L"x").GetLength(), 4096);
    EXPECT_EQ(Formatted(L"%*s", INT64_MIN, L"x").GetLength(), 4096);
    EXPECT_EQ(Formatted(L"%*s", UINT64_MAX, L"x").GetLength(), 4096);
    EXPECT_EQ(Formatted(L"%.5000f", std::numeric_limits<double>::max()).GetLength(),
              309 + 1 + 4096);
}

TEST(CStringFormatTest, PadsAndCutsTexts) {
    ExpectAll({
        {Formatted(L"[%5s][%-5s][%.2s][%5.1s]", L"abc", L"abc", L"abc", L"abc"),
         L"[  abc][abc  ][ab][    a]", "width and precision"},
        {Formatted(L"[%.0s][%.s]", L"abc", L"abc"), L"[][]", "precision 0"},
        {Formatted(L"[%05s]", L"abc"), L"[  abc]", "zeros are for numbers"},
        {Formatted(L"[%*s][%-*s][%*s]", 4, L"a", 3, L"b", -3, L"c"), L"[   a][b  ][c  ]",
         "widths from arguments, to the left when negative"},
        {Formatted(L"[%.*s][%.*s]", 2, L"abc", -1, L"abc"), L"[ab][abc]",
         "a negative precision is none"},
        {Formatted(L"[%3c][%-3c]", L'x', L'y'), L"[  x][y  ]", "characters"},
    });
}

TEST(CStringFormatTest, TakesItselfAsPatternAndArgument) {
    CString text(L"a%s");
    text.Format(text, text);
    EXPECT_EQ(text, L"aa%s");
    text.Format(L"%s%s", text, text.GetString());
    EXPECT_EQ(text, L"aa%saa%s");
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
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    const char* used = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE", "pt_BR.UTF-8"}) {
        used = used != nullptr ? used : std::setlocale(LC_NUMERIC, name);
    }
    if (used == nullptr) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    const CString text = Formatted(L"%.2f", 1.5);
    std::setlocale(LC_NUMERIC, before.c_str());
    EXPECT_EQ(text, L"1.50");
}

} // namespace
