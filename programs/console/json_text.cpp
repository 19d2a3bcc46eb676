// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/json_text.h"

#include "console/output_text.h"
#include "console/utf8_text.h"

#include <algorithm>
#include <cstddef>

namespace nqp2::tool {
namespace {

void PutCode(OutputText& out, unsigned char code) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    out.Put("\\u00", kDigits[code >> 4U], kDigits[code & 0xFU]);
}

void PutAscii(OutputText& out, char ch) {
    constexpr std::string_view kShort = "\"\\\b\f\n\r\t";
    constexpr std::string_view kLetters = "\"\\bfnrt";
    const std::size_t known = kShort.find(ch);
    if (known != std::string_view::npos) {
        out.Put('\\', kLetters[known]);
    } else if (ch < ' ' || ch == 0x7F) {
        PutCode(out, static_cast<unsigned char>(ch));
    } else {
        out.Put(ch);
    }
}

bool IsVerbatim(char ch) {
    return ch >= ' ' && ch <= '~' && ch != '"' && ch != '\\';
}

/// How many characters the text begins with that stand for themselves.
std::size_t VerbatimLength(std::string_view text) {
    const auto* const end = std::find_if_not(text.begin(), text.end(), IsVerbatim);
    return static_cast<std::size_t>(end - text.begin());
}

/// C1 controls have the first byte to themselves up to 9F.
bool IsControl(std::string_view character) {
    return ByteAt(character, 0) == 0xC2 && ByteAt(character, 1) <= 0x9F;
}

} // namespace

void PutEscaped(OutputText& out, std::string_view text) {
    for (;;) {
        const std::size_t verbatim = VerbatimLength(text);
        out.Put(text.substr(0, verbatim));
        text.remove_prefix(verbatim);
        if (text.empty()) {
            return;
        }
        Utf8Character next;
        if (ByteAt(text, 0) < 0x80) {
            PutAscii(out, text[0]);
        } else if (next = FirstUtf8(text); !next.isWhole) {
            out.Put("\xEF\xBF\xBD");
        } else if (const std::string_view character = text.substr(0, next.length);
                   IsControl(character)) {
            PutCode(out, ByteAt(character, 1));
        } else {
            out.Put(character);
        }
        text.remove_prefix(next.length);
    }
}

} // namespace nqp2::tool
