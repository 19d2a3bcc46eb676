// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/utf8_text.h"

#include <algorithm>
#include <iterator>

namespace nqp2::tool {
namespace {

/// Characters of several bytes by their first byte; after the second come 80 to BF.
struct Lead {
    unsigned char first, last;
    unsigned char secondFirst, secondLast;
    std::size_t length;
};
constexpr Lead kLeads[] = {
    {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3}, {0xE1, 0xEC, 0x80, 0xBF, 3},
    {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
    {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

} // namespace

Utf8Character FirstUtf8(std::string_view text) {
    if (ByteAt(text, 0) < 0x80) {
        return {1, true};
    }
    const auto* const lead =
        std::find_if(std::begin(kLeads), std::end(kLeads), [&](const Lead& row) {
            return ByteAt(text, 0) >= row.first && ByteAt(text, 0) <= row.last;
        });
    if (lead == std::end(kLeads)) {
        return {};
    }
    unsigned char low = lead->secondFirst;
    unsigned char high = lead->secondLast;
    std::size_t length = 1;
    while (length < std::min(lead->length, text.size()) && ByteAt(text, length) >= low &&
           ByteAt(text, length) <= high) {
        ++length;
        low = 0x80;
        high = 0xBF;
    }
    return {length, length == lead->length};
}

std::string BytesUnlessUtf8(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::size_t position = 0;
    for (Utf8Character next{0, true}; next.isWhole && position < text.size();
         position += next.isWhole ? next.length : 0) {
        next = FirstUtf8(text.substr(position));
    }
    std::string bytes;
    for (std::size_t i = 0; position < text.size() && i < text.size(); ++i) {
        bytes += kDigits[ByteAt(text, i) >> 4U];
        bytes += kDigits[ByteAt(text, i) & 0xFU];
    }
    return bytes;
}

} // namespace nqp2::tool
