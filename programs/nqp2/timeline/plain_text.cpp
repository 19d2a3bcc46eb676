// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/plain_text.h"

#include "console/utf8_text.h"
#include "NQP2ParserU/TextBytes.h"

#include <algorithm>
#include <utility>

namespace nqp2::timeline {
namespace {

/// U+00C0 to U+00FF.
constexpr std::string_view kLatin = "AAAAAAACEEEEIIIIDNOOOOOxOUUUUYTs"
                                    "aaaaaaaceeeeiiiidnooooo/ouuuuyty";

constexpr std::pair<std::string_view, char> kMarks[] = {
    {"\xC2\xA0", ' '},     {"\xE2\x80\x90", '-'},  {"\xE2\x80\x91", '-'},  {"\xE2\x80\x93", '-'},
    {"\xE2\x80\x94", '-'}, {"\xE2\x80\x98", '\''}, {"\xE2\x80\x99", '\''}, {"\xE2\x80\x9C", '"'},
    {"\xE2\x80\x9D", '"'}, {"\xE2\x80\x9E", '"'},
};

bool IsControl(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    return first < ' ' || first == 0x7F ||
           (first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0);
}

char Likeness(std::string_view character) {
    if (character.size() == 1) {
        return character.front();
    }
    constexpr char kLatinLead = '\xC3';
    if (character.size() == 2 && character[0] == kLatinLead) {
        return kLatin[static_cast<unsigned char>(character[1]) - 0x80U];
    }
    const auto* const mark = std::find_if(std::begin(kMarks), std::end(kMarks),
                                          [&](const auto& row) { return row.first == character; });
    return mark == std::end(kMarks) ? '?' : mark->second;
}

/// Gives each character of a text to `take`, until that returns false.
template <class Take>
void ForEachCharacter(std::string_view text, Take take) {
    bool goesOn = true;
    while (goesOn && !text.empty()) {
        const tool::Utf8Character next = tool::FirstUtf8(text);
        const std::string_view character = text.substr(0, next.length);
        goesOn = take(!next.isWhole          ? std::string_view("\xEF\xBF\xBD")
                      : IsControl(character) ? std::string_view(" ")
                                             : character);
        text.remove_prefix(next.length);
    }
}

} // namespace

std::string CutText(std::string_view text, std::size_t most) {
    std::size_t length = 0;
    while (length < text.size()) {
        const std::size_t next = length + tool::FirstUtf8(text.substr(length)).length;
        if (next > most) {
            return std::string(text.substr(0, length)) + "...";
        }
        length = next;
    }
    return std::string(text);
}

std::string ShortName(const CString& name) {
    constexpr std::size_t kMostBytes = 80;
    return CutText(BytesFromText(name), kMostBytes);
}

std::string OneLine(std::string_view text) {
    std::string line;
    ForEachCharacter(text, [&](std::string_view character) {
        line += character;
        return true;
    });
    return line;
}

std::string Ascii(std::string_view text, std::size_t most) {
    std::string line;
    ForEachCharacter(text, [&](std::string_view character) {
        line += Likeness(character);
        return line.size() < most;
    });
    return line;
}

} // namespace nqp2::timeline
