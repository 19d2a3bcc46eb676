// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "xml/base64.h"

#include <cstring>
#include <memory>
#include <string>
#include <utility>

namespace {

// The 8-bit form of text is ISO 8859-1: one byte a character, so that byte counts are character
// counts, and every byte has a character.
std::string NarrowText(const CString& text) {
    std::string bytes;
    for (const wchar_t ch : text.View()) {
        bytes.push_back(ch >= 0 && ch <= 0xFF ? static_cast<char>(ch) : '?');
    }
    return bytes;
}

CString WideText(std::string_view bytes) {
    std::wstring text;
    for (const char byte : bytes) {
        text.push_back(static_cast<unsigned char>(byte));
    }
    return CString(text);
}

} // namespace

_bstr_t CMarkupMSXML::ToBSTR(const wchar_t* text) {
    return {text};
}

CString CMarkupMSXML::FromBSTR(const _bstr_t& text) {
    return text.Text();
}

_variant_t CMarkupMSXML::ToVARIANT(const wchar_t* text) {
    return {text};
}

CString CMarkupMSXML::FromVARIANT(const _variant_t& value) {
    return value.Text();
}

CString CMarkupMSXML::TBase64Encode(unsigned char* data, int length) {
    return WideText(nqp2::xml::EncodeBase64(data, length));
}

CString CMarkupMSXML::TBase64Encode(CString& text) {
    std::string bytes = NarrowText(text);
    return TBase64Encode(reinterpret_cast<unsigned char*>(bytes.data()),
                         static_cast<int>(bytes.size()));
}

int CMarkupMSXML::TBase64Decode(const CString& text, unsigned char** out) {
    const std::string bytes = nqp2::xml::DecodeBase64(NarrowText(text));
    auto buffer = std::make_unique<unsigned char[]>(bytes.size() + 1);
    std::memcpy(buffer.get(), bytes.data(), bytes.size());
    *out = buffer.release();
    return static_cast<int>(bytes.size());
}

CString CMarkupMSXML::TBase64Decode(CString& text) {
    const std::string bytes = nqp2::xml::DecodeBase64(NarrowText(text));
    return WideText(bytes.substr(0, bytes.find('\0')));
}
