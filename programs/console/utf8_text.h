// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace nqp2::tool {

inline unsigned char ByteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

struct Utf8Character {
    std::size_t length = 1; ///< bytes
    bool isWhole = false;
};

/// The character at the start of a text that is not empty, or as much of one as is there: what is
/// not whole is shown as one U+FFFD.
Utf8Character FirstUtf8(std::string_view text);

/// The bytes of a text that is no UTF-8, two hexadecimal digits each: in JSON, where such a text is
/// shown with U+FFFD, they stand beside it. "" for one that is UTF-8.
std::string BytesUnlessUtf8(std::string_view text);

} // namespace nqp2::tool
