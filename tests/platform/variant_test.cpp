// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/Variant.h"

#include "platform/ComError.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace {

TEST(VariantTest, WritesEachTypeAsText) {
    const struct {
        _variant_t value;
        VARTYPE type;
        const wchar_t* text;
    } cases[] = {
        {_variant_t(), VT_EMPTY, L""},
        {_variant_t(L"clip"), VT_BSTR, L"clip"},
        {_variant_t(CString(L"clip")), VT_BSTR, L"clip"},
        {_variant_t(_bstr_t(L"clip")), VT_BSTR, L"clip"},
        {_variant_t(_bstr_t()), VT_BSTR, L""},
        {_variant_t(INT32_MIN), VT_I4, L"-2147483648"},
        {_variant_t(INT64_MAX), VT_I8, L"9223372036854775807"},
        {_variant_t(true), VT_BOOL, L"-1"},
        {_variant_t(false), VT_BOOL, L"0"},
        {_variant_t(0.0), VT_R8, L"0"},
        {_variant_t(0.1), VT_R8, L"0.1"},
        {_variant_t(-2.5), VT_R8, L"-2.5"},
        {_variant_t(1.0 / 3.0), VT_R8, L"0.333333333333333"},
        {_variant_t(1e20), VT_R8, L"1e+20"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(row.value.vt, row.type) << CString(row.text);
        EXPECT_EQ(row.value.ToText(), row.text);
        EXPECT_EQ(row.value.Text(), row.type == VT_BSTR ? row.text : L"") << "no conversion";
    }
}

TEST(VariantTest, NullAndUnknownTypesHaveNoText) {
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

TEST(VariantTest, SettingTheTypeToEmptyHidesTheValue) {
    _variant_t value(L"text");
    value.vt = VT_EMPTY;
    EXPECT_EQ(value.Text(), L"");
    EXPECT_EQ(value.ToText(), L"");
}

TEST(VariantTest, PointersAreNoTruthValues) {
    static_assert(!std::is_constructible_v<_variant_t, const char*>);
    static_assert(!std::is_constructible_v<_variant_t, const int*>);
}

TEST(BStrTest, TellsNullFromEmpty) {
    const _bstr_t null;
    const _bstr_t nullPointer(static_cast<const wchar_t*>(nullptr));
    const _bstr_t empty(L"");
    EXPECT_TRUE(!null);
    EXPECT_TRUE(!nullPointer);
    EXPECT_FALSE(!empty);
    EXPECT_EQ(static_cast<const wchar_t*>(null), nullptr);
    EXPECT_STREQ(static_cast<const wchar_t*>(empty), L"");
    EXPECT_EQ(null.length(), 0U);
    EXPECT_EQ(null.Text(), L"");
    EXPECT_EQ(_bstr_t(L"abc").length(), 3U);
}

TEST(ComErrorTest, CarriesStatusAndReason) {
    const _com_error error(E_INVALIDARG, L"no such node");
    EXPECT_EQ(error.Error(), E_INVALIDARG);
    EXPECT_EQ(error.Description(), L"no such node");
    EXPECT_LT(error.Error(), 0) << "negative means failure";
}

} // namespace
