// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/display_text.h"

#include "console/output_text.h"
#include "console/utf8_text.h"

#include <fmt/core.h>
#include <utf8proc.h>

#include <algorithm>
#include <cstddef>
#include <span>

namespace nqp2::tool {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct CharRange {
    char32_t first;
    char32_t last;
};

/// What a terminal may obey, and what changes the order in which text is shown.
constexpr CharRange kUnprintable[] = {
    {0x0000, 0x001F}, {0x007F, 0x009F}, {0x061C, 0x061C},
    {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069},
};

bool IsIn(std::span<const CharRange> ranges, char32_t ch) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [ch](CharRange range) { return ch >= range.first && ch <= range.last; });
}

struct Decoded {
    char32_t ch;
    std::size_t length;
};

/// The first character of a text that is not empty.
Decoded DecodeFirst(std::string_view text) {
    const Utf8Character first = FirstUtf8(text);
    if (!first.isWhole) {
        return {kReplacement, first.length};
    }
    const auto lead = static_cast<unsigned char>(text[0]);
    char32_t ch = first.length == 1 ? lead : lead & (0x7FU >> first.length);
    for (const char byte : text.substr(1, first.length - 1)) {
        ch = ch << 6U | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    return {ch, first.length};
}

int CharWidth(char32_t ch) {
    return utf8proc_charwidth(static_cast<utf8proc_int32_t>(ch));
}

std::string Escaped(char32_t ch) {
    const auto number = static_cast<unsigned>(ch);
    switch (ch) {
    case U'\n':
        return "\\n";
    case U'\r':
        return "\\r";
    case U'\t':
        return "\\t";
    default:
        return number < 0x80 ? fmt::format("\\x{:02x}", number) : fmt::format("\\u{:04x}", number);
    }
}

} // namespace

std::string Printable(std::string_view text, LineBreaks lineBreaks) {
    std::string out;
    out.reserve(text.size());
    for (;;) {
        const std::size_t printable = PrintableLength(text);
        out += text.substr(0, printable);
        text.remove_prefix(printable);
        if (text.empty()) {
            return out;
        }
        const Decoded next = DecodeFirst(text);
        const bool keep = lineBreaks == LineBreaks::Keep && (next.ch == U'\n' || next.ch == U'\t');
        if (next.ch == kReplacement) {
            out += "\xEF\xBF\xBD";
        } else if (IsIn(kUnprintable, next.ch) && !keep) {
            out += Escaped(next.ch);
        } else {
            out += text.substr(0, next.length);
        }
        text.remove_prefix(next.length);
    }
}

int DisplayWidth(std::string_view text) {
    if (IsPlain(text)) {
        return static_cast<int>(text.size());
    }
    int width = 0;
    while (!text.empty()) {
        const Decoded next = DecodeFirst(text);
        width += CharWidth(next.ch);
        text.remove_prefix(next.length);
    }
    return width;
}

std::string CutToWidth(const std::string& text, int width) {
    if (DisplayWidth(text) <= width) {
        return text;
    }
    std::string_view rest = text;
    int room = width - 1;
    while (!rest.empty()) {
        const Decoded next = DecodeFirst(rest);
        room -= CharWidth(next.ch);
        if (room < 0) {
            break;
        }
        rest.remove_prefix(next.length);
    }
    return text.substr(0, text.size() - rest.size()) + "\xE2\x80\xA6";
}

} // namespace nqp2::tool
