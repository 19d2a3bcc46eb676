// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

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

std::string SomeBytes(std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<char>((i * 37 + count * 101) & 0xFFU));
    }
    return bytes;
}

/// Bit by bit, without groups and lines: shares no step with the encoder under test.
std::string PlainBase64(const std::string& bytes) {
    std::string text;
    const std::size_t bits = bytes.size() * 8;
    for (std::size_t first = 0; first < bits; first += 6) {
        unsigned value = 0;
        for (std::size_t bit = first; bit < first + 6; ++bit) {
            const unsigned byte = bit < bits ? static_cast<unsigned char>(bytes[bit / 8]) : 0U;
            value = value * 2 + ((byte >> (7 - bit % 8)) & 1U);
        }
        text += "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"[value];
    }
    return text.append((4 - text.size() % 4) % 4, '=');
}

std::string WithoutBreaks(const std::string& text) {
    std::string joined;
    std::size_t lineStart = 0;
    for (std::size_t end = 0; (end = text.find("\r\n", lineStart)) != std::string::npos;) {
        EXPECT_EQ(end - lineStart, 76U);
        joined += text.substr(lineStart, end - lineStart);
        lineStart = end + 2;
    }
    EXPECT_LE(text.size() - lineStart, 76U);
    return joined + text.substr(lineStart);
}

TEST(Base64, ShapeOfTheText) {
    const std::string line(76, 'A');
    struct {
        std::size_t length;
        std::string text;
    } const table[] = {
        {0, ""},
        {1, "AA=="},
        {2, "AAA="},
        {3, "AAAA"},
        {4, "AAAAAA=="},
        {56, line.substr(0, 75) + "="},
        {57, line + "\r\n"}, // the one length at which a break ends the text
        {58, line + "\r\nAA=="},
        {59, line + "\r\nAAA="},
        {60, line + "\r\nAAAA"},
        {113, line + "\r\n" + line.substr(0, 75) + "="},
        {114, line + "\r\n" + line + "\r\n"},
        {115, line + "\r\n" + line + "\r\nAA=="},
    };
    for (const auto& row : table) {
        EXPECT_EQ(Codec().Encoded(std::string(row.length, '\0')), row.text) << row.length;
    }
}

TEST(Base64, AgreesWithAPlainEncoderAndComesBack) {
    Codec codec;
    for (std::size_t length = 0; length <= 300; ++length) {
        const std::string bytes = SomeBytes(length);
        const std::string text = codec.Encoded(bytes);
        ASSERT_EQ(WithoutBreaks(text), PlainBase64(bytes)) << length;
        ASSERT_EQ(codec.Decoded(nqp2::platform::TextFromUtf8(text)), bytes) << length;
    }
}

TEST(Base64, LengthsThatCannotBeEncodedGiveNothing) {
    Codec codec;
    unsigned char byte = 0;
    EXPECT_TRUE(codec.TBase64Encode(&byte, -1).IsEmpty());
    EXPECT_TRUE(codec.TBase64Encode(&byte, 536'870'912).IsEmpty());
    EXPECT_TRUE(codec.TBase64Encode(nullptr, 5).IsEmpty());
}

TEST(Base64, DecodingSkipsWhatIsNotOfTheAlphabet) {
    struct {
        const wchar_t* text;
        const char* bytes;
    } const table[] = {
        {L"", ""},
        {L"QUJD", "ABC"},
        {L" Q=U\r\nJ\tD= ", "ABC"},
        {L"Q-U_J*D\u00E4\u7D20", "ABC"},
        {L"QUJDRA==", "ABCD"},
        {L"QUJDRA", "ABCD"},
        {L"QUJDREU", "ABCDE"},
        {L"QUJDR", "ABC"}, // a lone character holds no byte
        {L"QUI=QUI=", "AB\x10P"},
        {L"====", ""},
    };
    for (const auto& row : table) {
        EXPECT_EQ(Codec().Decoded(row.text), row.bytes) << CString(row.text);
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
