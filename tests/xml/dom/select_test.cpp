// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/ComError.h"
#include "tests/xml/dom/loaded_document.h"
#include "xml/dom/path_set.h"
#include "xml/dom/path_walk.h"
#include "xml/dom/select.h"
#include "xml/dom/selection_rule.h"
#include "xml/dom/xpath.h"

#include <array>
#include <memory>
#include <random>

namespace nqp2::dom {
namespace {

using Names = SelectionRule::Names;
using Texts = std::vector<std::string>;

using Question = std::pair<const char*, Texts>;

constexpr const char* kCatalogue =
    "<r xmlns='u' xmlns:p='v' xml:lang='de'><a x='1'>A</a><p:a p:x='2' y='3'>B</p:a>"
    "<a><b xmlns='w'>C</b>D<![CDATA[E]]></a><!--F--><?i G?></r>";

TEST(Select, AnswersAnyExpressionByQualifiedNames) {
    const LoadedDocument document(kCatalogue);
    const Question table[] = {
        {"//a[1]", {"A"}},
        {"/r/a[2]/b", {"C"}},
        {"//a/b | //p:a", {"B", "C"}},
        {"//a[b]", {"CDE"}},
        {"//p:*", {"B"}},
        {"//*[@p:x='2']", {"B"}},
        {"//@p:x", {"2"}},
        {"//@*", {"de", "1", "2", "3"}},
        {"//@xml:lang", {"de"}},
        {"//@lang", {}},
        {"//\xE7\xB4\xA0", {}},
        {"//q:a[1]", {}},
        {"//a[name()='a'][2]/text()", {"D", "E"}},
        {"//*[name()='p:a']", {"B"}},
        {"//b/ancestor::a/preceding-sibling::p:a", {"B"}},
        {"//*[.=\"it's p:a\"]", {}},
        {"//comment()", {"F"}},
        {"//processing-instruction()", {"G"}},
        {"/", {"ABCDE"}},
    };
    for (const auto& [path, answer] : table) {
        EXPECT_EQ(TextsOf(SelectAll(document.Top(), path)), answer) << path;
    }
}

TEST(Select, AnswersByNamespaceWithBoundPrefixes) {
    LoadedDocument document(kCatalogue, Names::Namespace);
    ASSERT_TRUE(document.SetSelectionNamespaces("xmlns:m='u' xmlns:n='v' xmlns:o='w'"));
    const Question table[] = {
        {"//a", {}},           {"//a[1]", {}},   {"//m:a", {"A", "CDE"}},
        {"//m:a[2]", {"CDE"}}, {"//n:a", {"B"}}, {"//n:a[@n:x]", {"B"}},
        {"//o:b", {"C"}},      {"//m:b[1]", {}}, {"//@xml:lang", {"de"}},
        {"//@lang", {}},       {"//@y", {"3"}},
    };
    for (const auto& [path, answer] : table) {
        EXPECT_EQ(TextsOf(SelectAll(document.Top(), path)), answer) << path;
    }
}

TEST(Select, ThrowsForWhatIsNoSetOfNodes) {
    testing::internal::CaptureStderr();
    const LoadedDocument document("<a/>");
    for (const char* path : {"", "//", "//a[", "a b", "count(//a)", "'text'", "1+1", "true()",
                             "nothing()", "p:nothing(//a)", "$v", "//a[$v]", "id('"}) {
        try {
            SelectAll(document.Top(), path);
            ADD_FAILURE() << path << " is no error";
        } catch (const _com_error& error) {
            EXPECT_EQ(error.Error(), E_FAIL);
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Select, EndsAnExpressionThatWouldRunForHours) {
    const LoadedDocument document("<a>" + Repeated("<b/>", 20'000) + "</a>");
    EXPECT_THROW(SelectAll(document.Top(), "//b[count(//b[count(//b) > 1]) > 1]"), _com_error);
}

TEST(Select, AsksFromEveryKindOfNode) {
    const LoadedDocument document(kCatalogue);
    for (const char* path :
         {"//@y", "//@p:x", "//a/text()", "//comment()", "//processing-instruction()"}) {
        SCOPED_TRACE(path);
        Node& context = document.First(path);
        EXPECT_EQ(SelectFirst(context, "a"), nullptr);
        EXPECT_EQ(SelectFirst(context, "./a"), nullptr);
        EXPECT_EQ(SelectFirst(context, "."), &context);
        EXPECT_EQ(SelectFirst(context, ".."), context.parent);
        EXPECT_EQ(SelectFirst(context, "//b"), &document.First("//b"));
    }
}

TEST(Select, DeclarationAsContextSelectsNothingRelative) {
    const LoadedDocument document("<a xmlns:p='u'/>");
    Node& declaration = *document.First("a").firstAttribute;
    EXPECT_EQ(SelectAll(declaration, "b").size(), 0U);
    EXPECT_THROW(SelectAll(declaration, "./b"), _com_error);
}

TEST(Select, ListSurvivesChangeAndReload) {
    LoadedDocument document("<a><b>1</b><b>2</b></a>");
    const std::shared_ptr<NodeList> list = document.SelectNodes("//b");
    document.Nodes().Unlink(*list->Item(0));
    ASSERT_TRUE(document.LoadText("<c/>"));
    ASSERT_EQ(list->Length(), 2U);
    EXPECT_EQ(TextOf(*list->Next()), "1");
    EXPECT_EQ(TextOf(*list->Item(1)), "2");
    EXPECT_EQ(TextOf(*list->Next()), "2");
    EXPECT_EQ(list->Next(), nullptr);
    EXPECT_EQ(list->Next(), nullptr);
    EXPECT_EQ(list->Item(2), nullptr);
}

using Bindings = std::vector<std::pair<std::string, std::string>>;

TEST(ParseBindings, ReadsAListOfDeclarationsAndNothingElse) {
    const std::pair<const char*, std::optional<Bindings>> table[] = {
        {"", Bindings{}},
        {" \t\r\n", Bindings{}},
        {"xmlns:p='u'", Bindings{{"p", "u"}}},
        {" xmlns:p=\"it's\" \n xmlns:q='\"' ", Bindings{{"p", "it's"}, {"q", "\""}}},
        {"xmlns='u' xmlns:p='v'", Bindings{{"p", "v"}}},
        {"xmlns:p=''", Bindings{{"p", ""}}},
        {"xmlns:p=u", std::nullopt},
        {"xmlns:p='u", std::nullopt},
        {"xmlns:='u'", std::nullopt},
        {"xmlnsp='u'", std::nullopt},
        {"xmlns:p='u' x='1'", std::nullopt},
        {"xmlns:p='u' x", std::nullopt},
        {"xmlns:p q='u'", std::nullopt},
    };
    for (const auto& [text, bindings] : table) {
        EXPECT_EQ(ParseBindings(text), bindings) << text;
    }
}

TEST(SelectionNamespaces, BadTextClearsTheBindings) {
    LoadedDocument document("<p:a xmlns:p='u'/>", SelectionRule::Names::Namespace);
    ASSERT_TRUE(document.SetSelectionNamespaces("xmlns:x='u'"));
    EXPECT_NE(document.SelectSingle("x:a"), nullptr);
    ASSERT_TRUE(document.LoadText("<q:a xmlns:q='u'/>"));
    EXPECT_NE(document.SelectSingle("x:a"), nullptr) << "bindings outlive a load";
    EXPECT_FALSE(document.SetSelectionNamespaces("xmlns:x=###"));
    EXPECT_ANY_THROW(static_cast<void>(document.SelectSingle("x:a")));
}

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

TEST(PathSet, FindsWhatEachPathAloneWouldFind) {
    constexpr std::string_view kPaths[] = {"A",     "A/B",     "A/B/C", "A/D", "E",  "A/B/C/C",
                                           "p:A/B", "A/B/C/D", "none",  "B",   "C/A"};
    const PathSet set(kPaths);
    const char* const documents[] = {
        "<r/>",
        "<r><A/><A><B>1</B><B>2<C>3</C></B></A><A><D>4</D></A><E>5</E></r>",
        "<r xmlns='u' xmlns:p='v'>x<p:A><B>1</B></p:A><!--A--><A><B><C><C>2</C></C></B></A></r>",
        "<r><A><A><B>1</B></A><B><B><C>2</C></B></B></A><B>3<C/></B><C><A>4</A></C></r>",
        "<r><A><B><D/></B></A><A><B><C/></B></A><A><B><C><D>1</D></C></B></A><none.>x</none.></r>",
    };
    for (const char* const text : documents) {
        const LoadedDocument document(text);
        Node& root = *document.Nodes().Root();
        std::vector<Node*> found(std::size(kPaths), &root);
        set.Find(root, found);
        for (std::size_t i = 0; i < found.size(); ++i) {
            EXPECT_EQ(found[i], SelectFirst(root, kPaths[i])) << kPaths[i] << " in " << text;
        }
    }
}

} // namespace
} // namespace nqp2::dom
