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

#include <algorithm>
#include <climits>
#include <clocale>
#include <limits>
#include <stdexcept>

namespace nqp2::platform {
namespace {

using testing::ElementsAre;

TEST(CArrayTest, KeepsToItsBoundsAndTakesItsOwnElements) {
    CArray<int> numbers;
    numbers.Add(0);
    numbers.Add(1);
    for (const std::int64_t index : {std::int64_t{-1}, std::int64_t{2}, INT64_MIN, INT64_MAX}) {
        EXPECT_THROW(numbers[index] = 1, std::out_of_range);
        EXPECT_THROW(numbers.SetAt(index, 1), std::out_of_range);
    }
    EXPECT_THROW(numbers.InsertAt(-1, 5), std::out_of_range);
    EXPECT_THROW(numbers.SetSize(-1), std::length_error);
    EXPECT_EQ(numbers.Append(numbers), 2);
    numbers.InsertAt(1, 9, 2);
    EXPECT_THAT(numbers, ElementsAre(0, 9, 9, 1, 0, 1));
    numbers.RemoveAt(1, 2);
    numbers.RemoveAt(2, INT64_MAX);
    for (const auto& [index, count] : {std::pair(-1, 1), {2, 1}, {0, 0}, {0, -1}}) {
        numbers.RemoveAt(index, count);
    }
    EXPECT_THAT(numbers, ElementsAre(0, 1));
    CStringArray names;
    names.Add(L"a name that is long enough");
    for (int i = 0; i < 20; ++i) {
        names.Add(names[0]);
    }
    names.InsertAt(40, names[0]);
    EXPECT_EQ(names[40], names[0]);
    EXPECT_EQ(names[39], L"") << "growing fills with empty elements";
}

TEST(VariantTest, WritesEachTypeAsText) {
    const std::tuple<_variant_t, VARTYPE, const wchar_t*> rows[] = {
        {_variant_t(), VT_EMPTY, L""},
        {CString(L"clip"), VT_BSTR, L"clip"},
        {_bstr_t(), VT_BSTR, L""},
        {INT32_MIN, VT_I4, L"-2147483648"},
        {UINT32_MAX, VT_UI4, L"4294967295"},
        {LLONG_MIN, VT_I8, L"-9223372036854775808"},
        {UINT64_MAX, VT_UI8, L"18446744073709551615"},
        {true, VT_BOOL, L"-1"},
        {false, VT_BOOL, L"0"},
        {1.0 / 3.0, VT_R8, L"0.333333333333333"},
        {1e20, VT_R8, L"1e+20"}};
    for (const auto& [value, type, text] : rows) {
        EXPECT_EQ(value.vt, type) << CString(text);
        EXPECT_EQ(value.ToText(), text);
        EXPECT_EQ(value.Text(), type == VT_BSTR ? text : L"") << "no conversion";
    }
    for (const VARTYPE type : {VT_EMPTY, VT_NULL, VARTYPE{9}, VARTYPE{0x2008}}) {
        _variant_t value(L"text");
        value.vt = type; // hides the value
        EXPECT_EQ(value.Text(), L"");
        if (type == VT_EMPTY) {
            EXPECT_EQ(value.ToText(), L"");
        } else {
            EXPECT_THROW(static_cast<void>(value.ToText()), _com_error) << type;
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

struct Moment {
    int year, month, day, hour = 0, minute = 0, second = 0;
};

TEST(OleDateTimeTest, CountsDaysFromTheEndOf1899AndRefusesWhatIsNone) {
    const std::pair<Moment, double>
        rows[] = {{{1899, 12, 30, 18}, 0.75},
                  {{1899, 12, 29, 6}, -1.25}, // the time of day counts away from zero
                  {{1900, 3, 1}, 61.0},       // 1900 was no leap year, 2000 was
                  {{2000, 2, 29}, 36585.0},
                  {{2026, 1, 2, 12}, 46024.5},
                  {{9999, 12, 31}, 2958465.0},
                  {{100, 1, 1}, -657434.0}};
    COleDateTime time;
    for (const auto& [at, days] : rows) {
        time.SetStatus(COleDateTime::null);
        EXPECT_EQ(time.SetDateTime(at.year, at.month, at.day, at.hour, at.minute, at.second),
                  COleDateTime::valid);
        EXPECT_EQ(time.GetStatus(), COleDateTime::valid);
        EXPECT_DOUBLE_EQ(time.GetDays(), days) << at.year;
    }
    const Moment others[] = {
        {99, 1, 1},       {10000, 1, 1},       {2026, 0, 1},         {2026, 13, 1},
        {2026, 1, 0},     {2026, 4, 31},       {2026, 2, 29},        {1900, 2, 29},
        {2026, 1, 1, 24}, {2026, 1, 1, 0, 60}, {2026, 1, 1, -1},     {2026, 1, 1, 0, -1},
        {INT_MIN, 1, 1},  {2026, 257, 257},    {65536 + 2026, 1, 1}, {2026, 1, 1, 0, 0, 60}};
    for (const Moment& at : others) {
        time = COleDateTime(1.5);
        EXPECT_EQ(time.SetDateTime(at.year, at.month, at.day, at.hour, at.minute, at.second),
                  COleDateTime::invalid)
            << at.year << '-' << at.month << '-' << at.day;
        EXPECT_EQ(time.GetStatus(), COleDateTime::invalid);
        EXPECT_EQ(time.GetDays(), 0.0);
    }
}

TEST(GuidTextTest, WritesLowerCaseAndReadsNothingElse) {
    const CString text = L"00112233-4455-6677-8899-aabbccddeeff";
    const GUID known{0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};
    GUID guid;
    EXPECT_EQ(GuidText(known), text);
    EXPECT_TRUE(GuidFromText(CString(text).MakeUpper().View(), guid));
    EXPECT_EQ(guid, known);
    for (const CString& other :
         {CString(), text.Left(35), text + L'0', text.Left(35) + L'g', L"+" + text.Mid(1),
          L"{" + text.Mid(1, 34) + L'}', L"001122334-" + text.Mid(10), L"\uFF10" + text.Mid(1)}) {
        guid = known;
        EXPECT_FALSE(GuidFromText(other.View(), guid)) << other;
        EXPECT_EQ(guid, GUID()) << other;
    }
    EXPECT_NE(NewGuid(), NewGuid());
    for (int i = 0; i < 100; ++i) {
        const CString fresh = GuidText(NewGuid());
        EXPECT_EQ(fresh[14], L'4') << fresh;
        EXPECT_GE(CString(L"89ab").Find(fresh[19]), 0) << fresh;
    }
}

TEST(NumberTextTest, ReadsWhatIsInFrontAndSaturates) {
    const std::pair<const wchar_t*, std::int64_t> rows[] = {
        {L"", 0},
        {L"-42", -42},
        {L"+42", 42},
        {L"- 7", 0},
        {L"+-7", 0},
        {L"-", 0},
        {L"12.9", 12},
        {L"1,000", 1},
        {L"0x10", 0},
        {L" \t\n\v\f\r7", 7},
        {L"0010", 10},
        {L"12ab", 12},
        {L"\u00A07", 0},
        {L"\uFF11", 0},
        {L"00000000000000000005", 5},
        {L"9223372036854775807", INT64_MAX},
        {L"-9223372036854775808", INT64_MIN},
        {L"99999999999999999999999", INT64_MAX},
        {L"-99999999999999999999999x", INT64_MIN},
        {L"2147483648", 2147483648},
        {L"-2147483649", -2147483649}};
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(ToInt64(text), expected) << CString(text);
        EXPECT_EQ(ToInt32(text), std::clamp<std::int64_t>(expected, INT32_MIN, INT32_MAX))
            << CString(text);
    }
    EXPECT_EQ(ToInt64(std::wstring_view(L"1\0002", 3)), 1);
}

TEST(NumberTextTest, RealNumbersEndWhereTheyCannotGoOnInEveryLocale) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    const std::pair<const wchar_t*, double> rows[] = {
        {L"", 0.0},       {L" \t\n-1.25x", -1.25}, {L"+2", 2.0},          {L".5", 0.5},
        {L"5.", 5.0},     {L"1e2", 100.0},         {L"1e", 1.0},          {L"1,5", 1.0},
        {L"x1", 0.0},     {L"+-1", 0.0},           {L"- 1", 0.0},         {L"1.5.5", 1.5},
        {L"\u0661", 0.0}, {L"1\u00A05", 1.0},      {L"1e999", kInfinite}, {L"1e-999", 0.0}};
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8"); // where installed: a decimal comma
    for (const auto& [text, number] : rows) {
        EXPECT_EQ(ToDouble(text), number) << CString(text);
    }
    std::setlocale(LC_NUMERIC, before.c_str());
}

} // namespace
} // namespace nqp2::platform
