// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "platform/guard.h"
#include "xml/base64.h"

#include <cstring>
#include <string>

using nqp2::platform::Guarded;

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
    return Guarded(_bstr_t(), [&] { return _bstr_t(text); });
}

CString CMarkupMSXML::FromBSTR(const _bstr_t& text) noexcept {
    return text.Text();
}

_variant_t CMarkupMSXML::ToVARIANT(const wchar_t* text) {
    return Guarded(_variant_t(), [&] { return _variant_t(text); });
}

CString CMarkupMSXML::FromVARIANT(const _variant_t& value) noexcept {
    return value.Text();
}

CString CMarkupMSXML::TBase64Encode(unsigned char* data, int length) {
    return Guarded(CString(), [&] { return WideText(nqp2::xml::EncodeBase64(data, length)); });
}

CString CMarkupMSXML::TBase64Encode(CString& text) {
    return Guarded(CString(), [&] {
        std::string bytes = NarrowText(text);
        return TBase64Encode(reinterpret_cast<unsigned char*>(bytes.data()),
                             static_cast<int>(bytes.size()));
    });
}

int CMarkupMSXML::TBase64Decode(const CString& text, unsigned char** out) {
    return Guarded(0, [&] {
        *out = nullptr;
        const std::string bytes = nqp2::xml::DecodeBase64(NarrowText(text));
        *out = new unsigned char[bytes.size() + 1];
        std::memcpy(*out, bytes.data(), bytes.size());
        return static_cast<int>(bytes.size());
    });
}

CString CMarkupMSXML::TBase64Decode(CString& text) {
    return Guarded(CString(), [&] {
        const std::string bytes = nqp2::xml::DecodeBase64(NarrowText(text));
        return WideText(bytes.substr(0, bytes.find('\0')));
    });
}
