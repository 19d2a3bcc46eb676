// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ComError.h"
#include "tests/xml/dom/loaded_document.h"
#include "xml/dom/path_walk.h"
#include "xml/dom/select.h"
#include "xml/dom/xpath.h"

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace nqp2::dom {
namespace {

using Names = SelectionRule::Names;
constexpr const char* kCatalogue =
    "<r xmlns='u' xmlns:p='v' xml:lang='de'><a x='1'>A</a><p:a p:x='2' y='3'>B</p:a>"
    "<a><b xmlns='w'>C</b>D<![CDATA[E]]></a><!--F--><?i G?></r>";

std::string TextsAt(const LoadedDocument& document, std::string_view path) {
    std::string texts;
    std::string scratch;
    for (const Node* const node : SelectAll(document.Top(), path)) {
        texts.append(Text(*node, scratch)).append(" ");
    }
    return texts;
}

TEST(Select, AnswersAnyExpressionByQualifiedNamesOrByNamespace) {
    const LoadedDocument qualified(kCatalogue);
    LoadedDocument byNamespace(kCatalogue, Names::Namespace);
    ASSERT_TRUE(byNamespace.SetSelectionNamespaces("xmlns:m='u' xmlns:n='v' xmlns:o='w'"));
    const std::tuple<const LoadedDocument&, const char*, const char*> table[] = {
        {qualified, "//a[1]", "A "},
        {qualified, "//a/b | //p:a", "B C "},
        {qualified, "//@*", "de 1 2 3 "},
        {qualified, "//q:a[1]", ""},
        {qualified, "//a[2]/text()", "D E "},
        {qualified, "//*[name()='p:a'][@p:x='2']", "B "},
        {qualified, "//b/ancestor::a/preceding-sibling::p:a", "B "},
        {qualified, "//comment() | //processing-instruction()", "F G "},
        {byNamespace, "//a[1]", ""},
        {byNamespace, "//m:a", "A CDE "},
        {byNamespace, "//m:a[2]", "CDE "},
        {byNamespace, "//n:a[@n:x]", "B "},
        {byNamespace, "//@xml:lang", "de "},
    };
    for (const auto& [document, path, answer] : table) {
        EXPECT_EQ(TextsAt(document, path), answer) << path;
    }
}

TEST(Select, ThrowsForWhatIsNoSetOfNodes) {
    testing::internal::CaptureStderr();
    const LoadedDocument document("<a/>");
    for (const char* path : {"", "//", "a b", "count(//a)", "'text'", "1+1", "true()",
                             "p:nothing(//a)", "//a[$v]", "id('"}) {
        EXPECT_THROW(SelectAll(document.Top(), path), _com_error) << path;
    }
    const LoadedDocument many("<a>" + Repeated("<b/>", 20'000) + "</a>");
    EXPECT_THROW(SelectAll(many.Top(), "//b[count(//b[count(//b) > 1]) > 1]"), _com_error)
        << "it would run for hours";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

/// Every path of up to three steps of these names, from the context, the top and anywhere.
std::vector<std::string> ShortPaths() {
    std::vector<std::string> steps = {"a", "b", "p:a", "q:a"};
    for (std::size_t i = 0; steps.size() < 4 + 16 + 64; ++i) {
        for (const char* const name : {"/a", "/b", "/p:a", "/q:a"}) {
            steps.push_back(steps[i] + name);
        }
    }
    std::vector<std::string> paths;
    for (const std::string& path : steps) {
        paths.insert(paths.end(), {path, "/" + path, "//" + path});
    }
    return paths;
}

/// Asks for every short path from below `top` by the walk and by XPath; gives the nodes found.
std::size_t CompareBelow(Node& top, const SelectionRule& rule) {
    const std::vector<std::string> paths = ShortPaths();
    XPathView view(top, rule);
    std::vector<Node*> contexts = SelectAll(top, "//*");
    contexts.push_back(&top);
    std::size_t found = 0;
    for (Node* const context : contexts) {
        for (const std::string& path : paths) {
            std::vector<Node*> expected = view.Evaluate(*context, path, rule);
            found += expected.size();
            const auto simple = ParseSimplePath(path);
            EXPECT_EQ(WalkPath(*simple, *context, rule, false), expected)
                << path << " in " << Serialize(top);
            expected.resize(std::min<std::size_t>(expected.size(), 1));
            EXPECT_EQ(WalkPath(*simple, *context, rule, true), expected) << path;
        }
    }
    return found;
}

TEST(WalkPath, GivesTheSameNodesInTheSameOrderAsXPath) {
    for (const Names names : {Names::Qualified, Names::Namespace}) {
        const LoadedDocument document(
            "<a xmlns:p='u1' xmlns:q='u2'><b><a><a xmlns='u1'><b/><p:a/></a></a><!--c-->t<a/></b>"
            "<p:a><q:a><a/><p:a xmlns:p='u2'><b xmlns='u1'/></p:a></q:a><b><b/></b></p:a>"
            "<a xmlns='u2'><a xmlns=''><a/><q:a/></a><b/></a></a>",
            names);
        const SelectionRule rule = {names, {{"p", "u1"}, {"q", "u2"}}};
        EXPECT_GT(CompareBelow(document.Top(), rule), 300U) << "worth asking";
        Node& taken = document.First(names == Names::Qualified ? "//b" : "/*/*[1]");
        document.Nodes().Unlink(taken);
        CompareBelow(taken, rule);
    }
}

TEST(WalkPath, SeesEveryChangeOfTheTree) {
    LoadedDocument document("<r><a><b>1</b></a></r>");
    EXPECT_EQ(SelectAll(document.Top(), "//a/b").size(), 1U);
    Tree& tree = document.Nodes();
    Node& second = tree.CreateElement("a", "");
    tree.Insert(second, tree.CreateElement("b", ""), nullptr);
    tree.Insert(*tree.Root(), second, nullptr);
    EXPECT_EQ(SelectAll(document.Top(), "//a/b").size(), 2U);
    tree.Unlink(*second.FirstChild());
    EXPECT_EQ(SelectAll(document.Top(), "//a/b").size(), 1U);
    ASSERT_TRUE(document.LoadText("<r><a><a><b>2</b></a><b>3</b></a></r>"));
    EXPECT_EQ(TextsAt(document, "//a/b"), "2 3 ");
}

/// Elements come, go and move, alone and with up to twenty below them, asked for each time.
TEST(WalkPath, SeesMovesOfAnySize) {
    std::mt19937 random(1);
    const LoadedDocument document("<a><b/><p:a xmlns:p='u'><a/></p:a></a>");
    Tree& tree = document.Nodes();
    for (int round = 0; round < 600; ++round) {
        std::vector<Node*> all = SelectAll(document.Top(), "//*[not(self::x)]");
        Node& target = *all[random() % all.size()];
        if (all.size() > 60 && &target != tree.Root()) {
            tree.Unlink(target);
        } else {
            Node& fresh = tree.CreateElement(random() % 2 == 0 ? "a" : "b", "");
            Node* last = &fresh;
            for (std::size_t deep = random() % 20; deep > 0; --deep) {
                Node& child = tree.CreateElement(deep == 1 ? "a" : "x", "");
                tree.Append(*last, child);
                last = &child;
            }
            tree.Insert(target, fresh, random() % 2 == 0 ? target.FirstChild() : nullptr);
        }
        XPathView view(document.Top(), tree.Rule());
        const std::string path = random() % 4 != 0 ? "//a" : "//b/a";
        ASSERT_EQ(SelectAll(document.Top(), path), view.Evaluate(document.Top(), path, tree.Rule()))
            << round;
    }
}

} // namespace
} // namespace nqp2::dom
