// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <iterator>

namespace {

/// Tag names of main and child position.
CString Where(CMarkupMSXML& markup) {
    return markup.GetTagName() + L"/" + markup.GetChildTagName();
}

class MarkupCursor : public testing::Test {
protected:
    CMarkupMSXML m_markup{L"<?xml version='1.0'?><!--top--><r k='1'>t<a>1</a><!--c--><b><c/><p:d "
                          L"xmlns:p='u'>2</p:d>x<c e='3'/></b><?i j?><a>4</a> </r>"};
};

TEST_F(MarkupCursor, WalksTheElementsOfALevel) {
    ASSERT_EQ(m_markup.FindElem(L"r"), 1);
    EXPECT_EQ(m_markup.FindElem(), 0) << "one document element";
    EXPECT_EQ(Where(m_markup), L"r/");
    ASSERT_EQ(m_markup.IntoElem(), 1);
    EXPECT_EQ(Where(m_markup), L"/");
    for (const wchar_t* const tag : {L"a", L"b", L"a"}) {
        ASSERT_EQ(m_markup.FindElem(tag[0] == L'b' ? L"" : nullptr), 1);
        EXPECT_EQ(Where(m_markup), CString(tag) + L"/");
    }
    for (const wchar_t* const name : {L"a", L"b", L""}) {
        EXPECT_EQ(m_markup.FindElem(name), 0) << "no search starts over";
        EXPECT_EQ(m_markup.GetData(), L"4") << "the position stays";
    }
    m_markup.ResetMainPos();
    EXPECT_EQ(m_markup.FindElem(L"b"), 1) << "names in between are passed over";
    EXPECT_EQ(m_markup.FindElem(L"b"), 0);
    m_markup.ResetPos();
    EXPECT_EQ(m_markup.FindElem(L"a"), 0) << "only the level's own";
    EXPECT_EQ(m_markup.FindElem(L"r"), 1);
}

TEST_F(MarkupCursor, NamesAreQualifiedAndExact) {
    ASSERT_EQ(m_markup.FindElem(), 1);
    ASSERT_EQ(m_markup.IntoElem(), 1);
    ASSERT_EQ(m_markup.FindElem(L"b"), 1);
    for (const wchar_t* const name : {L"d", L"u:d", L"C", L"c ", L"*"}) {
        EXPECT_EQ(m_markup.FindChildElem(name), 0) << CString(name);
    }
    EXPECT_EQ(m_markup.FindChildElem(L"p:d"), 1);
    EXPECT_EQ(m_markup.GetChildData(), L"2");
    EXPECT_EQ(m_markup.FindChildElem(L"c"), 1);
    EXPECT_EQ(m_markup.GetChildAttrib(L"e"), L"3") << "the second one: searches go on";
}

TEST_F(MarkupCursor, ChildSearchStartsAtTheFirstElementWhenThereIsNoMainPosition) {
    EXPECT_EQ(m_markup.FindChildElem(L"b"), 1);
    EXPECT_EQ(Where(m_markup), L"r/b");
    EXPECT_EQ(m_markup.FindChildElem(L"b"), 0);
    EXPECT_EQ(Where(m_markup), L"r/b");
    m_markup.ResetChildPos();
    EXPECT_EQ(Where(m_markup), L"r/");
    EXPECT_EQ(m_markup.FindChildElem(), 1);
    EXPECT_EQ(Where(m_markup), L"r/a");
    EXPECT_EQ(m_markup.FindElem(L"none"), 0);
    EXPECT_EQ(Where(m_markup), L"r/a") << "a search that fails resets nothing";
}

TEST_F(MarkupCursor, IntoAndOutOfElements) {
    EXPECT_EQ(m_markup.IntoElem(), 0);
    EXPECT_EQ(m_markup.OutOfElem(), 0);
    ASSERT_EQ(m_markup.FindChildElem(L"b"), 1);
    EXPECT_EQ(m_markup.IntoElem(), 1);
    EXPECT_EQ(Where(m_markup), L"b/") << "the child becomes the main position";
    EXPECT_EQ(m_markup.IntoElem(), 1);
    EXPECT_EQ(Where(m_markup), L"/");
    EXPECT_EQ(m_markup.FindElem(L"p:d"), 1);
    EXPECT_EQ(m_markup.OutOfElem(), 1);
    EXPECT_EQ(Where(m_markup), L"b/p:d") << "and back";
    EXPECT_EQ(m_markup.OutOfElem(), 1);
    EXPECT_EQ(Where(m_markup), L"r/b");
    EXPECT_EQ(m_markup.OutOfElem(), 0) << "at the top";
    EXPECT_EQ(Where(m_markup), L"r/b");
    EXPECT_EQ(m_markup.FindElem(), 0);
}

TEST_F(MarkupCursor, DataOfEveryKindOfNode) {
    ASSERT_EQ(m_markup.SetDoc(L"<r>t<![CDATA[<d>]]><!--c--><?i j k?><?n?><e/><f><g>1</g> <g>2"
                              L"<!--no--></g></f></r>"),
              1);
    ASSERT_EQ(m_markup.FindElem(), 1);
    EXPECT_EQ(m_markup.GetData(), L"t<d>1 2");
    ASSERT_EQ(m_markup.IntoElem(), 1);
    EXPECT_EQ(m_markup.GetData(), L"");
    struct {
        int kind;
        const wchar_t* name;
        const wchar_t* data;
    } const table[] = {
        {CMarkupMSXML::kTextNode, L"#text", L"t"},
        {CMarkupMSXML::kCDataNode, L"#cdata-section", L"<d>"},
        {CMarkupMSXML::kCommentNode, L"#comment", L"c"},
        {CMarkupMSXML::kInstructionNode, L"i", L"i j k"},
        {CMarkupMSXML::kInstructionNode, L"n", L"n "},
        {CMarkupMSXML::kElementNode, L"e", L""},
        {CMarkupMSXML::kElementNode, L"f", L"1 2"},
    };
    for (const auto& row : table) {
        EXPECT_EQ(m_markup.FindNode(), row.kind) << CString(row.data);
        EXPECT_EQ(m_markup.GetTagName(), row.name);
        EXPECT_EQ(m_markup.GetData(), row.data);
    }
    EXPECT_EQ(m_markup.GetChildData(), L"");
}

TEST_F(MarkupCursor, AttributesByExactQualifiedName) {
    ASSERT_EQ(m_markup.SetDoc(L"<r xmlns='u' xmlns:p='v' p:k='1' k='2'><s k='3'/></r>"), 1);
    EXPECT_EQ(m_markup.GetAttrib(L"k"), L"") << "no position";
    ASSERT_EQ(m_markup.FindChildElem(), 1);
    struct {
        const wchar_t* name;
        const wchar_t* value;
    } const table[] = {{L"k", L"2"}, {L"p:k", L"1"}, {L"xmlns", L"u"}, {L"xmlns:p", L"v"},
                       {L"p", L""},  {nullptr, L""}, {L"", L""},       {L"K", L""}};
    for (const auto& row : table) {
        EXPECT_EQ(m_markup.GetAttrib(row.name), row.value) << CString(row.name);
    }
    EXPECT_EQ(m_markup.GetChildAttrib(L"k"), L"3");
    const wchar_t* const names[] = {L"", L"xmlns", L"xmlns:p", L"p:k", L"k", L""};
    for (int i = -1; i < static_cast<int>(std::size(names)) - 1; ++i) {
        EXPECT_EQ(m_markup.GetAttribName(i), names[i + 1]) << i;
    }
}

TEST_F(MarkupCursor, CountsTheElementsOfItsLevel) {
    EXPECT_EQ(m_markup.GetElemCount(), 1);
    ASSERT_EQ(m_markup.FindElem(), 1);
    ASSERT_EQ(m_markup.IntoElem(), 1);
    ASSERT_EQ(m_markup.FindElem(L"b"), 1);
    EXPECT_EQ(m_markup.GetElemCount(), 3);
    EXPECT_EQ(m_markup.GetElemCount(L"a"), 2);
    EXPECT_EQ(m_markup.GetElemCount(L"c"), 0);
    EXPECT_EQ(m_markup.GetTagName(), L"b") << "nothing moved";
}

TEST_F(MarkupCursor, MainPositionCanBeHandedOver) {
    ASSERT_EQ(m_markup.FindElem(), 1);
    const IXMLDOMNodePtr root = m_markup.GetMainPosPtr();
    ASSERT_EQ(m_markup.IntoElem(), 1);
    EXPECT_EQ(m_markup.GetMainPosPtr(), nullptr);
    EXPECT_EQ(m_markup.SetMainPosPtr(nullptr), 0);
    EXPECT_EQ(m_markup.SetMainPosPtr(m_markup.GetDocumentPtr() != nullptr ? root : nullptr), 1);
    EXPECT_EQ(m_markup.FindChildElem(L"b"), 1);
    EXPECT_EQ(m_markup.GetChildSubDoc().Left(6), L"<b><c/");
    EXPECT_EQ(m_markup.RemoveElem(), 1);
    EXPECT_EQ(m_markup.SetMainPosPtr(root), 0) << "it stands in no document any more";
}

TEST_F(MarkupCursor, EveryLoadResetsIt) {
    ASSERT_EQ(m_markup.FindChildElem(L"b"), 1);
    EXPECT_EQ(m_markup.SetDoc(L"<r><"), 0);
    EXPECT_EQ(Where(m_markup), L"/");
    EXPECT_EQ(m_markup.FindElem(), 0) << "the document is empty";
    EXPECT_EQ(m_markup.SetDoc(L"<s/>"), 1);
    ASSERT_EQ(m_markup.FindElem(L"s"), 1);
    EXPECT_EQ(m_markup.Load(L"/no/such/file.xml"), 0);
    EXPECT_EQ(Where(m_markup), L"/");
    EXPECT_EQ(m_markup.OutOfElem(), 0);
    EXPECT_EQ(m_markup.GetDoc(), L"");
}

} // namespace
