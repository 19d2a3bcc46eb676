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
#include <vector>

using nqp2::test::CapturedTexts;

namespace {

using Texts = std::vector<CString>;

class Queried : public CNQXmlParser {
public:
    using CNQXmlParser::GetNodeVal;
};

class XmlQuery : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(
            m_document.SetXml(L"<r k='1'><a>x<b>y</b></a> <e/><i>1</i><i>2</i><PARAM><NAME>n</NAME>"
                              L"<VALUE>v</VALUE></PARAM><PARAM><NAME>n</NAME></PARAM></r>"),
            1);
    }
    void TearDown() override { EXPECT_EQ(m_debug.Take(), Texts()) << "never tells the debugger"; }

    Queried m_document;
    CapturedTexts m_debug{nqp2::SetDebugOutput};
};

TEST_F(XmlQuery, MissingNodeGivesBackTheFlag) {
    const std::tuple<const wchar_t*, int, int, VARTYPE, const wchar_t*> table[] = {
        {L"//r/a", 0, 1, VT_BSTR, L"xy"},  {L"//e", 0, 1, VT_BSTR, L""},
        {L"//none", 0, 0, VT_EMPTY, L""},  {L"//none", 1, 1, VT_EMPTY, L""},
        {L"//none", -3, 1, VT_EMPTY, L""}, {L"//[", 1, 0, VT_EMPTY, L""},
        {L"//p:r", 1, 0, VT_EMPTY, L""},   {L"count(//r)", 1, 0, VT_EMPTY, L""},
    };
    for (const auto& [path, ignoreMissing, result, type, text] : table) {
        _variant_t value(5);
        EXPECT_EQ(m_document.GetNodeVal(_bstr_t(path), value, ignoreMissing), result)
            << CString(path);
        EXPECT_EQ(value.vt, type) << CString(path);
        const _variant_t answer = m_document.GetNodeVal(CString(path), ignoreMissing);
        EXPECT_EQ(answer.vt, result != 0 ? type : VT_NULL) << CString(path);
        EXPECT_EQ(m_document.GetNodeText(path, ignoreMissing), text);
    }
    EXPECT_EQ(m_document.GetNodeAttribute(L"//r", L"k"), L"1");
    EXPECT_EQ(m_document.GetNodeAttribute(L"//none", L"k"), L"");
    EXPECT_EQ(m_document.FindParamNode(L"//PARAM", L"n").GetNodeText(L"VALUE", 0), L"v");
    EXPECT_THROW(m_document.GetNode(L"//["), _com_error);
    EXPECT_THROW(m_document.GetNodeList(L"//["), _com_error);
}

TEST_F(XmlQuery, WithoutDocumentEveryAnswerIsEmpty) {
    Queried none;
    _variant_t value(5);
    EXPECT_EQ(none.GetNodeVal(_bstr_t(L"//["), value, 1), 0);
    EXPECT_EQ(value.vt, VT_I4) << "untouched";
    EXPECT_EQ(none.GetNodeText(L"a", 0) + none.GetNodeAttribute(L"a", L"k"), L"");
    EXPECT_EQ(none.GetNode(L"//[").IsEmpty() + none.GetNodeList(L"//[").IsEmpty(), 2);
    EXPECT_EQ(none.FindParamNode(L"//[", L"n").IsEmpty(), 1);
}

TEST_F(XmlQuery, ChildrenOfEveryKindWithTheirInfo) {
    ASSERT_EQ(m_document.SetXml(L"<r> <p:a xmlns:p='u'>1<b>2</b></p:a><!--c--><![CDATA[d]]>"
                                L"<?t e?></r>"),
              1);
    CNQXmlParserNode children = m_document.GetNode(L"r").GetChildNodeList();
    CString name;
    _variant_t value;
    EXPECT_EQ(children.GetNodeInfo(name, value), 1) << "takes the first itself";
    EXPECT_EQ(name, L"#text");
    children = m_document.GetNode(L"r").GetChildNodeList();
    Texts seen;
    while (children.GetNextNode() != 0) {
        ASSERT_EQ(children.GetNodeInfo(name, value), 1);
        EXPECT_EQ(value.vt, VT_BSTR);
        seen.push_back(name + L"=" + value.Text());
    }
    EXPECT_EQ(seen, (Texts{L"#text= ", L"p:a=12", L"#comment=c", L"#cdata-section=d", L"t=e"}));
    EXPECT_EQ(children.GetNodeInfo(name, value), 0) << "at the end";
    EXPECT_EQ(m_document.GetNode(L"//b").GetChildNodeList().GetChildNodeList().IsEmpty(), 1);
}

class NodeHandleTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(m_debug.Take(), std::vector<CString>()); }

    CMSXmlParserNode List(const wchar_t* path) { return m_reader.GetNodeList(path); }

    CMarkupMSXML m_reader{
        L"<r xmlns='u'><i k='x'>1</i><i>2</i><i>3</i>"
        L"<PARAM><NAME>n</NAME><VALUE>v</VALUE></PARAM><PARAM><NAME>m</NAME></PARAM>"
        L"<PARAM><VALUE>w</VALUE></PARAM><Param><VALUE>z</VALUE></Param></r>"};
    CapturedTexts m_debug{nqp2::SetDebugOutput}; // handles never write to the debugger
};

TEST_F(NodeHandleTest, FirstQuestionMovesAFreshListOntoItsFirstNode) {
    CString (*const questions[])(CMSXmlParserNode&) = {
        [](CMSXmlParserNode& list) { return list.GetNodeText(0); },
        [](CMSXmlParserNode& list) { return list.GetXml().Text().Mid(19, 1); },
        [](CMSXmlParserNode& list) { return list.GetNode(L"text()").GetNodeText(0); },
        [](CMSXmlParserNode& list) { return list.GetNodeList(L"text()").GetNodeText(0); },
    };
    for (const auto question : questions) {
        CMSXmlParserNode list = List(L"//i");
        EXPECT_EQ(question(list), L"1");
        EXPECT_EQ(question(list), L"1");
        EXPECT_EQ(list.GetNextNode(), 1);
        EXPECT_EQ(list.GetNodeText(0), L"2");
    }
}

TEST_F(NodeHandleTest, WalksToTheEndAndStaysThereAndCopiesShareTheIterator) {
    CMSXmlParserNode list = List(L"//i");
    ASSERT_EQ(list.GetNextNode(), 1);
    CMSXmlParserNode copy = list;
    EXPECT_EQ(copy.GetNextNode(), 1);
    EXPECT_EQ(list.GetNodeText(0), L"1");
    EXPECT_EQ(list.GetNextNode(), 1);
    EXPECT_EQ(list.GetNodeText(0), L"3");
    EXPECT_EQ(list.GetNextNode() + list.GetNextNode(), 0);
    EXPECT_EQ(list.IsEmpty(), 0) << "the list is still there";
    EXPECT_EQ(list.GetNodeVal(0).vt, VT_NULL);
    EXPECT_EQ(list.GetXml().Text(), L"");
    EXPECT_EQ(list.SetNodeText(L"x"), 0);
}

TEST_F(NodeHandleTest, EmptyHandleAnswersEverythingWithNothing) {
    CNQXmlParserNode empty;
    CString name = L"kept";
    CString value = L"kept";
    _variant_t any(5);
    EXPECT_EQ(empty.GetNextNode() + empty.GetNextNode(name, value), 0);
    EXPECT_EQ(empty.GetNodeInfo(name, any), 0);
    EXPECT_EQ(name + value, L"keptkept");
    EXPECT_EQ(empty.GetNodeVal(1).vt, VT_NULL);
    EXPECT_TRUE(empty.GetNodeText(L"//[", 0).IsEmpty());
    EXPECT_EQ(empty.GetNode(L"//[").IsEmpty() + empty.GetNodeList(L"//[").IsEmpty(), 2);
    EXPECT_EQ(empty.IsEmpty() + empty.GetChildNodeList().IsEmpty(), 2);
    EXPECT_EQ(empty.GetXml().Text(), L"");
    EXPECT_EQ(empty.SetNodeText(L"x") + empty.SetParamVal(L"x"), 0);
}

