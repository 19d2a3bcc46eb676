// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/number_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>

namespace nqp2::platform {
namespace {

TEST(NumberTextTest, ReadsWhatStandsInFront) {
    const struct {
        std::wstring_view text;
        std::int64_t expected;
        const char* reason;
    } cases[] = {
        {L"", 0, "nothing"},
        {L"0", 0, "zero"},
        {L"42", 42, "plain"},
        {L"-42", -42, "sign"},
        {L"+42", 42, "sign"},
        {L" \t\n\v\f\r7", 7, "leading white space"},
        {L"\u00A07", 0, "no white space of ASCII"},
        {L"- 7", 0, "white space after the sign"},
        {L"+-7", 0, "two signs"},
        {L"--7", 0, "two signs"},
        {L"-", 0, "only a sign"},
        {L"12abc", 12, "anything else ends the number"},
        {L"12.9", 12, "no fraction"},
        {L"1,000", 1, "no grouping"},
        {L"0x10", 0, "no hexadecimal"},
        {L"0010", 10, "no octal"},
        {L"\uFF11\uFF12", 0, "wide digits are no digits"},
        {std::wstring_view(L"1\0"
                           L"2",
                           3),
         1, "a zero ends the number"},
        {L"000000000000000000000000000005", 5, "many digits of no weight"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(ToInt64(row.text), row.expected) << row.reason;
        EXPECT_EQ(ToInt32(row.text), row.expected) << row.reason;
    }
}

TEST(NumberTextTest, SaturatesOutOfRange) {
    const struct {
        const wchar_t* text;
        std::int32_t narrow;
        std::int64_t wide;
    } cases[] = {
        {L"2147483647", INT32_MAX, INT32_MAX},
        {L"2147483648", INT32_MAX, 2147483648},
        {L"-2147483648", INT32_MIN, INT32_MIN},
        {L"-2147483649", INT32_MIN, -2147483649},
        {L"9223372036854775807", INT32_MAX, INT64_MAX},
        {L"9223372036854775808", INT32_MAX, INT64_MAX},
        {L"-9223372036854775807", INT32_MIN, -INT64_MAX},
        {L"-9223372036854775808", INT32_MIN, INT64_MIN},
        {L"-9223372036854775809", INT32_MIN, INT64_MIN},
        {L"18446744073709551617", INT32_MAX, INT64_MAX},
        {L"99999999999999999999999", INT32_MAX, INT64_MAX},
        {L"-99999999999999999999999x", INT32_MIN, INT64_MIN},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(ToInt32(row.text), row.narrow);
        EXPECT_EQ(ToInt64(row.text), row.wide);
    }
}

TEST(NumberTextTest, RealNumbersEndWhereTheyCannotGoOn) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    const std::pair<std::wstring_view, double> rows[] = {
        {L"", 0.0},
        {L"0.5", 0.5},
        {L" \t\n-1.25x", -1.25},
        {L"+2", 2.0},
        {L".5", 0.5},
        {L"5.", 5.0},
        {L"1e2", 100.0},
        {L"1e", 1.0},
        {L"1,5", 1.0},
        {L"x1", 0.0},
        {L"+-1", 0.0},
        {L"--1", 0.0},
        {L"- 1", 0.0},
        {L"1.5.5", 1.5},
        {L"\u0661", 0.0},
        {L"1\u00A05", 1.0},
        {L"1e999", kInfinite},
        {L"-1e999", -kInfinite},
        {L"1e-999", 0.0},
        {std::wstring_view(L"1\0002", 3), 1.0},
    };
    for (const auto& [text, number] : rows) {
        EXPECT_EQ(ToDouble(text), number) << testing::PrintToString(std::wstring(text));
    }
    EXPECT_DOUBLE_EQ(ToDouble(L"0.1"), 0.1);
}

TEST(NumberTextTest, RealNumbersDoNotFollowTheLocale) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    bool commaFound = false;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"}) {
        commaFound = commaFound || std::setlocale(LC_NUMERIC, name) != nullptr;
    }
    const double number = ToDouble(L"0.5");
    const double cut = ToDouble(L"0,5");
    std::setlocale(LC_NUMERIC, before.c_str());
    EXPECT_EQ(number, 0.5);
    EXPECT_EQ(cut, 0.0);
    if (!commaFound) {
        GTEST_SKIP() << "no locale with a decimal comma on this system";
    }
}

} // namespace
} // namespace nqp2::platform
