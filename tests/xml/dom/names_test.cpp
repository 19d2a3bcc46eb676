// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/names.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace nqp2::dom {
namespace {

using namespace std::string_literals;

TEST(Names, QualifiedName) {
    for (const char* const name :
         {"a", "P2Main", "p:a", "_", "a-b.c1", "\xC3\xA4", "\xE7\xB4\xA0:x"}) {
        EXPECT_TRUE(IsQualifiedName(name)) << name;
    }
    for (const std::string& name : {""s, " "s, "a b"s, " a"s, "1a"s, "-a"s, ":a"s, "a:"s, "a:b:c"s,
                                    "a>"s, "a/"s, "a=\"1\""s, "a\0b"s, "\0"s, "a\n"s, "\xFF"s}) {
        EXPECT_FALSE(IsQualifiedName(name)) << name;
    }
}

TEST(Names, CharactersOfAText) {
    for (const std::string& text : {""s, " \t\r\n"s, "<&>"s, "\x7F"s, "\xC2\x85"s, "\xEF\xBF\xBD"s,
                                    "\xF0\x9F\x98\x80"s, "\xF4\x8F\xBF\xBF"s}) {
        EXPECT_TRUE(IsXmlText(text)) << text;
    }
    for (const std::string& text : {"\0"s, "a\x01"s, "\x1F"s, "\x0B"s, "\xEF\xBF\xBE"s, // U+FFFE
                                    "\xED\xA0\x80"s,                                    // surrogate
                                    "\xC0\x80"s, "\xE7\xB4"s, "\x80"s, "\xF4\x90\x80\x80"s}) {
        EXPECT_FALSE(IsXmlText(text)) << ::testing::PrintToString(text);
    }
}

TEST(Names, CommentNeverClosesItself) {
    EXPECT_TRUE(IsComment(" -a- "));
    for (const char* const text : {"--", "a--b", "a-", "-", "\x01"}) {
        EXPECT_FALSE(IsComment(text)) << text;
    }
}

TEST(Names, InstructionNeverIsADeclaration) {
    EXPECT_TRUE(IsInstruction("t", ""));
    EXPECT_TRUE(IsInstruction("xml-stylesheet", "href='? >'"));
    struct {
        const char* target;
        const char* data;
    } const table[] = {{"xml", ""},   {"XML", ""},  {"xMl", "version='1.0'"},
                       {"", "d"},     {"a:b", ""},  {"1", ""},
                       {"t", "a?>b"}, {"t", "\x01"}};
    for (const auto& row : table) {
        EXPECT_FALSE(IsInstruction(row.target, row.data)) << row.target << ' ' << row.data;
    }
    EXPECT_FALSE(IsInstruction(std::string_view("t\0", 2), ""));
}

} // namespace
} // namespace nqp2::dom
