// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/tree.h"

#include "tests/xml/dom/loaded_document.h"

namespace nqp2::dom {
namespace {

TEST(Tree, InsertsBeforeAndBehind) {
    LoadedDocument document("<r/>");
    Tree& tree = document.Nodes();
    Node& root = *tree.Root();
    Node& b = tree.CreateElement("b", "");
    ASSERT_TRUE(tree.Insert(root, b, nullptr));
    ASSERT_TRUE(tree.Insert(root, tree.CreateElement("a", ""), &b));
    ASSERT_TRUE(tree.Insert(root, tree.CreateElement("c", ""), nullptr));
    ASSERT_TRUE(tree.Insert(root, tree.CreateCharacters(NodeType::Text, "t"), &b));
    EXPECT_EQ(document.Saved(), "<r><a/>t<b/><c/></r>\r\n");
    EXPECT_EQ(b.previous->content, "t");
    EXPECT_EQ(root.lastChild, b.next);
}

TEST(Tree, NodeThatIsTakenOutKeepsItsOwn) {
    LoadedDocument document("<r><a/><b x='1'><c/></b><d/></r>");
    Tree& tree = document.Nodes();
    Node& b = document.First("r/b");
    tree.Unlink(b);
    tree.Unlink(b);
    EXPECT_EQ(document.Saved(), "<r><a/><d/></r>\r\n");
    EXPECT_EQ(Serialize(b), "<b x=\"1\"><c/></b>");
    ASSERT_TRUE(tree.Insert(*tree.Root(), b, tree.Root()->firstChild));
    EXPECT_EQ(document.Saved(), "<r><b x=\"1\"><c/></b><a/><d/></r>\r\n");
    tree.Unlink(document.First("r/d"));
    EXPECT_EQ(tree.Root()->lastChild, &document.First("r/a"));
}

TEST(Tree, DocumentTakesOneElementAndNoText) {
    LoadedDocument document("<r/>");
    Tree& tree = document.Nodes();
    Node& second = tree.CreateElement("s", "");
    EXPECT_FALSE(tree.Insert(tree.DocumentNode(), second, nullptr));
    EXPECT_FALSE(tree.Insert(tree.DocumentNode(), second, tree.Root()));
    EXPECT_FALSE(
        tree.Insert(tree.DocumentNode(), tree.CreateCharacters(NodeType::CData, "t"), nullptr));
    EXPECT_FALSE(tree.SetText(tree.DocumentNode(), "t"));
    EXPECT_TRUE(tree.Insert(tree.DocumentNode(), tree.CreateInstruction("i", "d"), tree.Root()));
    EXPECT_EQ(document.Saved(), "<?i d?>\r\n<r/>\r\n");
    tree.Unlink(*tree.Root());
    EXPECT_EQ(tree.Root(), nullptr);
    EXPECT_TRUE(tree.Insert(tree.DocumentNode(), second, nullptr));
    EXPECT_EQ(document.Saved(), "<?i d?>\r\n<s/>\r\n");
}

TEST(Tree, SetTextReplacesAllChildrenAndParsesNothing) {
    LoadedDocument document("<r>x<a/>y<!--z--></r>");
    Tree& tree = document.Nodes();
    ASSERT_TRUE(tree.SetText(*tree.Root(), "<b>&amp;"));
    EXPECT_EQ(document.Saved(), "<r>&lt;b&gt;&amp;amp;</r>\r\n");
    ASSERT_TRUE(tree.SetText(*tree.Root()->firstChild, "plain"));
    EXPECT_EQ(document.Saved(), "<r>plain</r>\r\n");
}

TEST(Tree, RefusesPlacesThatAreNone) {
    LoadedDocument document("<r a='1'>x<b/><!--c--></r>");
    Tree& tree = document.Nodes();
    Node& root = *tree.Root();
    Node& stray = tree.CreateElement("s", "");
    Node& fresh = tree.CreateElement("f", "");
    EXPECT_FALSE(tree.Insert(root, fresh, &stray)) << "before a node that stands elsewhere";
    EXPECT_FALSE(tree.Insert(document.First("r/b"), fresh, root.firstChild));
    for (Node* const childless : {root.firstChild, root.lastChild, root.firstAttribute}) {
        EXPECT_FALSE(tree.Insert(*childless, fresh, nullptr)) << NodeName(*childless);
    }
    EXPECT_EQ(document.Saved(), "<r a=\"1\">x<b/><!--c--></r>\r\n");
}

TEST(Tree, CopyIsWholeAndStandsAlone) {
    const std::string deep = "<r>" + Repeated("<d>", 200) + "x" + Repeated("</d>", 200) + "</r>";
    const std::string documents[] = {
        "<r/>",
        "<r><a><b><c/></b></a><d/>x</r>",
        "<r xmlns=\"u\" xmlns:p=\"v\" p:k=\"1\">a<p:b k=\"2\"><!--c--><?i "
        "d?></p:b><![CDATA[<]]><e/></r>",
        deep,
    };
    for (const std::string& text : documents) {
        const LoadedDocument source(text);
        Document target(SelectionRule::Names::Namespace);
        Node& copy = target.Content()->Copy(*source.Nodes().Root());
        EXPECT_EQ(copy.parent, nullptr);
        EXPECT_EQ(Serialize(copy), Serialize(*source.Nodes().Root())) << text;
        ASSERT_TRUE(target.Content()->Insert(target.Content()->DocumentNode(), copy, nullptr));
        source.Nodes().SetText(*source.Nodes().Root(), "changed");
        EXPECT_EQ(Serialize(*target.DocumentNode()), text + "\r\n");
    }
}

TEST(Tree, CopyTakesNamespacesFromAboveAlong) {
    const LoadedDocument source("<r xmlns='u' xmlns:p='v'><a p:k='1'><p:b/></a></r>");
    Document target(SelectionRule::Names::Namespace);
    const Node& copy = target.Content()->Copy(source.First("r/a"));
    EXPECT_EQ(Serialize(copy), "<a xmlns=\"u\" xmlns:p=\"v\" p:k=\"1\"><p:b/></a>");
}

TEST(Tree, SetTextMakesOneSectionOnRequest) {
    LoadedDocument document("<r>x<a/></r>");
    Tree& tree = document.Nodes();
    ASSERT_TRUE(tree.SetText(*tree.Root(), "a]]>&", NodeType::CData));
    EXPECT_EQ(document.Saved(), "<r><![CDATA[a]]]]><![CDATA[>&]]></r>\r\n");
    ASSERT_TRUE(tree.SetText(*tree.Root()->firstChild, "b", NodeType::Text));
    EXPECT_EQ(document.Saved(), "<r><![CDATA[b]]></r>\r\n") << "its kind stays";
}

TEST(Tree, SetAttributeAddsBehindOrReplaces) {
    LoadedDocument document("<r a='1' p:a='2' xmlns:p='u'/>");
    Tree& tree = document.Nodes();
    tree.SetAttribute(*tree.Root(), "a", "3");
    tree.SetAttribute(*tree.Root(), "b", "4");
    EXPECT_EQ(document.Saved(), "<r xmlns:p=\"u\" a=\"3\" p:a=\"2\" b=\"4\"/>\r\n");
}

TEST(Tree, NamesOfTheAttributeMap) {
    const LoadedDocument document("<r xmlns='u' xmlns:x='v' x:type='t' plain='q'/>");
    std::vector<std::string> names;
    for (const Node* each = document.First("r").firstAttribute; each != nullptr;
         each = each->next) {
        names.push_back(std::string(NodeName(*each)) + "|" + std::string(Prefix(*each)) + "|" +
                        std::string(BaseName(*each)) + "|" + std::string(each->content));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"xmlns|xmlns||u", "xmlns:x|xmlns|x|v",
                                               "x:type|x|type|t", "plain||plain|q"}));
}

