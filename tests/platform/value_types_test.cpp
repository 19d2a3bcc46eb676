// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ComError.h"
#include "NQP2ParserU/CStringArray.h"
#include "NQP2ParserU/OleDateTime.h"
#include "NQP2ParserU/Variant.h"
#include "platform/guid_text.h"
#include "platform/number_text.h"
#include "tests/support/print_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <limits>
#include <stdexcept>

namespace {

using testing::ElementsAre;

CArray<int> Numbers(int count) {
    CArray<int> numbers;
    for (int i = 0; i < count; ++i) {
        numbers.Add(i);
    }
    return numbers;
}

TEST(CArrayTest, IndicesOutOfRangeThrow) {
    CArray<int> numbers = Numbers(2);
    for (const std::int64_t index : {std::int64_t{-1}, std::int64_t{2}, INT64_MIN, INT64_MAX}) {
        EXPECT_THROW(numbers[index] = 1, std::out_of_range);
        EXPECT_THROW(numbers.SetAt(index, 1), std::out_of_range);
    }
    EXPECT_THROW(numbers.InsertAt(-1, 5), std::out_of_range);
    EXPECT_THROW(numbers.SetSize(-1), std::length_error);
    EXPECT_THAT(numbers, ElementsAre(0, 1));
}

TEST(CArrayTest, TakesItsOwnElements) {
    CStringArray names;
    names.Add(L"a name that is long enough");
    for (int i = 0; i < 20; ++i) {
        names.Add(names[0]);
    }
    names.InsertAt(40, names[0]);
    EXPECT_EQ(names[40], names[0]);
    EXPECT_EQ(names[39], L"") << "growing fills with empty elements";

    CArray<int> numbers = Numbers(3);
    EXPECT_EQ(numbers.Append(numbers), 3);
    EXPECT_THAT(numbers, ElementsAre(0, 1, 2, 0, 1, 2));
}

TEST(CArrayTest, InsertsAndRemovesWithinBounds) {
    CArray<int> numbers = Numbers(4);
    numbers.InsertAt(1, 9, 2);
    EXPECT_THAT(numbers, ElementsAre(0, 9, 9, 1, 2, 3));
    numbers.RemoveAt(1, 2);
    numbers.RemoveAt(3, INT64_MAX);
    numbers.RemoveAt(-1);
    numbers.RemoveAt(3);
    numbers.RemoveAt(0, 0);
    numbers.RemoveAt(0, -1);
    EXPECT_THAT(numbers, ElementsAre(0, 1, 2));
}

TEST(VariantTest, WritesEachTypeAsText) {
    const std::tuple<_variant_t, VARTYPE, const wchar_t*> cases[] = {
        {_variant_t(), VT_EMPTY, L""},
        {L"clip", VT_BSTR, L"clip"},
        {CString(L"clip"), VT_BSTR, L"clip"},
        {_bstr_t(), VT_BSTR, L""},
        {INT32_MIN, VT_I4, L"-2147483648"},
        {INT64_MAX, VT_I8, L"9223372036854775807"},
        {5U, VT_UI4, L"5"},
        {UINT32_MAX, VT_UI4, L"4294967295"},
        {LLONG_MIN, VT_I8, L"-9223372036854775808"},
        {5ULL, VT_UI8, L"5"},
        {UINT64_MAX, VT_UI8, L"18446744073709551615"},
        {true, VT_BOOL, L"-1"},
        {false, VT_BOOL, L"0"},
        {0.1, VT_R8, L"0.1"},
        {1.0 / 3.0, VT_R8, L"0.333333333333333"},
        {1e20, VT_R8, L"1e+20"}};
    for (const auto& [value, type, text] : cases) {
        EXPECT_EQ(value.vt, type) << CString(text);
        EXPECT_EQ(value.ToText(), text);
        EXPECT_EQ(value.Text(), type == VT_BSTR ? text : L"") << "no conversion";
    }
}

TEST(VariantTest, NullAndUnknownTypesHaveNoText) {
    _variant_t empty(L"text");
    empty.vt = VT_EMPTY;
    EXPECT_EQ(empty.ToText(), L"") << "hides the value";
    for (const VARTYPE type : {VT_NULL, VARTYPE{9}, VARTYPE{0x2008}}) {
        _variant_t value(L"text");
        value.vt = type;
        EXPECT_EQ(value.Text(), L"");
        try {
            static_cast<void>(value.ToText());
            ADD_FAILURE() << "type " << type << " was written";
        } catch (const _com_error& error) {
            EXPECT_EQ(error.Error(), DISP_E_TYPEMISMATCH);
        }
    }
}

TEST(BStrTest, TellsNullFromEmpty) {
    const _bstr_t null(static_cast<const wchar_t*>(nullptr));
    EXPECT_TRUE(!null && !_bstr_t());
    EXPECT_EQ(static_cast<const wchar_t*>(null), nullptr);
    EXPECT_EQ(null.Text(), L"");
    const _bstr_t empty(L"");
    EXPECT_FALSE(!empty);
    EXPECT_STREQ(static_cast<const wchar_t*>(empty), L"");
    EXPECT_EQ(_bstr_t(L"abc").length(), 3U);
}

TEST(OleDateTimeTest, CountsDaysFromTheEndOf1899) {
    const std::tuple<int, int, int, int, double>
        cases
            [] =
                {
                    {1899, 12, 30, 18, 0.75},
                    {1899, 12, 29, 6, -1.25}, // the time of day counts away from zero
                    {1900, 3, 1, 0, 61.0},    // 1900 was no leap year, 2000 was
                    {2000, 2, 29, 0, 36585.0},
                    {2026, 1, 2, 12, 46024.5},
                    {9999, 12, 31, 0, 2958465.0},
                    {100, 1, 1, 0, -657434.0},
                };
    for (const auto& [year, month, day, hour, days] : cases) {
        COleDateTime moment;
        EXPECT_EQ(moment.GetDays(), 0.0);
        moment.SetStatus(COleDateTime::null);
        EXPECT_EQ(moment.SetDateTime(year, month, day, hour, 0, 0), COleDateTime::valid);
        EXPECT_EQ(moment.GetStatus(), COleDateTime::valid);
        EXPECT_DOUBLE_EQ(moment.GetDays(), days) << year;
    }
}

TEST(OleDateTimeTest, ImpossibleMomentsAreInvalidAtDayZero) {
    const std::tuple<int, int, int, int, int, int> cases[] = {
        {99, 1, 1, 0, 0, 0},       {10000, 1, 1, 0, 0, 0},        {2026, 0, 1, 0, 0, 0},
        {2026, 13, 1, 0, 0, 0},    {2026, 1, 0, 0, 0, 0},         {2026, 4, 31, 0, 0, 0},
        {2026, 2, 29, 0, 0, 0},    {1900, 2, 29, 0, 0, 0},        {2026, 1, 1, 24, 0, 0},
        {2026, 1, 1, 0, 60, 0},    {2026, 1, 1, 0, 0, 60},        {2026, 1, 1, -1, 0, 0},
        {2026, 1, 1, 0, -1, 0},    {2026, 1, 1, 0, 0, -1},        {INT_MIN, 1, 1, 0, 0, 0},
        {2026, 257, 257, 0, 0, 0}, {65536 + 2026, 1, 1, 0, 0, 0},
    };
    for (const auto& [year, month, day, hour, minute, second] : cases) {
        COleDateTime moment(1.5);
        EXPECT_EQ(moment.SetDateTime(year, month, day, hour, minute, second), COleDateTime::invalid)
            << year << '-' << month << '-' << day;
        EXPECT_EQ(moment.GetStatus(), COleDateTime::invalid);
        EXPECT_EQ(moment.GetDays(), 0.0);
    }
}

} // namespace