TEST_F(NodeHandleTest, ValueByPath) {
    CMSXmlParserNode root = m_reader.GetNode(L"r");
    const std::tuple<const wchar_t*, int, VARTYPE, const wchar_t*> table[] = {
        {L"i", 0, VT_BSTR, L"1"},
        {L"i[2]", 0, VT_BSTR, L"2"},
        {L"//Param/VALUE", 0, VT_BSTR, L"z"},
        {L"none", 1, VT_EMPTY, L""},
        {L"none", 0, VT_NULL, L""},
        {L"i[", 1, VT_NULL, L""},
        {L"r", 1, VT_EMPTY, L""},
    };
    for (const auto& [path, ignoreMissing, type, text] : table) {
        EXPECT_EQ(root.GetNodeVal(path, ignoreMissing).vt, type) << CString(path);
        EXPECT_EQ(root.GetNodeText(path, ignoreMissing), text) << CString(path);
    }
    EXPECT_THROW(root.GetNode(L"i["), _com_error);
    EXPECT_THROW(root.GetNodeList(L"i["), _com_error);
    EXPECT_EQ(root.GetNodeList(L"none").IsEmpty() + root.GetNode(L"none").IsEmpty(), 2);
}

TEST_F(NodeHandleTest, IteratesParameters) {
    CMSXmlParserNode list = List(L"//PARAM");
    CString seen;
    CString name;
    CString value;
    while (list.GetNextNode(name, value) != 0) {
        seen += name + L"=" + value + L" ";
    }
    EXPECT_EQ(seen, L"n=v m= =w ");
}

TEST_F(NodeHandleTest, SetParamValRewritesTheValueOfABlockOnly) {
    CMSXmlParserNode block = m_reader.FindParamNode(L"//PARAM", L"n");
    const std::tuple<_variant_t, int, const wchar_t*> table[] = {
        {_variant_t(), 0, L"v"}, {_variant_t::Null(), 0, L"v"}, {L"<&>", 1, L"<&>"},
        {12, 1, L"12"},          {L"\x01", 0, L"12"},           {L"", 1, L""},
    };
    for (const auto& [value, result, after] : table) {
        EXPECT_EQ(block.SetParamVal(value), result) << CString(after);
        EXPECT_EQ(m_reader.GetNodeText(L"//PARAM/VALUE", 0), after);
    }
    EXPECT_EQ(m_reader.GetNode(L"//Param").SetParamVal(L"y"), 0);
    EXPECT_EQ(m_reader.GetNodeText(L"//Param/VALUE", 0), L"z");
    EXPECT_EQ(m_reader.FindParamNode(L"//PARAM", L"m").SetParamVal(L"y"), 0) << "without VALUE";
    EXPECT_EQ(List(L"//PARAM").SetParamVal(L"y"), 0) << "no current node, none is taken";
}

TEST_F(NodeHandleTest, SetNodeTextReplacesContentAndNeverAdvances) {
    CMSXmlParserNode list = List(L"//i");
    EXPECT_EQ(list.SetNodeText(L"x"), 0);
    ASSERT_EQ(list.GetNextNode(), 1);
    EXPECT_EQ(list.SetNodeText(L"\u7D20<"), 1);
    EXPECT_EQ(m_reader.GetNodeText(L"//i", 0), L"\u7D20<");
    EXPECT_EQ(m_reader.GetNode(L"/").SetNodeText(L"x"), 0) << "a document takes no text";
    for (const wchar_t* text : {L"\x01", L"\xffff", L"a\x0b"}) {
        EXPECT_EQ(list.SetNodeText(text), 0);
    }
    EXPECT_EQ(m_reader.GetNode(L"//@k").SetNodeText(L"y"), 1);
    EXPECT_EQ(m_reader.GetNodeAttribute(L"//i", L"k"), L"y");
}

TEST(NodeHandleLife, OutlivesReloadAndReader) {
    auto reader = std::make_unique<CMarkupMSXML>(L"<r><i>1</i><i>2</i></r>");
    CMSXmlParserNode node = reader->GetNode(L"r");
    CMSXmlParserNode list = reader->GetNodeList(L"//i");
    ASSERT_EQ(reader->SetDoc(L"<other/>"), 1);
    EXPECT_EQ(node.GetNodeText(L"i", 0), L"1");
    ASSERT_EQ(reader->SetDoc(L""), 1);
    reader.reset();
    EXPECT_EQ(list.GetNodeText(0), L"1");
    EXPECT_EQ(node.SetNodeText(L"changed"), 1);
    EXPECT_EQ(node.GetXml().Text(), L"<r>changed</r>");
    EXPECT_EQ(list.GetNextNode(), 1);
    EXPECT_EQ(list.GetNodeText(0), L"2") << "also a node that was taken out of its tree";
    node = CMSXmlParserNode();
    EXPECT_EQ(list.GetXml().Text(), L"<i>2</i>");
}

} // namespace
