// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/display_text.h"

#include <gtest/gtest.h>

#include <string>

namespace nqp2::tool {
namespace {

TEST(Printable, WritesOutWhatATerminalMayObeyAndReplacesWhatIsNoUtf8) {
    const std::string bad = "\xEF\xBF\xBD";
    const std::pair<std::string, std::string> rows[] = {
        {"Köln 夜", "Köln 夜"},
        {"\x1b[31m\x7f", "\\x1b[31m\\x7f"},
        {std::string("a\0b", 3), "a\\x00b"},
        {"a\tb\r\n", "a\\tb\\r\\n"},
        {"\xC2\x9B", "\\u009b"},     // C1 control: the start of a sequence in one character
        {"\xE2\x80\xAE", "\\u202e"}, // turns the direction of what follows
        {"\xC3z", bad + "z"},        // the next character is kept
        {"\xC3", bad},               // cut off
        {"\xE2\x82", bad},           // one character, as in JSON
        {"\xE2\x82z\xF0\x9F\x8E", bad + "z" + bad},
        {"\xC0\x9B", bad + bad},                    // an escape hidden in a form too long
        {"\xE0\x80\x9B", bad + bad + bad},          // the same in three bytes
        {"\xED\xA0\x80", bad + bad + bad},          // a surrogate
        {"\xF4\x90\x80\x80", bad + bad + bad + bad} // beyond the last character
    };
    for (const auto& [text, shown] : rows) {
        EXPECT_EQ(Printable(text, LineBreaks::Escape), shown);
    }
    EXPECT_EQ(Printable("a\n\tb\r\x1b", LineBreaks::Keep), "a\n\tb\\r\\x1b");
}

TEST(DisplayWidth, CountsTerminalColumns) {
    // Half-width kana, a full-width letter, a letter with a combining mark.
    const std::pair<const char*, int> rows[] = {
        {"", 0},   {"abc", 3}, {"Köln", 4}, {"夜明け", 6}, {"한글", 4},
        {"ｶﾅ", 2}, {"Ａ", 2},  {"🎬", 2},    {"…", 1},      {"a\xCC\x88", 1},
    };
    for (const auto& [text, width] : rows) {
        EXPECT_EQ(DisplayWidth(text), width) << text;
    }
}

TEST(CutToWidth, LeavesRoomForTheEllipsis) {
    const std::tuple<const char*, int, const char*> rows[] = {
        {"abc", 3, "abc"},      {"abcd", 3, "ab…"},   {"abcd", 1, "…"}, {"夜明け", 6, "夜明け"},
        {"夜明け", 5, "夜明…"}, {"夜明け", 4, "夜…"}, // half of one does not fit
    };
    for (const auto& [text, width, cut] : rows) {
        EXPECT_EQ(CutToWidth(text, width), cut);
    }
}

} // namespace
} // namespace nqp2::tool
