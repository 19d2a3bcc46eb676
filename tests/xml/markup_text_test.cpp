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
    EXPECT_EQ(CMarkupMSXML::FromBSTR(CMarkupMSXML::ToBSTR(L"\u7D20\xD800")), L"\u7D20\xD800");
    EXPECT_EQ(CMarkupMSXML::FromVARIANT(CMarkupMSXML::ToVARIANT(L"\u7D20")), L"\u7D20");
    EXPECT_TRUE(CMarkupMSXML::FromVARIANT(5).IsEmpty());
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

TEST(Base64, EncodesInLinesAndEveryLengthComesBack) {
    const std::string line(76, 'A');
    const std::pair<std::size_t, std::string> table[] = {
        {0, ""},
        {1, "AA=="},
        {2, "AAA="},
        {56, line.substr(0, 75) + "="},
        {57, line + "\r\n"}, // the one length at which a break ends the text
        {58, line + "\r\nAA=="},
        {114, line + "\r\n" + line + "\r\n"},
    };
    Codec codec;
    for (const auto& [length, text] : table) {
        EXPECT_EQ(codec.Encoded(std::string(length, '\0')), text) << length;
    }
    std::string bytes;
    for (unsigned length = 0; length <= 300; ++length) {
        ASSERT_EQ(codec.Decoded(nqp2::platform::TextFromUtf8(codec.Encoded(bytes))), bytes);
        bytes.push_back(static_cast<char>((length * 37 + 101) & 0xFFU));
    }
    unsigned char byte = 0;
    EXPECT_TRUE(codec.TBase64Encode(&byte, -1).IsEmpty());
    EXPECT_TRUE(codec.TBase64Encode(&byte, 536'870'912).IsEmpty());
    EXPECT_TRUE(codec.TBase64Encode(nullptr, 5).IsEmpty());
}

TEST(Base64, DecodingSkipsWhatIsNotOfTheAlphabet) {
    Codec codec;
    const std::pair<CString, const char*> table[] = {
        {L"", ""},
        {L" Q=U\r\nJ\tD= ", "ABC"},
        {L"Q-U_J*D\u00E4\u7D20", "ABC"},
        {L"QUJDRA", "ABCD"},
        {L"QUJDR", "ABC"},
        {L"QUI=QUI=", "AB\x10P"},
        {L"+/+/", "\xFB\xFF\xBF"},
        {CString(L"QUJD\0RERE", 9), "ABC"},
    };
    for (const auto& [text, bytes] : table) {
        EXPECT_EQ(codec.Decoded(text), bytes) << text;
    }
    CString text = L"z\u00E4\u00FF";
    CString encoded = codec.TBase64Encode(text);
    EXPECT_EQ(encoded, L"euT/");
    EXPECT_EQ(codec.TBase64Decode(encoded), text);
    CString foreign = L"\u7D20a";
    EXPECT_EQ(codec.TBase64Encode(foreign), L"P2E=") << "? for what 8 bits cannot hold";
    CString withZero = L"QUIAQUI=";
    EXPECT_EQ(codec.TBase64Decode(withZero), L"AB");
}

} // namespace
