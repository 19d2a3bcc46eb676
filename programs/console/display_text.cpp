// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/display_text.h"

#include "console/output_text.h"
#include "console/utf8_text.h"

#include <fmt/core.h>

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

/// Blocks of width two after Unicode's East Asian Width property (W and F).
constexpr CharRange kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},
    {0x25FD, 0x25FE},   {0x2614, 0x2615},   {0x2648, 0x2653},   {0x26BD, 0x26BE},
    {0x2E80, 0x303E},   {0x3041, 0x3098},   {0x309B, 0xA4CF},   {0xA960, 0xA97F},
    {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE10, 0xFE19},   {0xFE30, 0xFE6F},
    {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},   {0x16FE0, 0x18D08}, {0x1AFF0, 0x1B2FB},
    {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x1FA70, 0x1FAFF},
    {0x20000, 0x3FFFD},
};

/// Marks on the character before them (general categories Mn and Me), the common ones.
constexpr CharRange kCombining[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A},   {0x064B, 0x065F},
    {0x0670, 0x0670}, {0x06D6, 0x06DC}, {0x093C, 0x093C}, {0x0941, 0x0948},   {0x094D, 0x094D},
    {0x0E31, 0x0E31}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF},   {0x1DC0, 0x1DFF},
    {0x20D0, 0x20FF}, {0x302A, 0x302D}, {0x3099, 0x309A}, {0xFE00, 0xFE0F},   {0xFE20, 0xFE2F},
    {0x200B, 0x200D}, {0x2060, 0x2060}, {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF},
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
    if (ch < kCombining[0].first) {
        return 1;
    }
    if (IsIn(kCombining, ch)) {
        return 0;
    }
    return IsIn(kWide, ch) ? 2 : 1;
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
