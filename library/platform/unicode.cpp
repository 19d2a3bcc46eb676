// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/unicode.h"

#include "NQP2ParserU/TextBytes.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <stdexcept>

namespace nqp2::platform {
namespace {

constexpr char32_t kLastCodePoint = 0x10FFFF;
constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kEscapedByte = 0xDC00; ///< plus the byte, 0x80 and up

enum class Flavour { Content, Name };

/// Well-formed sequences by their first byte; what follows the second byte is 80..BF.
struct Lead {
    unsigned char first, last;
    unsigned char secondFirst, secondLast;
    std::size_t length;
};
constexpr Lead kLeads[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};
constexpr Lead kSurrogateLead{0xED, 0xED, 0xA0, 0xBF, 3};

bool IsHighSurrogate(char32_t code) {
    return code >= 0xD800 && code <= 0xDBFF;
}

bool IsLowSurrogate(char32_t code) {
    return code >= 0xDC00 && code <= 0xDFFF;
}

bool IsEscapedByte(char32_t code) {
    return code >= kEscapedByte + 0x80 && code <= kEscapedByte + 0xFF;
}

char32_t Combined(char32_t high, char32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

unsigned char ByteAt(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

bool Fits(const Lead& lead, std::string_view bytes) {
    if (ByteAt(bytes, 0) < lead.first || ByteAt(bytes, 0) > lead.last ||
        bytes.size() < lead.length) {
        return false;
    }
    if (lead.length > 1 &&
        (ByteAt(bytes, 1) < lead.secondFirst || ByteAt(bytes, 1) > lead.secondLast)) {
        return false;
    }
    for (std::size_t i = 2; i < lead.length; ++i) {
        if ((ByteAt(bytes, i) & 0xC0U) != 0x80U) {
            return false;
        }
    }
    return true;
}

/// Bytes of the sequence at the start of `bytes`, or 0 when it is ill-formed.
std::size_t SequenceLength(std::string_view bytes, Flavour flavour) {
    const auto* const found = std::find_if(std::begin(kLeads), std::end(kLeads),
                                           [&](const Lead& lead) { return Fits(lead, bytes); });
    if (found != std::end(kLeads)) {
        return found->length;
    }
    return flavour == Flavour::Content && Fits(kSurrogateLead, bytes) ? kSurrogateLead.length : 0;
}

char32_t DecodedSequence(std::string_view bytes, std::size_t length) {
    constexpr unsigned char kLeadBits[] = {0x7F, 0x1F, 0x0F, 0x07};
    char32_t code = ByteAt(bytes, 0) & kLeadBits[length - 1];
    for (std::size_t i = 1; i < length; ++i) {
        code = (code << 6U) | (ByteAt(bytes, i) & 0x3FU);
    }
    return code;
}

template <class Put>
void DecodeEach(std::string_view bytes, Flavour flavour, Put put) {
    while (!bytes.empty()) {
        const std::size_t length = SequenceLength(bytes, flavour);
        if (length > 0) {
            put(DecodedSequence(bytes, length));
        } else {
            put(flavour == Flavour::Name ? kEscapedByte + ByteAt(bytes, 0) : kReplacement);
        }
        bytes.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

template <class Put>
void DecodeEach(std::u16string_view units, Put put) {
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (IsHighSurrogate(units[i]) && i + 1 < units.size() && IsLowSurrogate(units[i + 1])) {
            put(Combined(units[i], units[i + 1]));
            ++i;
        } else {
            put(char32_t{units[i]});
        }
    }
}

/// The code points of a text, two elements that form a surrogate pair as one.
template <class Put>
void DecodeEach(std::wstring_view text, Put put) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto code = static_cast<char32_t>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<char32_t>(text[i + 1]) : 0;
        if (IsHighSurrogate(code) && IsLowSurrogate(next)) {
            put(Combined(code, next));
            ++i;
        } else {
            put(code <= kLastCodePoint ? code : kReplacement);
        }
    }
}

bool IsAscii(std::string_view bytes) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080U;
    while (bytes.size() >= sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data(), sizeof(word));
        if ((word & kHighBits) != 0) {
            return false;
        }
        bytes.remove_prefix(sizeof(word));
    }
    return std::none_of(bytes.begin(), bytes.end(),
                        [](char ch) { return (static_cast<unsigned char>(ch) & 0x80U) != 0; });
}

// To the end, whatever comes: most texts are ASCII, and many elements are looked at at once.
bool IsAscii(std::wstring_view text) {
    bool isAscii = true;
    for (const wchar_t ch : text) {
        isAscii &= static_cast<char32_t>(ch) <= kLastAscii;
    }
    return isAscii;
}

int CheckedLength(std::size_t length) {
    if (length > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw std::length_error("text too long");
    }
    return static_cast<int>(length);
}

void SetAscii(CString& text, std::string_view bytes) {
    const int length = CheckedLength(bytes.size());
    std::copy(bytes.begin(), bytes.end(), text.GetBuffer(length));
    text.ReleaseBuffer(length);
}

CString TextFromAscii(std::string_view bytes) {
    CString text;
    SetAscii(text, bytes);
    return text;
}

/// Collects what `decode` hands out: counted first, so that the text is allocated once.
template <class Decode>
CString Collected(Decode decode) {
    std::size_t count = 0;
    decode([&](char32_t) { ++count; });
    CString text;
    const int length = CheckedLength(count);
    wchar_t* target = text.GetBuffer(length);
    decode([&](char32_t code) { *target++ = static_cast<wchar_t>(code); });
    text.ReleaseBuffer(length);
    return text;
}

CString TextFromBytes(std::string_view bytes, Flavour flavour) {
    if (IsAscii(bytes)) {
        return TextFromAscii(bytes);
    }
    return Collected([&](auto put) { DecodeEach(bytes, flavour, put); });
}

void AppendUtf8(std::string& bytes, char32_t code) {
    const auto tail = [&](unsigned shift) {
        bytes += static_cast<char>(0x80U | ((code >> shift) & 0x3FU));
    };
    if (code < 0x80) {
        bytes += static_cast<char>(code);
    } else if (code < 0x800) {
        bytes += static_cast<char>(0xC0U | (code >> 6U));
        tail(0);
    } else if (code < 0x10000) {
        bytes += static_cast<char>(0xE0U | (code >> 12U));
        tail(6);
        tail(0);
    } else {
        bytes += static_cast<char>(0xF0U | (code >> 18U));
        tail(12);
        tail(6);
        tail(0);
    }
}

std::string BytesFromText(std::wstring_view text, Flavour flavour) {
    std::string bytes;
    if (IsAscii(text)) {
        bytes.resize(text.size());
        std::transform(text.begin(), text.end(), bytes.begin(),
                       [](wchar_t ch) { return static_cast<char>(ch); });
        return bytes;
    }
    bytes.reserve(text.size());
    DecodeEach(text, [&](char32_t code) {
        if (flavour == Flavour::Name && IsEscapedByte(code)) {
            bytes += static_cast<char>(code - kEscapedByte);
        } else {
            AppendUtf8(bytes, code);
        }
    });
    return bytes;
}

void AppendUtf16(std::u16string& units, wchar_t element) {
    const auto code = static_cast<char32_t>(element);
    if (code < 0x10000) {
        units += static_cast<char16_t>(code);
    } else if (code <= kLastCodePoint) {
        units += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10U));
        units += static_cast<char16_t>(0xDC00 + (code & 0x3FFU));
    } else {
        units += static_cast<char16_t>(kReplacement);
    }
}

} // namespace

