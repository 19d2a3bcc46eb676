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
    numbers.SetSize(2);
    numbers[1] = 1;
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
    numbers.RemoveAt(-1, 1);
    EXPECT_THAT(numbers, ElementsAre(0, 1));
    CStringArray names;
    names.Add(L"a name that is long enough");
    names.Append(names);
    names.InsertAt(40, names[0]);
    EXPECT_EQ(names[40], names[0]);
    EXPECT_EQ(names[39], L"") << "growing fills with empty elements";
}

TEST(VariantTest, WritesEachTypeAsText) {
    const std::pair<_variant_t, const wchar_t*> rows[] = {{CString(L"clip"), L"clip"},
                                                          {INT32_MIN, L"-2147483648"},
                                                          {true, L"-1"},
                                                          {1.0 / 3.0, L"0.333333333333333"},
                                                          {1e20, L"1e+20"}};
    for (const auto& [value, text] : rows) {
        EXPECT_EQ(value.ToText(), text);
        EXPECT_EQ(value.Text(), value.vt == VT_BSTR ? text : L"") << "no conversion";
    }
    for (const VARTYPE type : {VT_NULL, VARTYPE{9}, VARTYPE{0x2008}}) {
        _variant_t value(L"text");
        value.vt = type; // hides the value
        EXPECT_EQ(value.Text(), L"");
        EXPECT_THROW(static_cast<void>(value.ToText()), _com_error) << type;
    }
    const _bstr_t null(static_cast<const wchar_t*>(nullptr));
    EXPECT_TRUE(!null && static_cast<const wchar_t*>(null) == nullptr && null.Text().IsEmpty());
    EXPECT_TRUE(static_cast<bool>(_bstr_t(L""))) << "which is not null";
}

struct Moment {
    int year, month, day, hour = 0, minute = 0, second = 0;
};

TEST(OleDateTimeTest, CountsDaysFromTheEndOf1899AndRefusesWhatIsNone) {
    const auto set = [](COleDateTime& time, const Moment& at) {
        return time.SetDateTime(at.year, at.month, at.day, at.hour, at.minute, at.second);
    };
    // The time of day counts away from zero; 1900 was no leap year, 2000 was.
    const std::pair<Moment, double> rows[] = {
        {{1899, 12, 30, 18}, 0.75}, {{1899, 12, 29, 6}, -1.25},  {{1900, 3, 1}, 61.0},
        {{2000, 2, 29}, 36585.0},   {{9999, 12, 31}, 2958465.0}, {{100, 1, 1}, -657434.0}};
    for (const auto& [at, days] : rows) {
        COleDateTime time;
        EXPECT_EQ(set(time, at), COleDateTime::valid);
        EXPECT_DOUBLE_EQ(time.GetDays(), days) << at.year;
    }
    const Moment others[] = {{99, 1, 1},      {10000, 1, 1},    {2026, 0, 1},
                             {2026, 13, 1},   {2026, 1, 0},     {2026, 4, 31},
                             {1900, 2, 29},   {2026, 1, 1, 24}, {2026, 1, 1, -1},
                             {INT_MIN, 1, 1}, {2026, 257, 257}, {2026, 1, 1, 0, 60}};
    for (const Moment& at : others) {
        COleDateTime time(1.5);
        EXPECT_EQ(set(time, at), COleDateTime::invalid) << at.year << '-' << at.month;
        EXPECT_EQ(time.GetStatus(), COleDateTime::invalid);
        EXPECT_EQ(time.GetDays(), 0.0);
    }
}

TEST(GuidTextTest, WritesLowerCaseAndReadsNothingElse) {
    const CString text = L"00112233-4455-6677-8899-aabbccddeeff";
    GUID guid;
    EXPECT_TRUE(GuidFromText(CString(text).MakeUpper().View(), guid));
    EXPECT_EQ(guid.Data1, 0x00112233U);
    EXPECT_EQ(GuidText(guid), text);
    for (const CString& other :
         {CString(), text.Left(35), text + L'0', text.Left(35) + L'g', L"+" + text.Mid(1),
          L"{" + text.Mid(1, 34) + L'}', L"001122334-" + text.Mid(10), L"\uFF10" + text.Mid(1)}) {
        EXPECT_FALSE(GuidFromText(other.View(), guid)) << other;
        EXPECT_EQ(guid, GUID()) << other;
    }
}

TEST(NumberTextTest, ReadsWhatIsInFrontAndSaturatesInEveryLocale) {
    const std::pair<const wchar_t*, std::int64_t> rows[] = {
        {L"+42", 42},    {L"9223372036854775807", INT64_MAX},
        {L"- 7", 0},     {L"-9223372036854775808", INT64_MIN},
        {L"+-7", 0},     {L"99999999999999999999999", INT64_MAX},
        {L"0x10", 0},    {L"-99999999999999999999999x", INT64_MIN},
        {L"10.9", 10},   {L"2147483648", 2147483648},
        {L"\f\r\v7", 7}, {L"-2147483649", -2147483649},
        {L"\u00A07", 0}, {L"00000000000000000005", 5}};
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(ToInt64(text), expected) << CString(text);
        EXPECT_EQ(ToInt32(text), std::clamp<std::int64_t>(expected, INT32_MIN, INT32_MAX));
    }
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    const std::pair<const wchar_t*, double> reals[] = {
        {L"", 0.0},       {L" \t\n-1.25x", -1.25}, {L"+2", 2.0},          {L".5", 0.5},
        {L"5.", 5.0},     {L"1e2", 100.0},         {L"1e", 1.0},          {L"1,5", 1.0},
        {L"x1", 0.0},     {L"+-1", 0.0},           {L"- 1", 0.0},         {L"1.5.5", 1.5},
        {L"\u0661", 0.0}, {L"1\u00A05", 1.0},      {L"1e999", kInfinite}, {L"1e-999", 0.0}};
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8"); // where installed: a decimal comma
    for (const auto& [text, number] : reals) {
        EXPECT_EQ(ToDouble(text), number) << CString(text);
    }
    std::setlocale(LC_NUMERIC, "C");
}

} // namespace
} // namespace nqp2::platform
