// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/serialize.h"

#include "tests/xml/dom/loaded_document.h"

namespace nqp2::dom {
namespace {

TEST(Serialize, GivesBackWhatWasLoaded) {
    const char* const table[] = {
        "<a/>",
        "<a>\n  <b/>\t<c> x </c>\n</a>",
        "<a x=\"1\" y=\"&lt;&gt;&amp;&quot;'\"/>",
        "<a x=\"&amp;amp;&amp;#38;\">&amp;amp;</a>",
        "<a x=\"&#9;&#10;&#13; \">&#13;\n</a>",
        "<a>&amp;&lt;&gt;\"'</a>",
        "<a>x<![CDATA[<&>]]>y<![CDATA[]]></a>",
        "<a xmlns=\"u\"><b><c xmlns=\"v\"><d xmlns=\"\"/></c></b></a>",
        "<p:a xmlns:p=\"u?1&amp;2\" xmlns=\"v?1&amp;2\" p:x=\"1\"><b/><p:c/></p:a>",
        "<p:a xmlns:p=\"u\" xmlns:q=\"v\" q:x=\"1\"><q:b p:x=\"2\" y=\"3\"/></p:a>",
        "<a xml:lang=\"de\" xml:space=\"preserve\"> </a>",
        "<a><!-- c --><?i d ?><?j?></a>",
        "<a>\xE7\xB4\xA0\xF0\xA0\xAE\xB7</a>",
    };
    for (const char* text : table) {
        EXPECT_EQ(LoadedDocument(text).Saved(), std::string(text) + "\r\n");
    }
}

TEST(Serialize, WritesOneFormOfWhatMayBeWrittenDifferently) {
    struct {
        const char* loaded;
        const char* saved;
    } const table[] = {
        {"<a></a>", "<a/>\r\n"},
        {"<a >\r\n<b\n/>\r</a >", "<a>\n<b/>\n</a>\r\n"},
        {"<a x='\n'>&#228;&apos;</a>", "<a x=\" \">\xC3\xA4'</a>\r\n"},
        {"<?xml version='1.0'?><a/>", "<?xml version=\"1.0\"?>\r\n<a/>\r\n"},
        {"<?xml version='1.0' encoding='utf-16' standalone='yes'?><a/>",
         "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n<a/>\r\n"},
        {"<?xml version='1.0' standalone='no' ?>\n\n<?i d?><!--c-->\n<a/><!--e-->",
         "<?xml version=\"1.0\" standalone=\"no\"?>\r\n<?i "
         "d?>\r\n<!--c-->\r\n<a/>\r\n<!--e-->\r\n"},
    };
    for (const auto& row : table) {
        LoadedDocument document(row.loaded);
        EXPECT_EQ(document.Saved(), row.saved);
        EXPECT_EQ(LoadedDocument(row.saved).Saved(), row.saved);
    }
}

TEST(Serialize, SubNodeStandsAloneWithTheDeclarationsItNeeds) {
    const LoadedDocument document(
        "<r xmlns='u' xmlns:p='v' xmlns:z='w'><a p:x='1' p:y='2'><p:b/>t</a><e xmlns=''/></r>");
    struct {
        const char* path;
        const char* xml;
    } const table[] = {
        {"r", "<r xmlns=\"u\" xmlns:p=\"v\" xmlns:z=\"w\"><a p:x=\"1\" p:y=\"2\"><p:b/>t</a>"
              "<e xmlns=\"\"/></r>"},
        {"r/a", "<a xmlns=\"u\" xmlns:p=\"v\" p:x=\"1\" p:y=\"2\"><p:b/>t</a>"},
        {"r/a/p:b", "<p:b xmlns:p=\"v\"/>"},
        {"r/e", "<e xmlns=\"\"/>"},
        {"r/a/text()", "t"},
    };
    for (const auto& row : table) {
        EXPECT_EQ(Serialize(document.First(row.path)), row.xml) << row.path;
    }
}

TEST(Serialize, BuiltTreeRepeatsNoNamespace) {
    Document document(SelectionRule::Names::Namespace);
    Tree& tree = *document.Content();
    tree.Insert(tree.DocumentNode(), tree.CreateInstruction("xml", "version=\"1.0\""), nullptr);
    Node& root = tree.CreateElement("P2Main", "");
    tree.SetAttribute(root, "xmlns", "u");
    tree.Insert(tree.DocumentNode(), root, nullptr);
    Node& content = tree.CreateElement("EditContent", "u");
    tree.Insert(root, content, nullptr);
    tree.Insert(content, tree.CreateElement("Inner", "u"), nullptr);
    tree.Insert(content, tree.CreateElement("x:Foreign", "v"), nullptr);
    tree.Insert(root, tree.CreateElement("Bare", ""), nullptr);
    tree.SetText(*content.firstChild, "");
    EXPECT_EQ(Serialize(tree.DocumentNode()),
              "<?xml version=\"1.0\"?>\r\n<P2Main xmlns=\"u\"><EditContent><Inner></Inner>"
              "<x:Foreign xmlns:x=\"v\"/></EditContent><Bare xmlns=\"\"/></P2Main>\r\n");
}

TEST(Serialize, TextAndCDataOfAnyContentReadBackTheSame) {
    for (const char* content : {"]]>", "a]]>b]]>", "]]]]>>", "<&>\"'\t\n", "\r\n\r", "]]", ""}) {
        LoadedDocument document("<a><b/></a>");
        Tree& tree = document.Nodes();
        tree.SetText(document.First("a/b"), content);
        tree.SetAttribute(document.First("a/b"), "x", content);
        EXPECT_EQ(TextOf(LoadedDocument(document.Saved()).First("a/b")), content);
        EXPECT_EQ(LoadedDocument(document.Saved()).First("a/b").firstAttribute->content, content);
    }
    for (const char* content : {"]]>", "a]]>b]]>", "]]]]>>", "<&>\"'\t\n", "]]"}) {
        LoadedDocument document("<a/>");
        Tree& tree = document.Nodes();
        tree.Insert(*tree.Root(), tree.CreateCharacters(NodeType::CData, content), nullptr);
        EXPECT_EQ(TextOf(LoadedDocument(document.Saved()).Top()), content);
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
    EXPECT_EQ(Serialize(tree.DocumentNode()),
              Repeated("<a>", kDepth - 1) + "<a/>" + Repeated("</a>", kDepth - 1) + "\r\n");
    EXPECT_EQ(SelectAll(tree.DocumentNode(), "/a/a").size(), 1U);
}

} // namespace
} // namespace nqp2::dom
