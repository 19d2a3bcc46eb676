// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/path_walk.h"

#include "platform/ComError.h"
#include "tests/xml/dom/loaded_document.h"
#include "xml/dom/xpath.h"

#include <array>
#include <memory>
#include <random>

namespace nqp2::dom {
namespace {

using Names = SelectionRule::Names;

TEST(SimplePath, IsOnlyAPathOfPlainNames) {
    for (const char* path :
         {"a", "/a", "//a", "a/b", "//P2Main/ClipContent/P2SerialNo.", "p:a/q:b", "_a/b-1"}) {
        EXPECT_TRUE(ParseSimplePath(path).has_value()) << path;
    }
    for (const char* path :
         {"",         "/",     "//", "a/",  "a//b", "///a", " a",   "a ",     "*",
          "//*",      ".",     "..", "./a", "@a",   "a/@b", "a[1]", "text()", "a|b",
          "child::a", "p:a:b", ":a", "p:",  "p:*",  "1a",   "-a",   "a+b"}) {
        EXPECT_FALSE(ParseSimplePath(path).has_value()) << path;
    }
    const std::string longest = Repeated("a/", SimplePath::kMaxSteps - 1) + "a";
    EXPECT_TRUE(ParseSimplePath(longest).has_value());
    EXPECT_FALSE(ParseSimplePath(longest + "/a").has_value());
}

/// Documents and paths made at random from few names, so that they often meet.
class RandomXml {
public:
    std::string Document() { return Element(6, "xmlns:p=\"u1\" xmlns:q=\"u2\""); }

    std::string Path() {
        static constexpr std::array kStarts = {"", "/", "//", "//"};
        std::string path = Pick(kStarts);
        const std::size_t steps = 1 + Below(4);
        for (std::size_t i = 0; i < steps; ++i) {
            path.append(i == 0 ? "" : "/").append(Pick(kNames));
        }
        return path;
    }

    std::size_t Below(std::size_t limit) { return m_engine() % limit; }

private:
    static constexpr std::array kNames = {"a", "a", "b", "p:a", "q:a", "p:b"};
    static constexpr std::array kDeclarations = {
        "", "", "", "xmlns='u1'", "xmlns='u2'", "xmlns=''", "xmlns:p='u2'"};

    template <class List>
    const char* Pick(const List& list) {
        return list[Below(list.size())];
    }

    std::string Element(int depth, std::string declarations) {
        const std::string name = Pick(kNames);
        std::string text = "<" + name + " " + declarations + ">";
        const std::size_t children = depth == 0 ? 0 : Below(5);
        for (std::size_t i = 0; i < children; ++i) {
            text += Below(3) == 0 ? "<!--c-->t" : "";
            text += Element(depth - 1, Pick(kDeclarations));
        }
        return text + "</" + name + ">";
    }

    std::mt19937 m_engine{2026};
};

class WalkAgainstXPath : public testing::TestWithParam<Names> {
protected:
    void SetUp() override {
        m_rule.names = GetParam();
        m_rule.bindings = {{"p", "u1"}, {"q", "u2"}};
    }

    void Compare(Node& context, const std::string& path) {
        const auto simple = ParseSimplePath(path);
        ASSERT_TRUE(simple.has_value()) << path;
        if (m_view == nullptr || !m_view->IsCurrent(Top(context))) {
            m_view = std::make_unique<XPathView>(Top(context), m_rule);
        }
        const std::vector<Node*> expected = m_view->Evaluate(context, path, m_rule);
        ASSERT_EQ(WalkPath(*simple, context, m_rule, false), expected)
            << path << " in " << Serialize(Top(context));
        const std::vector<Node*> first(expected.begin(),
                                       expected.begin() + (expected.empty() ? 0 : 1));
        ASSERT_EQ(WalkPath(*simple, context, m_rule, true), first) << path;
        m_found += expected.size();
    }

    SelectionRule m_rule;
    RandomXml m_random;
    std::unique_ptr<XPathView> m_view;
    std::size_t m_found = 0;
};

INSTANTIATE_TEST_SUITE_P(Rules, WalkAgainstXPath,
                         testing::Values(Names::Qualified, Names::Namespace), [](const auto& rule) {
                             return rule.param == Names::Qualified ? "Qualified" : "Namespace";
                         });

TEST_P(WalkAgainstXPath, GivesTheSameNodesInTheSameOrder) {
    for (int round = 0; round < 150; ++round) {
        LoadedDocument document(m_random.Document(), GetParam());
        std::vector<Node*> elements = SelectAll(document.Top(), "//*");
        for (int i = 0; i < 8; ++i) {
            ASSERT_NO_FATAL_FAILURE(Compare(document.Top(), m_random.Path()));
            Node& element = *elements[m_random.Below(elements.size())];
            ASSERT_NO_FATAL_FAILURE(Compare(element, m_random.Path()));
        }
        Node& taken = *elements[m_random.Below(elements.size())];
        document.Nodes().Unlink(taken);
        for (int i = 0; i < 4; ++i) {
            ASSERT_NO_FATAL_FAILURE(Compare(taken, m_random.Path()));
        }
        m_view.reset(); // another tree may come to stand at the same place
    }
    EXPECT_GT(m_found, 2000U) << "the documents must be worth asking";
}

TEST(WalkPath, SeesEveryChangeOfTheTree) {
    LoadedDocument document("<r><a><b>1</b></a></r>");
    EXPECT_EQ(SelectAll(document.Top(), "//a/b").size(), 1U);
    Tree& tree = document.Nodes();
    Node& second = tree.CreateElement("a", "");
    tree.Insert(second, tree.CreateElement("b", ""), nullptr);
    tree.Insert(*tree.Root(), second, nullptr);
    EXPECT_EQ(SelectAll(document.Top(), "//a/b").size(), 2U);
    tree.Unlink(*second.firstChild);
    EXPECT_EQ(SelectAll(document.Top(), "//a/b").size(), 1U);
    ASSERT_TRUE(document.LoadText("<r><a><a><b>2</b></a><b>3</b></a></r>"));
    EXPECT_EQ(TextsOf(SelectAll(document.Top(), "//a/b")), (std::vector<std::string>{"2", "3"}));
}

TEST(WalkPath, PrefixThatIsNotBoundIsAnErrorByNamespaceOnly) {
    const char* text = "<x:a xmlns:x='u'/>";
    const LoadedDocument byNamespace(text, Names::Namespace);
    for (const char* path : {"x:a", "/x:a", "//x:a", "//x:a[1]"}) {
        EXPECT_THROW(SelectAll(byNamespace.Top(), path), _com_error) << path;
    }
    const LoadedDocument qualified(text);
    EXPECT_EQ(SelectAll(qualified.Top(), "//x:a").size(), 1U);
    EXPECT_EQ(SelectAll(qualified.Top(), "//y:a").size(), 0U);
}

} // namespace
} // namespace nqp2::dom
