// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

namespace {

TEST(TextConversion, CopiesTextAndConvertsNothing) {
    const wchar_t* const texts[] = {L"", L"P2", L"\u7D20\U00020BB7", L"\xD800"};
    for (const wchar_t* text : texts) {
        EXPECT_EQ(CMarkupMSXML::FromBSTR(CMarkupMSXML::ToBSTR(text)), text);
        const _variant_t variant = CMarkupMSXML::ToVARIANT(text);
        EXPECT_EQ(variant.vt, VT_BSTR);
        EXPECT_EQ(CMarkupMSXML::FromVARIANT(variant), text);
    }
    EXPECT_TRUE(CMarkupMSXML::FromBSTR(_bstr_t()).IsEmpty());
    EXPECT_TRUE(CMarkupMSXML::FromBSTR(CMarkupMSXML::ToBSTR(nullptr)).IsEmpty());
    EXPECT_EQ(CMarkupMSXML::ToVARIANT(nullptr).vt, VT_BSTR);
    _variant_t null(L"hidden");
    null.vt = VT_NULL;
    const _variant_t others[] = {_variant_t(),    null,
                                 _variant_t(5),   _variant_t(true),
                                 _variant_t(1.5), _variant_t(std::int64_t{7})};
    for (const _variant_t& other : others) {
        EXPECT_TRUE(CMarkupMSXML::FromVARIANT(other).IsEmpty()) << other.vt;
    }
}

} // namespace
