// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NodeHandle.h"

#include "NQP2ParserU/ComError.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/NQXmlParser.h"
#include "tests/support/print_text.h"
#include "tests/xml/captured_texts.h"

#include <gtest/gtest.h>

#include <memory>
#include <tuple>
#include <vector>

namespace {

using Texts = std::vector<CString>;

class NodeHandleTest : public testing::Test {
protected:
    NodeHandleTest() {
        m_document.SetXml(L"<r><i k='x'>1</i><i>2</i><i>3<!--c--></i><e/>"
                          L"<PARAM><NAME>n</NAME><VALUE>v</VALUE></PARAM>"
                          L"<PARAM><NAME>m</NAME></PARAM><PARAM><VALUE>w</VALUE></PARAM>"
                          L"<Param><VALUE>z</VALUE></Param></r>");
    }
    void TearDown() override { EXPECT_EQ(m_debug.Take(), Texts()) << "never tells the debugger"; }

    CNQXmlParser m_document;
    nqp2::test::CapturedTexts m_debug{nqp2::SetDebugOutput};
};

TEST_F(NodeHandleTest, ValueByPathFromDocumentAndNode) {
    const std::tuple<const wchar_t*, int, VARTYPE, const wchar_t*> table[] = {
        {L"//i[2]", 0, VT_BSTR, L"2"},    {L"//e", 0, VT_BSTR, L""}, {L"//none", 0, VT_NULL, L""},
        {L"//none", -3, VT_EMPTY, L""},   {L"//[", 1, VT_NULL, L""}, {L"//p:r", 1, VT_NULL, L""},
        {L"count(//r)", 1, VT_NULL, L""},
    };
    CNQXmlParserNode root = m_document.GetNode(L"r");
    for (const auto& [path, ignoreMissing, type, text] : table) {
        EXPECT_EQ(m_document.GetNodeVal(path, ignoreMissing).vt, type) << CString(path);
        EXPECT_EQ(m_document.GetNodeText(path, ignoreMissing), text) << CString(path);
        EXPECT_EQ(root.GetNodeVal(path, ignoreMissing).vt, type) << CString(path);
        EXPECT_EQ(root.GetNodeText(path, ignoreMissing), text) << CString(path);
    }
    EXPECT_EQ(m_document.GetNodeAttribute(L"//i", L"k"), L"x");
    EXPECT_EQ(m_document.GetNodeAttribute(L"//none", L"k"), L"");
    EXPECT_THROW(m_document.GetNode(L"//["), _com_error);
    EXPECT_THROW(root.GetNodeList(L"i["), _com_error);
    EXPECT_EQ(root.GetNodeList(L"none").IsEmpty() + root.GetNode(L"none").IsEmpty(), 2);
}

TEST_F(NodeHandleTest, WithoutDocumentOrNodeEveryAnswerIsEmpty) {
    CNQXmlParser none;
    EXPECT_EQ(none.GetNodeText(L"//[", 0) + none.GetNodeAttribute(L"a", L"k"), L"");
    EXPECT_EQ(none.GetNode(L"//[").IsEmpty() + none.GetNodeList(L"//[").IsEmpty(), 2);
    CNQXmlParserNode empty = none.FindParamNode(L"//[", L"n");
    CString name;
    _variant_t any;
    EXPECT_EQ(empty.GetNextNode(name, name) + empty.GetNodeInfo(name, any), 0);
    EXPECT_EQ(empty.GetNodeVal(1).vt, VT_NULL);
    EXPECT_EQ(empty.GetNode(L"//[").IsEmpty() + empty.GetNodeList(L"//[").IsEmpty(), 2);
    EXPECT_EQ(empty.IsEmpty() + empty.GetChildNodeList().IsEmpty(), 2);
    EXPECT_EQ(empty.GetXml().Text(), L"");
    EXPECT_EQ(empty.SetNodeText(L"x") + empty.SetParamVal(L"x"), 0);
}

TEST_F(NodeHandleTest, FirstQuestionMovesAFreshListOntoItsFirstNode) {
    using Handle = CNQXmlParserNode;
    CString (*const questions[])(Handle&) = {
        [](Handle& list) { return list.GetNodeText(0); },
        [](Handle& list) { return list.GetXml().Text().Right(5).Left(1); },
        [](Handle& list) { return list.GetNode(L"text()").GetNodeText(0); },
        [](Handle& list) { return list.GetNodeList(L"text()").GetNodeText(0); },
        [](Handle& list) { return list.GetChildNodeList().GetNodeText(0); },
    };
    for (const auto question : questions) {
        CNQXmlParserNode list = m_document.GetNodeList(L"//i");
        EXPECT_EQ(question(list) + question(list), L"11");
        EXPECT_EQ(list.GetNextNode(), 1);
        EXPECT_EQ(question(list), L"2");
        CNQXmlParserNode copy = list;
        EXPECT_EQ(copy.GetNextNode(), 1);
        EXPECT_EQ(list.GetNextNode(), 0) << "they share the iterator";
        EXPECT_EQ(list.IsEmpty(), 0) << "the list is still there";
        EXPECT_EQ(list.GetNodeVal(0).vt, VT_NULL);
    }
}

TEST_F(NodeHandleTest, ChildrenOfEveryKindWithTheirInfo) {
    ASSERT_EQ(m_document.SetXml(L"<r> <p:a xmlns:p='u'>1<b>2</b></p:a><!--c--><![CDATA[d]]>"
                                L"<?t e?></r>"),
              1);
    CNQXmlParserNode children = m_document.GetNode(L"r").GetChildNodeList();
    CString name;
    _variant_t value;
    CString seen;
    while (children.GetNextNode() != 0 && children.GetNodeInfo(name, value) != 0) {
        seen += name + L"=" + value.Text() + L" ";
    }
    EXPECT_EQ(seen, L"#text=  p:a=12 #comment=c #cdata-section=d t=e ");
    EXPECT_EQ(children.GetNodeInfo(name, value), 0) << "at the end";
    EXPECT_EQ(m_document.GetNode(L"//b").GetChildNodeList().GetChildNodeList().IsEmpty(), 1);
}

TEST_F(NodeHandleTest, ParametersAreReadAndTheirValuesRewritten) {
    CNQXmlParserNode list = m_document.GetNodeList(L"//PARAM");
    EXPECT_EQ(list.SetParamVal(L"y"), 0) << "no current node, none is taken";
    CString seen;
    CString name;
    CString value;
    while (list.GetNextNode(name, value) != 0) {
        seen += name + L"=" + value + L" ";
    }
    EXPECT_EQ(seen, L"n=v m= =w ");
    CNQXmlParserNode block = m_document.FindParamNode(L"//PARAM", L"n");
    const std::tuple<_variant_t, int, const wchar_t*> table[] = {
        {_variant_t(), 0, L"v"}, {_variant_t::Null(), 0, L"v"}, {L"<&>", 1, L"<&>"},
        {12, 1, L"12"},          {L"\x01", 0, L"12"},           {L"", 1, L""},
    };
    for (const auto& [given, result, after] : table) {
        EXPECT_EQ(block.SetParamVal(given), result) << CString(after);
        EXPECT_EQ(m_document.GetNodeText(L"//PARAM/VALUE", 0), after);
    }
    EXPECT_EQ(m_document.GetNode(L"//Param").SetParamVal(L"y"), 0) << "another element";
    EXPECT_EQ(m_document.FindParamNode(L"//PARAM", L"m").SetParamVal(L"y"), 0) << "without VALUE";
}

TEST_F(NodeHandleTest, SetNodeTextTakesWhatTheNodeCanHoldAndNeverAdvances) {
    CNQXmlParserNode list = m_document.GetNodeList(L"//i");
    EXPECT_EQ(list.SetNodeText(L"x"), 0);
    const std::tuple<const wchar_t*, const wchar_t*, int> table[] = {
        {L"//i[1]", L"\u7D20<", 1}, {L"//i[1]", L"\x01", 0},
        {L"//i[1]", L"\xffff", 0},  {L"//comment()", L"a--b", 0},
        {L"//comment()", L"a-", 0}, {L"//comment()", L"-a", 1},
        {L"//@k", L"y", 1},         {L"/", L"x", 0},
    };
    for (const auto& [path, text, result] : table) {
        CNQXmlParserNode node = m_document.GetNode(path);
        EXPECT_EQ(node.SetNodeText(text), result) << CString(path) << CString(text);
        EXPECT_EQ(node.GetNodeText(0) == text, result != 0) << CString(path) << CString(text);
    }
}

TEST(NodeHandleLife, OutlivesReloadAndReader) {
    auto reader = std::make_unique<CMarkupMSXML>(L"<r><i>1</i><i>2</i></r>");
    CMSXmlParserNode node = reader->GetNode(L"r");
    CMSXmlParserNode list = reader->GetNodeList(L"//i");
    ASSERT_EQ(reader->SetDoc(L"<other/>"), 1);
    EXPECT_EQ(node.GetNodeText(L"i", 0), L"1");
    reader.reset();
    EXPECT_EQ(list.GetNodeText(0), L"1");
    EXPECT_EQ(node.SetNodeText(L"changed"), 1);
    EXPECT_EQ(list.GetNextNode(), 1);
    node = CMSXmlParserNode();
    EXPECT_EQ(list.GetXml().Text(), L"<i>2</i>") << "also a node that was taken out of its tree";
}

} // namespace