TEST(Tree, TextIsAllTextBelowExactly) {
    const LoadedDocument document(
        "<r> a <!--no--><b>b<![CDATA[ <c> ]]></b>\n<?no no?><d/>&#13;e</r>");
    EXPECT_EQ(TextOf(document.Top()), " a b <c> \n\re");
    EXPECT_EQ(TextOf(document.First("r/d")), "");
    EXPECT_EQ(TextOf(document.First("//comment()")), "no");
}

TEST(Tree, ReplacedTreeLivesAsLongAsAHandle) {
    LoadedDocument document("<r><a>old</a></r>");
    std::shared_ptr<Node> held = document.SelectSingle("r/a");
    const Tree* const oldTree = document.Content().get();
    ASSERT_TRUE(document.LoadText("<r><a>new</a></r>"));
    EXPECT_NE(document.Content().get(), oldTree);
    EXPECT_EQ(TextOf(*held), "old");
    EXPECT_EQ(held->parent->name, "r");
    EXPECT_FALSE(document.LoadText("<r>"));
    document.Clear();
    EXPECT_EQ(TextOf(*held), "old");
}

TEST(Tree, MemoryServesAgainWhenNobodyHoldsTheOldTree) {
    LoadedDocument document("<r><a>old</a></r>");
    const Tree* const tree = document.Content().get();
    const std::size_t used = tree->BytesUsed();
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(document.LoadText("<r><a>new</a></r>"));
        EXPECT_EQ(document.Content().get(), tree);
        EXPECT_EQ(tree->BytesUsed(), used);
    }
}

} // namespace
} // namespace nqp2::dom
