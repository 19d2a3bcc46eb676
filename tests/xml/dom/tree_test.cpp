// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/xml/dom/loaded_document.h"
#include "xml/dom/node.h"
#include "xml/dom/serialize.h"
#include "xml/dom/tree.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

namespace nqp2::dom {
namespace {

TEST(Serialize, GivesBackWhatWasLoadedInOneForm) {
    const char* const kept[] = {
        "<a x=\"1\" y=\"&lt;&gt;&amp;&quot;'\"/>",
        "<a x=\"&#9;&#10;&#13; \">&#13;\n</a>",
        "<a>x<![CDATA[<&>]]>y<![CDATA[]]></a>",
        "<p:a xmlns:p=\"u?1&amp;2\" xmlns=\"v?1&amp;2\" p:x=\"1\"><b/><p:c/></p:a>",
        "<a xml:lang=\"de\" xml:space=\"preserve\"> </a>",
        "<a><!-- c --><?i d ?><?j?></a>",
        "<a>\xE7\xB4\xA0\xF0\xA0\xAE\xB7</a>",
    };
    for (const char* text : kept) {
        EXPECT_EQ(LoadedDocument(text).Saved(), std::string(text) + "\r\n");
    }
    const std::pair<const char*, const char*> changed[] = {
        {"<a >\r\n<b\n/>\r</a >", "<a>\n<b/>\n</a>\r\n"},
        {"<a x='\n'>&#228;&apos;</a>", "<a x=\" \">\xC3\xA4'</a>\r\n"},
        {"<?xml version='1.0' standalone='no' ?>\n\n<?i d?><!--c-->\n<a/><!--e-->",
         "<?xml version=\"1.0\" standalone=\"no\"?>\r\n<?i "
         "d?>\r\n<!--c-->\r\n<a/>\r\n<!--e-->\r\n"},
    };
    for (const auto& [loaded, saved] : changed) {
        EXPECT_EQ(LoadedDocument(loaded).Saved(), saved);
        EXPECT_EQ(LoadedDocument(saved).Saved(), saved);
    }
}

TEST(Serialize, SubNodeStandsAloneWithTheDeclarationsItNeeds) {
    const LoadedDocument document("<r xmlns='u' xmlns:p='v'><a p:x='1' p:y='2'><p:b/>t</a>"
                                  "<!--c--><?i d?><![CDATA[<]]><e xmlns=''/></r>");
    const std::pair<const char*, const char*> table[] = {
        {"r", "<r xmlns=\"u\" xmlns:p=\"v\"><a p:x=\"1\" p:y=\"2\"><p:b/>t</a>"
              "<!--c--><?i d?><![CDATA[<]]><e xmlns=\"\"/></r>"},
        {"r/a", "<a xmlns=\"u\" xmlns:p=\"v\" p:x=\"1\" p:y=\"2\"><p:b/>t</a>"},
        {"r/a/p:b", "<p:b xmlns:p=\"v\"/>"},
        {"r/e", "<e xmlns=\"\"/>"},
        {"r/a/text()", "t"},
    };
    for (const auto& [path, xml] : table) {
        EXPECT_EQ(Serialize(document.First(path)), xml) << path;
        const LoadedDocument other("<o/>");
        EXPECT_EQ(Serialize(other.Nodes().Copy(document.First(path))), xml) << "so does a copy";
    }
}

TEST(Attributes, AreFoundAmongManyOfTwoElementsInTurn) {
    const LoadedDocument document("<r><s/></r>");
    Tree& tree = document.Nodes();
    Node* const elements[] = {tree.Root(), tree.Root()->FirstChild()};
    for (int round = 0; round < 600; ++round) {
        Node& element = *elements[round / 50 % 2];
        const std::string name = "n" + std::to_string(round % 120);
        tree.SetAttribute(element, name, std::to_string(round));
        ASSERT_EQ(FindAttribute(element, name)->Content(), std::to_string(round));
    }
    for (const Node* const element : elements) {
        std::set<std::string_view> names;
        for (const Node* each = element->FirstAttribute(); each != nullptr; each = each->Next()) {
            EXPECT_TRUE(names.insert(each->Name()).second) << each->Name();
        }
        EXPECT_GT(names.size(), 64U);
    }
}

TEST(Serialize, AnyDepth) {
    Document document(SelectionRule::Names::Qualified);
    Tree& tree = *document.Content();
    Node* parent = &tree.DocumentNode();
    constexpr std::size_t kDepth = 200'000;
    for (std::size_t i = 0; i < kDepth; ++i) {
        Node& child = tree.CreateElement("a", "");
        ASSERT_TRUE(tree.Insert(*parent, child, nullptr));
        parent = &child;
    }
    const std::string saved = Repeated("<a>", kDepth - 1) + "<a/>" + Repeated("</a>", kDepth - 1);
    EXPECT_EQ(Serialize(tree.DocumentNode()), saved + "\r\n");
    Document other(SelectionRule::Names::Qualified);
    EXPECT_EQ(Serialize(other.Content()->Copy(*tree.Root())), saved);
}

using namespace std::string_literals;

TEST(Names, WhatANameAndATextMayHold) {
    for (const char* const name : {"a", "_", "a-b.c1", "\xE7\xB4\xA0:x"}) {
        EXPECT_TRUE(IsQualifiedName(name)) << name;
    }
    for (const std::string& name : {""s, "1a"s, ":a"s, "a:b:c"s, "a>"s, "a\0b"s, "a\n"s, "\xFF"s}) {
        EXPECT_FALSE(IsQualifiedName(name)) << name;
    }
    EXPECT_TRUE(IsXmlText(" \t\r\n<&>\x7F\xC2\x85\xEF\xBF\xBD\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"));
    // A noncharacter, a surrogate, an overlong form, cut off, alone, beyond the last.
    for (const std::string& text : {"\0"s, "\x0B"s, "\xEF\xBF\xBE"s, "\xED\xA0\x80"s, "\xC0\x80"s,
                                    "\xE7\xB4"s, "\x80"s, "\xF4\x90\x80\x80"s}) {
        EXPECT_FALSE(IsXmlText(text)) << ::testing::PrintToString(text);
    }
}

} // namespace
} // namespace nqp2::dom
