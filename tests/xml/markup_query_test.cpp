// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "platform/ComError.h"
#include "tests/support/print_text.h"
#include "tests/xml/captured_texts.h"

#include <gtest/gtest.h>

#include <vector>

using nqp2::test::CapturedTexts;

namespace {

using Texts = std::vector<CString>;

class QueryReader : public CMarkupMSXML {
public:
    using CMarkupMSXML::CMarkupMSXML;
    using CMarkupMSXML::GetNodeVal;
};

class MarkupQuery : public testing::Test {
protected:
    QueryReader m_reader{
        L"<P2Main xmlns='urn:p2' xmlns:xsi='urn:xsi' xsi:type='T' Type='u'>"
        L"<ClipContent><ClipName>0001AA</ClipName><Empty/>"
        L"<Video x='1'>a<b>b</b><![CDATA[c]]></Video></ClipContent>"
        L"<L><PARAM><NAME>n</NAME><VALUE>1</VALUE></PARAM><PARAM><VALUE>2</VALUE></PARAM>"
        L"<PARAM><NAME>n</NAME><VALUE>3</VALUE></PARAM></L></P2Main>"};
    CapturedTexts m_debug{nqp2::SetDebugOutput};
};

TEST_F(MarkupQuery, TextAndWhatTheDebuggerHears) {
    const Texts silent;
    const Texts missing = {L"selectSingleNode Failed", L"selectSingleNode Throw excetption"};
    const Texts thrown = {L"selectSingleNode Throw excetption"};
    struct {
        const wchar_t* path;
        int ignoreMissing;
        const wchar_t* text;
        Texts debug;
    } const table[] = {
        {L"//P2Main/ClipContent/ClipName", 0, L"0001AA", silent},
        {L"//ClipContent/ClipName", 1, L"0001AA", silent},
        {L"P2Main/ClipContent/ClipName", 1, L"0001AA", silent},
        {L"/P2Main/ClipContent/ClipName[1]", 1, L"0001AA", silent},
        {L"//P2Main/ClipContent/Video", 0, L"abc", silent},
        {L"//P2Main/ClipContent/Empty", 0, L"", silent},
        {L"//P2Main/ClipContent/None", 1, L"", silent},
        {L"//P2Main/ClipContent/None", 7, L"", silent},
        {L"//P2Main/ClipContent/None", 0, L"", missing},
        {L"//P2Main/ClipContent/None[1]", 0, L"", missing},
        {L"//clipcontent/ClipName", 0, L"", missing},
        {L"//P2Main/[", 1, L"", thrown},
        {L"//P2Main/[", 0, L"", thrown},
        {L"", 1, L"", thrown},
        {L"count(//P2Main)", 1, L"", thrown},
    };
    for (const auto& row : table) {
        EXPECT_EQ(m_reader.GetNodeText(row.path, row.ignoreMissing), row.text) << CString(row.path);
        EXPECT_EQ(m_debug.Take(), row.debug) << CString(row.path) << row.ignoreMissing;
    }
}

TEST_F(MarkupQuery, ValueTellsEmptyTextFromNoNode) {
    _variant_t value(5);
    EXPECT_EQ(m_reader.GetNodeVal(L"//Empty", value, 0), 1);
    EXPECT_EQ(value.vt, VT_BSTR);
    EXPECT_TRUE(value.Text().IsEmpty());
    EXPECT_EQ(m_reader.GetNodeVal(L"//None", value, 1), 1);
    EXPECT_EQ(value.vt, VT_EMPTY);
    value = _variant_t(5);
    EXPECT_EQ(m_reader.GetNodeVal(L"//None", value, 0), 0);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST_F(MarkupQuery, AttributeByLocalName) {
    const Texts silent;
    struct {
        const wchar_t* path;
        const wchar_t* attribute;
        const wchar_t* value;
        Texts debug;
    } const table[] = {
        {L"//Video", L"x", L"1", silent},
        {L"//Video", L"X", L"", silent},
        {L"//Video", L"none", L"", silent},
        {L"//P2Main", L"type", L"T", silent},
        {L"//P2Main", L"xsi:type", L"", silent},
        {L"//P2Main", L"Type", L"u", silent},
        {L"//P2Main", L"xsi", L"urn:xsi", silent},
        {L"//P2Main", L"", L"urn:p2", silent},
        {L"//P2Main", L"xmlns", L"", silent},
        {L"//Video", L"", L"", silent},
        {L"//None", L"x", L"", {L"selectSingleNode Failed"}},
        {L"//[", L"x", L"", {L"selectSingleNode Throw Exception"}},
        {L"//Video/@x", L"x", L"", silent},
    };
    for (const auto& row : table) {
        EXPECT_EQ(m_reader.GetNodeAttribute(row.path, row.attribute), row.value)
            << CString(row.path) << CString(row.attribute);
        EXPECT_EQ(m_debug.Take(), row.debug) << CString(row.path);
    }
}

TEST_F(MarkupQuery, HandlesAreEmptyForNothingAndPathsThatFailThrow) {
    EXPECT_EQ(m_reader.GetNode(L"//ClipName").IsEmpty(), 0);
    EXPECT_EQ(m_reader.GetNode(L"//None").IsEmpty(), 1);
    CMSXmlParserNode none = m_reader.GetNodeList(L"//None");
    EXPECT_EQ(none.IsEmpty(), 1);
    EXPECT_EQ(none.GetNextNode(), 0);
    EXPECT_THROW(m_reader.GetNode(L"//["), _com_error);
    EXPECT_THROW(m_reader.GetNodeList(L"//["), _com_error);
    EXPECT_THROW(m_reader.FindParamNode(L"//[", L"n"), _com_error);
    EXPECT_EQ(m_debug.Take(), Texts());
}

TEST_F(MarkupQuery, FindsTheFirstParameterOfAName) {
    CMSXmlParserNode found = m_reader.FindParamNode(L"//PARAM", L"n");
    EXPECT_EQ(found.GetNodeText(L"VALUE", 0), L"1");
    EXPECT_EQ(found.GetNextNode(), 0) << "no list";
    EXPECT_EQ(found.GetXml().Text().Left(6), L"<PARAM");
    for (const wchar_t* name : {L"N", L"", L"n ", L"none"}) {
        EXPECT_EQ(m_reader.FindParamNode(L"//PARAM", name).IsEmpty(), 1) << CString(name);
    }
    EXPECT_EQ(m_reader.FindParamNode(L"//None", L"n").IsEmpty(), 1);
    EXPECT_EQ(m_reader.FindParamNode(L"//@*", L"n").IsEmpty(), 1);
}

TEST(MarkupNamespaces, PathsWithoutPrefixMatchWhateverTheDefaultNamespaceIs) {
    const wchar_t* const documents[] = {
        L"<P2Main><ClipContent><ClipName>A</ClipName></ClipContent></P2Main>",
        L"<P2Main xmlns='u'><ClipContent><ClipName>A</ClipName></ClipContent></P2Main>",
        L"<P2Main xmlns='u'><ClipContent xmlns='v'><ClipName>A</ClipName></ClipContent></P2Main>",
        L"<P2Main xmlns='u'><ClipContent><ClipName xmlns=''>A</ClipName></ClipContent></P2Main>",
        (L"<P2Main xmlns:p='u'><ClipContent><p:ClipName/>"
         L"<ClipName>A</ClipName></ClipContent></P2Main>"),
    };
    for (const wchar_t* document : documents) {
        CMarkupMSXML reader(document);
        for (const wchar_t* path : {L"//P2Main/ClipContent/ClipName", L"//ClipName[.='A']"}) {
            EXPECT_EQ(reader.GetNodeText(path, 1), L"A") << CString(document) << CString(path);
        }
    }
}

} // namespace
