// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/NQXmlParser.h"

#include "platform/ComError.h"
#include "tests/support/print_text.h"
#include "tests/xml/captured_texts.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>
#include <vector>

using nqp2::test::CapturedTexts;

namespace {

using Texts = std::vector<CString>;

static_assert(std::is_base_of_v<NodeHandle, CNQXmlParserNode> &&
                  sizeof(CNQXmlParserNode) == sizeof(NodeHandle),
              "both handles are one implementation");

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
    struct {
        const wchar_t* path;
        int ignoreMissing;
        int result;
        VARTYPE type;
        const wchar_t* text;
    } const table[] = {
        {L"//r/a", 0, 1, VT_BSTR, L"xy"},  {L"//e", 0, 1, VT_BSTR, L""},
        {L"//none", 0, 0, VT_EMPTY, L""},  {L"//none", 1, 1, VT_EMPTY, L""},
        {L"//none", -3, 1, VT_EMPTY, L""}, {L"//[", 1, 0, VT_EMPTY, L""},
        {L"//p:r", 1, 0, VT_EMPTY, L""},   {L"count(//r)", 1, 0, VT_EMPTY, L""},
    };
    for (const auto& row : table) {
        _variant_t value(5);
        EXPECT_EQ(m_document.GetNodeVal(_bstr_t(row.path), value, row.ignoreMissing), row.result)
            << CString(row.path);
        EXPECT_EQ(value.vt, row.type) << CString(row.path);
        const _variant_t answer = m_document.GetNodeVal(CString(row.path), row.ignoreMissing);
        EXPECT_EQ(answer.vt, row.result != 0 ? row.type : VT_NULL) << CString(row.path);
        EXPECT_EQ(m_document.GetNodeText(row.path, row.ignoreMissing), row.text);
    }
}

TEST_F(XmlQuery, AttributesAndParameters) {
    EXPECT_EQ(m_document.GetNodeAttribute(L"//r", L"k"), L"1");
    for (const wchar_t* const path : {L"//none", L"//[", L"//a", L"//a/text()"}) {
        EXPECT_EQ(m_document.GetNodeAttribute(path, L"k"), L"") << CString(path);
    }
    EXPECT_EQ(m_document.FindParamNode(L"//PARAM", L"n").GetNodeText(L"VALUE", 0), L"v");
    EXPECT_EQ(m_document.FindParamNode(L"//PARAM", L"N").IsEmpty(), 1);
    EXPECT_THROW(m_document.FindParamNode(L"//[", L"n"), _com_error);
    EXPECT_THROW(m_document.GetNode(L"//["), _com_error);
    EXPECT_THROW(m_document.GetNodeList(L"//["), _com_error);
    EXPECT_EQ(m_document.GetNode(L"//none").IsEmpty(), 1);
    EXPECT_EQ(m_document.GetNodeList(L"//none").IsEmpty(), 1);
}

TEST_F(XmlQuery, WithoutDocumentEveryAnswerIsEmpty) {
    Queried none;
    _variant_t value(5);
    EXPECT_EQ(none.GetNodeVal(_bstr_t(L"//["), value, 1), 0);
    EXPECT_EQ(value.vt, VT_I4) << "untouched";
    EXPECT_EQ(none.GetNodeVal(CString(L"a"), 1).vt, VT_NULL);
    EXPECT_EQ(none.GetNodeText(L"a", 0), L"");
    EXPECT_EQ(none.GetNodeAttribute(L"a", L"k"), L"");
    EXPECT_EQ(none.GetNode(L"//[").IsEmpty(), 1);
    EXPECT_EQ(none.GetNodeList(L"//[").IsEmpty(), 1);
    EXPECT_EQ(none.FindParamNode(L"//[", L"n").IsEmpty(), 1);
}

TEST_F(XmlQuery, ChildrenOfEveryKindWithTheirInfo) {
    ASSERT_EQ(m_document.SetXml(L"<r> <p:a xmlns:p='u'>1<b>2</b></p:a><!--c--><![CDATA[d]]>"
                                L"<?t e?></r>"),
              1);
    CNQXmlParserNode children = m_document.GetNode(L"r").GetChildNodeList();
    const std::vector<std::pair<CString, CString>> expected = {
        {L"#text", L" "},          {L"p:a", L"12"}, {L"#comment", L"c"},
        {L"#cdata-section", L"d"}, {L"t", L"e"},
    };
    CString name;
    _variant_t value;
    EXPECT_EQ(children.GetNodeInfo(name, value), 1) << "takes the first itself";
    EXPECT_EQ(name, L"#text");
    children = m_document.GetNode(L"r").GetChildNodeList();
    std::vector<std::pair<CString, CString>> seen;
    while (children.GetNextNode() != 0) {
        ASSERT_EQ(children.GetNodeInfo(name, value), 1);
        EXPECT_EQ(value.vt, VT_BSTR);
        seen.emplace_back(name, value.Text());
    }
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(children.GetNodeInfo(name, value), 0) << "at the end";
}

TEST_F(XmlQuery, ChildListOfNothingIsEmpty) {
    CString name = L"kept";
    _variant_t value(5);
    CNQXmlParserNode empty;
    EXPECT_EQ(empty.GetChildNodeList().IsEmpty(), 1);
    EXPECT_EQ(empty.GetNodeInfo(name, value), 0);
    EXPECT_EQ(name, L"kept");
    EXPECT_EQ(m_document.GetNode(L"//e").GetChildNodeList().IsEmpty(), 1);
    CNQXmlParserNode list = m_document.GetNodeList(L"//i");
    EXPECT_EQ(list.GetChildNodeList().GetNodeText(0), L"1") << "of the list's first node";
    EXPECT_EQ(list.GetNextNode(), 1);
    EXPECT_EQ(list.GetNodeText(0), L"2");
}

TEST_F(XmlQuery, HandleAsksBelowItself) {
    CNQXmlParserNode root = m_document.GetNode(L"r");
    EXPECT_EQ(root.GetNode(L"a/b").GetNodeText(0), L"y");
    CNQXmlParserNode list = root.GetNodeList(L"i");
    EXPECT_EQ(list.GetNextNode(), 1);
    EXPECT_EQ(list.SetNodeText(L"3"), 1);
    EXPECT_EQ(m_document.GetNodeText(L"r/i", 0), L"3");
    EXPECT_EQ(root.GetNodeList(L"none").IsEmpty(), 1);
    EXPECT_THROW(root.GetNode(L"p:a"), _com_error);
    EXPECT_EQ(root.GetNodeVal(L"p:a", 1).vt, VT_NULL);
}

} // namespace