namespace nqp2::platform {
namespace {

constexpr const wchar_t* kText = L"00112233-4455-6677-8899-aabbccddeeff";
const GUID kGuid{0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};

TEST(GuidTextTest, WritesLowerCaseAndReadsAnyCase) {
    EXPECT_EQ(GuidText(kGuid), kText);
    for (const wchar_t* const text : {kText, L"00112233-4455-6677-8899-AABBCCDDEEFF"}) {
        GUID guid;
        EXPECT_TRUE(GuidFromText(text, guid));
        EXPECT_EQ(guid, kGuid);
    }
}

TEST(GuidTextTest, AnyOtherTextGivesZero) {
    const wchar_t* const others[] = {
        L"",
        L"00112233-4455-6677-8899-aabbccddeef",
        L"00112233-4455-6677-8899-aabbccddeeff0",
        L"00112233-4455-6677-8899-aabbccddeefg",
        L"{0112233-4455-6677-8899-aabbccddeef}",
        L"001122334-455-6677-8899-aabbccddeeff",
        L"+0112233-4455-6677-8899-aabbccddeeff",
        L"\uFF10\uFF10112233-4455-6677-8899-aabbccddeeff",
    };
    for (const wchar_t* const other : others) {
        GUID guid = kGuid;
        EXPECT_FALSE(GuidFromText(other, guid)) << CString(other);
        EXPECT_EQ(guid, GUID()) << CString(other);
    }
}

TEST(GuidTextTest, NewIdentifiersAreRandomVersion4) {
    EXPECT_NE(NewGuid(), NewGuid());
    for (int i = 0; i < 100; ++i) {
        const CString text = GuidText(NewGuid());
        EXPECT_EQ(text[14], L'4') << text;
        EXPECT_GE(CString(L"89ab").Find(text[19]), 0) << text;
    }
}

TEST(NumberTextTest, ReadsWhatStandsInFront) {
    const std::pair<const wchar_t*, int> rows[] = {
        {L"", 0},      {L"42", 42},   {L"-42", -42},   {L"+42", 42},   {L"- 7", 0},
        {L"+-7", 0},   {L"-", 0},     {L"12.9", 12},   {L"1,000", 1},  {L"0x10", 0},
        {L"0010", 10}, {L"12ab", 12}, {L"\u00A07", 0}, {L"\uFF11", 0}, {L" \t\n\v\f\r7", 7},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(ToInt64(text), expected) << CString(text);
        EXPECT_EQ(ToInt32(text), expected) << CString(text);
    }
    EXPECT_EQ(ToInt64(std::wstring_view(L"1\0002", 3)), 1);
    EXPECT_EQ(ToInt64(std::wstring(40, L'0') + L"5"), 5);
}

TEST(NumberTextTest, SaturatesOutOfRange) {
    const std::tuple<const wchar_t*, std::int32_t, std::int64_t> cases[] = {
        {L"2147483648", INT32_MAX, 2147483648},
        {L"-2147483649", INT32_MIN, -2147483649},
        {L"9223372036854775807", INT32_MAX, INT64_MAX},
        {L"-9223372036854775808", INT32_MIN, INT64_MIN},
        {L"99999999999999999999999", INT32_MAX, INT64_MAX},
        {L"-99999999999999999999999x", INT32_MIN, INT64_MIN}};
    for (const auto& [text, narrow, wide] : cases) {
        EXPECT_EQ(ToInt32(text), narrow);
        EXPECT_EQ(ToInt64(text), wide);
    }
}

TEST(NumberTextTest, RealNumbersEndWhereTheyCannotGoOnInEveryLocale) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    const std::pair<const wchar_t*, double> rows[] = {
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
        {L"- 1", 0.0},
        {L"1.5.5", 1.5},
        {L"\u0661", 0.0},
        {L"1\u00A05", 1.0},
        {L"1e999", kInfinite},
        {L"-1e999", -kInfinite},
        {L"1e-999", 0.0},
    };
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8"); // where installed: a decimal comma
    for (const auto& [text, number] : rows) {
        EXPECT_EQ(ToDouble(text), number) << CString(text);
    }
    EXPECT_EQ(ToDouble(std::wstring_view(L"1\0002", 3)), 1.0);
    std::setlocale(LC_NUMERIC, before.c_str());
}

} // namespace
} // namespace nqp2::platform
