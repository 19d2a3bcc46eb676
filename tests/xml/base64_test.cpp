// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"
#include "platform/unicode.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

TEST(TextConversion, CopiesTextAndConvertsNothing) {
    for (const wchar_t* text : {L"", L"P2", L"\u7D20\U00020BB7", L"\xD800"}) {
        EXPECT_EQ(CMarkupMSXML::FromBSTR(CMarkupMSXML::ToBSTR(text)), text);
        const _variant_t variant = CMarkupMSXML::ToVARIANT(text);
        EXPECT_EQ(variant.vt, VT_BSTR);
        EXPECT_EQ(CMarkupMSXML::FromVARIANT(variant), text);
    }
    EXPECT_TRUE(CMarkupMSXML::FromBSTR(CMarkupMSXML::ToBSTR(nullptr)).IsEmpty());
    EXPECT_EQ(CMarkupMSXML::ToVARIANT(nullptr).vt, VT_BSTR);
    _variant_t null(L"hidden");
    null.vt = VT_NULL;
    for (const _variant_t& other : {_variant_t(), null, _variant_t(5), _variant_t(1.5)}) {
        EXPECT_TRUE(CMarkupMSXML::FromVARIANT(other).IsEmpty()) << other.vt;
    }
}

class Codec : public CMarkupMSXML {
public:
    using CMarkupMSXML::TBase64Decode;
    using CMarkupMSXML::TBase64Encode;

    std::string Encoded(std::string bytes) {
        const CString text = TBase64Encode(reinterpret_cast<unsigned char*>(bytes.data()),
                                           static_cast<int>(bytes.size()));
        return {text.View().begin(), text.View().end()};
    }

    std::string Decoded(const CString& text) {
        unsigned char* buffer = nullptr;
        const int length = TBase64Decode(text, &buffer);
        const std::unique_ptr<unsigned char[]> owner(buffer);
        return {reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(length)};
    }
};

TEST(Base64, ShapeOfTheText) {
    const std::string line(76, 'A');
    const std::pair<std::size_t, std::string> table[] = {
        {0, ""},
        {1, "AA=="},
        {2, "AAA="},
        {3, "AAAA"},
        {56, line.substr(0, 75) + "="},
        {57, line + "\r\n"}, // the one length at which a break ends the text
        {58, line + "\r\nAA=="},
        {114, line + "\r\n" + line + "\r\n"},
    };
    for (const auto& [length, text] : table) {
        EXPECT_EQ(Codec().Encoded(std::string(length, '\0')), text) << length;
    }
}

TEST(Base64, EveryLengthComesBackAndTheAlphabetIsTheUsualOne) {
    Codec codec;
    std::string bytes;
    for (unsigned length = 0; length <= 300; ++length) {
        ASSERT_EQ(codec.Decoded(nqp2::platform::TextFromUtf8(codec.Encoded(bytes))), bytes);
        bytes.push_back(static_cast<char>((length * 37 + 101) & 0xFFU));
    }
    std::string counted; // the numbers 0 to 63 of six bits each
    for (unsigned i = 0; i < 64; i += 4) {
        const unsigned group = i << 18U | (i + 1) << 12U | (i + 2) << 6U | (i + 3);
        for (const unsigned shift : {16U, 8U, 0U}) {
            counted += static_cast<char>(group >> shift & 0xFFU);
        }
    }
    EXPECT_EQ(codec.Encoded(counted),
              "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST(Base64, LengthsThatCannotBeEncodedGiveNothing) {
    Codec codec;
    unsigned char byte = 0;
    EXPECT_TRUE(codec.TBase64Encode(&byte, -1).IsEmpty());
    EXPECT_TRUE(codec.TBase64Encode(&byte, 536'870'912).IsEmpty());
    EXPECT_TRUE(codec.TBase64Encode(nullptr, 5).IsEmpty());
}

TEST(Base64, DecodingSkipsWhatIsNotOfTheAlphabet) {
    const std::pair<const wchar_t*, const char*> table[] = {
        {L"", ""},           {L" Q=U\r\nJ\tD= ", "ABC"}, {L"Q-U_J*D\u00E4\u7D20", "ABC"},
        {L"QUJDRA", "ABCD"}, {L"QUJDR", "ABC"},          {L"QUI=QUI=", "AB\x10P"},
    };
    for (const auto& [text, bytes] : table) {
        EXPECT_EQ(Codec().Decoded(text), bytes) << CString(text);
    }
    EXPECT_EQ(Codec().Decoded(CString(L"QUJD\0RERE", 9)), "ABC") << "a zero ends the text";
}

TEST(Base64, TextForms) {
    Codec codec;
    CString text = L"z\u00E4\u00FF";
    CString encoded = codec.TBase64Encode(text);
    EXPECT_EQ(encoded, L"euT/");
    EXPECT_EQ(codec.TBase64Decode(encoded), text);
    CString foreign = L"\u7D20a";
    EXPECT_EQ(codec.TBase64Encode(foreign), L"P2E=");
    CString withZero = L"QUIAQUI=";
    EXPECT_EQ(codec.TBase64Decode(withZero), L"AB");
    CString nothing;
    EXPECT_TRUE(codec.TBase64Encode(nothing).IsEmpty());
    EXPECT_TRUE(codec.TBase64Decode(nothing).IsEmpty());
}

} // namespace
