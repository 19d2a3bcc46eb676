// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

namespace {

using Kind = CMarkupMSXML::NodeKind;

/// Stands inside r, before its first node.
class Inside : public CMarkupMSXML {
public:
    explicit Inside(const wchar_t* text) : CMarkupMSXML(text) {
        EXPECT_EQ(FindElem(L"r"), 1);
        EXPECT_EQ(IntoElem(), 1);
    }
    CString Doc() {
        CString text = GetDoc();
        text.TrimRight(L"\r\n");
        return text;
    }
};

TEST(MarkupNodes, FindsTheKindsThatAreAskedFor) {
    Inside markup(L"<r>t<a/><!--c--><?i j?><![CDATA[d]]><b/>u</r>");
    EXPECT_EQ(markup.GetNodeType(), 0);
    EXPECT_EQ(markup.FindNode(Kind::kCommentNode | Kind::kCDataNode), Kind::kCommentNode);
    EXPECT_EQ(markup.FindNode(Kind::kCommentNode | Kind::kCDataNode), Kind::kCDataNode);
    EXPECT_EQ(markup.FindNode(Kind::kCommentNode), 0);
    EXPECT_EQ(markup.GetNodeType(), Kind::kCDataNode);
    EXPECT_EQ(markup.FindElem(), 1) << "element searches go on from there";
    EXPECT_EQ(markup.GetTagName(), L"b");
    EXPECT_EQ(markup.FindNode(), Kind::kTextNode);
    EXPECT_EQ(markup.FindNode(), 0);
    markup.ResetMainPos();
    EXPECT_EQ(markup.FindNode(0), 0);
    EXPECT_EQ(markup.FindNode(Kind::kDocumentTypeNode), 0);
    EXPECT_EQ(markup.FindNode(), Kind::kTextNode);
}

TEST(MarkupNodes, MakesEveryKindBesideThePosition) {
    struct {
        int kind;
        const wchar_t* text;
        const wchar_t* made;
    } const table[] = {
        {Kind::kElementNode, L"n", L"<n/>"},
        {Kind::kTextNode, L"<x>", L"&lt;x&gt;"},
        {Kind::kCDataNode, L"<x>", L"<![CDATA[<x>]]>"},
        {Kind::kInstructionNode, L"t d e", L"<?t d e?>"},
        {Kind::kInstructionNode, L"t", L"<?t?>"},
        {Kind::kCommentNode, L"x", L"<!--x-->"},
    };
    for (const auto& row : table) {
        Inside markup(L"<r><a/><b/></r>");
        ASSERT_EQ(markup.FindElem(L"b"), 1);
        EXPECT_EQ(markup.InsertNode(row.kind, row.text), 1);
        EXPECT_EQ(markup.GetNodeType(), row.kind);
        EXPECT_EQ(markup.Doc(), CString(L"<r><a/>") + row.made + L"<b/></r>");
        EXPECT_EQ(markup.RemoveNode(), 1);
        EXPECT_EQ(markup.GetTagName(), L"a") << "to the node before";
        EXPECT_EQ(markup.AddNode(row.kind, row.text), 1);
        EXPECT_EQ(markup.Doc(), CString(L"<r><a/>") + row.made + L"<b/></r>");
    }
}

TEST(MarkupNodes, RefusesWhatWouldSpoilTheDocument) {
    struct {
        int kind;
        const wchar_t* text;
    } const table[] = {
        {Kind::kElementNode, L""},
        {Kind::kElementNode, L"a b"},
        {Kind::kElementNode, nullptr},
        {Kind::kTextNode, L"\x01"},
        {Kind::kCDataNode, L"\xFFFE"},
        {Kind::kCommentNode, L"a--b"},
        {Kind::kCommentNode, L"a-"},
        {Kind::kInstructionNode, L"xml version='1.0'"},
        {Kind::kInstructionNode, L"XML d"},
        {Kind::kInstructionNode, L"t a?>b"},
        {Kind::kInstructionNode, L" d"},
        {Kind::kInstructionNode, nullptr},
        {0, L"a"},
        {Kind::kElementNode | Kind::kTextNode, L"a"},
        {Kind::kAnyNode, L"a"},
    };
    Inside markup(L"<r><a/></r>");
    for (const auto& row : table) {
        EXPECT_EQ(markup.AddNode(row.kind, row.text), 0) << row.kind << CString(row.text);
        EXPECT_EQ(markup.InsertNode(row.kind, row.text), 0) << row.kind << CString(row.text);
    }
    EXPECT_EQ(markup.GetError(), L"");
    EXPECT_EQ(markup.AddNode(Kind::kDocumentTypeNode, L"d"), 0);
    EXPECT_EQ(markup.GetError(), L"XMLDOM: Document Type is Read-Only");
    EXPECT_EQ(markup.Doc(), L"<r><a/></r>");
}

TEST(MarkupNodes, DocumentTakesNothingBeforeItsDeclarationAndNoText) {
    CMarkupMSXML markup(L"<?xml version='1.0'?><r/>");
    EXPECT_EQ(markup.AddNode(Kind::kTextNode, L"t"), 0);
    EXPECT_EQ(markup.InsertNode(Kind::kCommentNode, L"c"), 1);
    EXPECT_EQ(markup.GetDoc(), L"<?xml version=\"1.0\"?>\r\n<!--c-->\r\n<r/>\r\n");
    markup.ResetPos();
    ASSERT_EQ(markup.FindNode(), Kind::kInstructionNode);
    EXPECT_EQ(markup.InsertNode(Kind::kInstructionNode, L"i"), 1);
    EXPECT_EQ(CMarkupMSXML(markup.GetDoc()).GetError(), L"");
}

TEST(MarkupNodes, NodesWithoutChildrenTakeNone) {
    Inside markup(L"<r>t<!--c--><a/></r>");
    for (const int kind : {Kind::kTextNode, Kind::kCommentNode}) {
        ASSERT_EQ(markup.FindNode(), kind);
        EXPECT_EQ(markup.FindChildElem(), 0);
        EXPECT_EQ(markup.AddChildElem(L"n"), 0);
        EXPECT_EQ(markup.AddChildSubDoc(L"<n/>"), 0);
        EXPECT_EQ(markup.AddAttrib(L"k", L"v"), 0);
        EXPECT_EQ(markup.RemoveElem(), 0) << "it is no element";
    }
    EXPECT_EQ(markup.IntoElem(), 1);
    EXPECT_EQ(markup.AddElem(L"n"), 0);
    EXPECT_EQ(markup.OutOfElem(), 1);
    EXPECT_EQ(markup.Doc(), L"<r>t<!--c--><a/></r>");
}

TEST(MarkupNodes, SetDataReplacesWhatAnElementHolds) {
    Inside markup(L"<r><a>x<b/></a></r>");
    ASSERT_EQ(markup.FindElem(L"a"), 1);
    ASSERT_EQ(markup.FindChildElem(L"b"), 1);
    EXPECT_EQ(markup.SetChildData(L"1", 1), 1);
    EXPECT_EQ(markup.Doc(), L"<r><a>x<b><![CDATA[1]]></b></a></r>");
    EXPECT_EQ(markup.SetChildData(2), 1);
    EXPECT_EQ(markup.SetChildData(std::int64_t{3}), 1);
    EXPECT_EQ(markup.SetChildData(0.5), 1);
    EXPECT_EQ(markup.Doc(), L"<r><a>x<b>0.5</b></a></r>");
    EXPECT_EQ(markup.SetData(L"<y>"), 1);
    EXPECT_EQ(markup.Doc(), L"<r><a>&lt;y&gt;</a></r>");
}

TEST(MarkupNodes, SetDataOfOtherKinds) {
    struct {
        int kind;
        const wchar_t* data;
        int result;
        const wchar_t* written;
        const wchar_t* error;
    } const table[] = {
        {Kind::kTextNode, L"<", 1, L"&lt;", L""},
        {Kind::kCDataNode, L"]]>", 1, L"<![CDATA[]]]]><![CDATA[>]]>", L""},
        {Kind::kCommentNode, L"new", 1, L"<!--new-->", L""},
        {Kind::kCommentNode, L"a--b", 0, L"<!--c-->", L""},
        {Kind::kInstructionNode, L"i new data", 1, L"<?i new data?>", L""},
        {Kind::kInstructionNode, L"i", 1, L"<?i?>", L""},
        {Kind::kInstructionNode, L"i ?>", 0, L"<?i j?>", L""},
        {Kind::kInstructionNode, L"k new", 0, L"<?i j?>",
         L"Specified Target does not match current node"},
        {Kind::kInstructionNode, L"", 0, L"<?i j?>",
         L"Specified Target does not match current node"},
    };
    for (const auto& row : table) {
        Inside markup(L"<r>t<![CDATA[d]]><!--c--><?i j?></r>");
        ASSERT_EQ(markup.FindNode(row.kind), row.kind);
        EXPECT_EQ(markup.SetData(row.data), row.result) << CString(row.data);
        EXPECT_EQ(markup.GetSubDoc(), row.written) << CString(row.data);
        EXPECT_EQ(markup.GetError(), row.error);
    }
    CMarkupMSXML declared(L"<?xml version='1.0'?><r/>");
    ASSERT_EQ(declared.FindNode(), Kind::kInstructionNode);
    EXPECT_EQ(declared.SetData(L"xml version='1.1'"), 0) << "the declaration stays";
    EXPECT_EQ(declared.GetDoc(), L"<?xml version=\"1.0\"?>\r\n<r/>\r\n");
}

TEST(MarkupNodes, SubDocumentsGoWhereElementsGo) {
    using Add = int (CMarkupMSXML::*)(const wchar_t*);
    const wchar_t* const part = L"<?xml version='1.0'?><!--out--><n xmlns='u'>1<m/></n>";
    struct {
        Add main;
        Add child;
        const wchar_t* result;
    } const table[] = {
        {&CMarkupMSXML::AddSubDoc, &CMarkupMSXML::AddChildSubDoc,
         L"<r><a/><n xmlns=\"u\">1<m/></n><b/></r>"},
        {&CMarkupMSXML::InsertSubDoc, &CMarkupMSXML::InsertChildSubDoc,
         L"<r><n xmlns=\"u\">1<m/></n><a/><b/></r>"},
    };
    for (const auto& row : table) {
        Inside inside(L"<r><a/><b/></r>");
        ASSERT_EQ(inside.FindElem(L"a"), 1);
        EXPECT_EQ((inside.*row.main)(part), 1);
        EXPECT_EQ(inside.Doc(), row.result);
        EXPECT_EQ(inside.GetSubDoc(), L"<n xmlns=\"u\">1<m/></n>");
        Inside above(L"<r><a/><b/></r>");
        ASSERT_EQ(above.OutOfElem(), 1);
        ASSERT_EQ(above.FindChildElem(L"a"), 1);
        EXPECT_EQ((above.*row.child)(part), 1);
        EXPECT_EQ(above.Doc(), row.result);
        EXPECT_EQ(above.GetChildSubDoc(), L"<n xmlns=\"u\">1<m/></n>");
    }
}

TEST(MarkupNodes, SubDocumentsThatAreNone) {
    CMarkupMSXML markup(L"<r/>");
    EXPECT_EQ(markup.GetSubDoc(), L"");
    EXPECT_EQ(markup.GetChildSubDoc(), L"");
    EXPECT_EQ(markup.AddChildSubDoc(L"<n/>"), 0) << "no main position";
    EXPECT_EQ(markup.AddSubDoc(L"<n/>"), 0) << "a second document element";
    EXPECT_EQ(markup.GetError(), L"");
    EXPECT_EQ(markup.AddSubDoc(L"<n>"), 0);
    EXPECT_NE(markup.GetError(), L"");
    ASSERT_EQ(markup.FindElem(), 1);
    EXPECT_EQ(markup.AddChildSubDoc(nullptr), 0);
    EXPECT_EQ(markup.InsertChildSubDoc(L""), 0);
    EXPECT_EQ(markup.GetDoc(), L"<r/>\r\n");
    CMarkupMSXML fresh;
    EXPECT_EQ(fresh.AddSubDoc(L"<n/>"), 1);
    EXPECT_EQ(fresh.GetDoc(), L"<n/>\r\n");
}

} // namespace
