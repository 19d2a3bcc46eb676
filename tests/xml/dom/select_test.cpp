// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/select.h"

#include "platform/ComError.h"
#include "tests/xml/dom/loaded_document.h"

namespace nqp2::dom {
namespace {

using Names = SelectionRule::Names;
using Texts = std::vector<std::string>;

struct Question {
    const char* path;
    Texts answer;
};

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
        {"//*[@x='1']", {"A"}},
        {"//*[@p:x='2']", {"B"}},
        {"//a/@x", {"1"}},
        {"//@p:x", {"2"}},
        {"//@*", {"de", "1", "2", "3"}},
        {"//@xml:lang", {"de"}},
        {"//@lang", {}},
        {"//\xE7\xB4\xA0", {}},
        {"//xml:a", {}},
        {"//q:a[1]", {}},
        {"//a[name()='a'][2]/text()", {"D", "E"}},
        {"//*[name()='p:a']", {"B"}},
        {"//b/ancestor::a/preceding-sibling::p:a", {"B"}},
        {"//*[.=\"it's p:a\"]", {}},
        {"//comment()", {"F"}},
        {"//processing-instruction()", {"G"}},
        {"/", {"ABCDE"}},
    };
    for (const Question& question : table) {
        SCOPED_TRACE(question.path);
        EXPECT_EQ(TextsOf(SelectAll(document.Top(), question.path)), question.answer);
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
    for (const Question& question : table) {
        SCOPED_TRACE(question.path);
        EXPECT_EQ(TextsOf(SelectAll(document.Top(), question.path)), question.answer);
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

} // namespace
} // namespace nqp2::dom
