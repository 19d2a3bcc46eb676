// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "platform/guard.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

using nqp2::platform::Guarded;

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kLineBreak = "\r\n";
constexpr int kGroupBytes = 3;
constexpr int kGroupCharacters = 4;
constexpr int kGroupsPerLine = 19;
constexpr int kBitsPerCharacter = 6;

/// Appends the first `characters` characters of one group of up to three bytes.
void AppendGroup(std::string& out, const unsigned char* data, int bytes, int characters) {
    std::uint32_t bits = 0;
    for (int i = 0; i < kGroupBytes; ++i) {
        bits = (bits << 8U) | (i < bytes ? data[i] : 0U);
    }
    for (int i = 0; i < characters; ++i) {
        const int shift = kBitsPerCharacter * (kGroupCharacters - 1 - i);
        out.push_back(kAlphabet[(bits >> static_cast<unsigned>(shift)) & 0x3FU]);
    }
}

int ValueOf(char ch) {
    const std::size_t position = kAlphabet.find(ch);
    return position == std::string_view::npos ? -1 : static_cast<int>(position);
}

/// Base64 text (RFC 4648) with padding, in lines of 76 characters separated by CR LF. Ends with
/// one CR LF when the length is a positive multiple of 57: kept, hosts rely on it. "" for no bytes
/// and for lengths whose text would pass 2 GiB.
std::string EncodeBase64(const unsigned char* data, int length) {
    std::string out;
    if (data == nullptr || length <= 0 ||
        length > std::numeric_limits<std::int32_t>::max() / kGroupCharacters) {
        return out;
    }
    const int groups = length / kGroupBytes;
    const int lines = groups / kGroupsPerLine + 1;
    for (int line = 0; line < lines; ++line) {
        const int first = line * kGroupsPerLine;
        for (int group = first; group < std::min(first + kGroupsPerLine, groups); ++group) {
            AppendGroup(out, data + group * kGroupBytes, kGroupBytes, kGroupCharacters);
        }
        out.append(kLineBreak);
    }
    // Only the last break is taken back: a text of full lines keeps the one before it.
    out.resize(out.size() - kLineBreak.size());
    const int rest = length % kGroupBytes;
    if (rest > 0) {
        AppendGroup(out, data + groups * kGroupBytes, rest, rest + 1);
        out.append(static_cast<std::size_t>(kGroupBytes - rest), '=');
    }
    return out;
}

/// The bytes in a Base64 text up to its end or first zero. Whatever is not of the alphabet is
/// skipped, padding included; a lone last character gives nothing.
std::string DecodeBase64(std::string_view text) {
    std::string out;
    std::uint32_t bits = 0;
    int held = 0;
    for (const char ch : text.substr(0, text.find('\0'))) {
        const int value = ValueOf(ch);
        if (value < 0) {
            continue;
        }
        bits = (bits << kBitsPerCharacter) | static_cast<std::uint32_t>(value);
        held += kBitsPerCharacter;
        if (held >= 8) {
            held -= 8;
            out.push_back(static_cast<char>((bits >> static_cast<unsigned>(held)) & 0xFFU));
        }
    }
    return out;
}

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
    return Guarded(CString(), [&] { return WideText(EncodeBase64(data, length)); });
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
        const std::string bytes = DecodeBase64(NarrowText(text));
        *out = new unsigned char[bytes.size() + 1];
        std::memcpy(*out, bytes.data(), bytes.size());
        return static_cast<int>(bytes.size());
    });
}

CString CMarkupMSXML::TBase64Decode(CString& text) {
    return Guarded(CString(), [&] {
        const std::string bytes = DecodeBase64(NarrowText(text));
        return WideText(bytes.substr(0, bytes.find('\0')));
    });
}