Utf8Character FirstCharacter(std::string_view utf8) {
    const std::size_t length = SequenceLength(utf8, Flavour::Name);
    return length > 0 ? Utf8Character{DecodedSequence(utf8, length), length} : Utf8Character{};
}

std::string Utf8FromText(std::wstring_view text) {
    return BytesFromText(text, Flavour::Content);
}

std::string Utf8FromText(const wchar_t* text) {
    return text != nullptr ? Utf8FromText(std::wstring_view(text)) : std::string();
}

CString TextFromUtf8(std::string_view bytes) {
    return TextFromBytes(bytes, Flavour::Content);
}

void SetTextFromUtf8(CString& text, std::string_view bytes) {
    const int length = CheckedLength(bytes.size());
    wchar_t* const place = text.GetBuffer(length);
    unsigned char all = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        all |= byte;
        place[i] = byte;
    }
    text.ReleaseBuffer(length);
    if (all > kLastAscii) {
        text = TextFromUtf8(bytes);
    }
}

std::string NameBytesFromText(std::wstring_view text) {
    return BytesFromText(text, Flavour::Name);
}

CString TextFromNameBytes(std::string_view bytes) {
    return TextFromBytes(bytes, Flavour::Name);
}

std::u16string Utf16FromText(std::wstring_view text) {
    std::u16string units;
    units.reserve(text.size());
    std::for_each(text.begin(), text.end(), [&](wchar_t ch) { AppendUtf16(units, ch); });
    return units;
}

CString TextFromUtf16(std::u16string_view units) {
    return Collected([&](auto put) { DecodeEach(units, put); });
}

} // namespace nqp2::platform

namespace nqp2 {

std::string BytesFromText(const CString& text) {
    return platform::NameBytesFromText(text.View());
}

CString TextFromBytes(std::string_view bytes) {
    return platform::TextFromNameBytes(bytes);
}

} // namespace nqp2
