// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "platform/unicode.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using TextAdd = int (CMarkupMSXML::*)(const wchar_t*, const wchar_t*);

constexpr const wchar_t* kDeclaration =
    L"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\r\n";

CString Doc(CMarkupMSXML& markup) {
    CString text = markup.GetDoc();
    text.TrimRight(L"\r\n");
    return text;
}

/// A document with the cursor on r, its child position before the first.
class Edited : public CMarkupMSXML {
public:
    explicit Edited(const wchar_t* text) : CMarkupMSXML(text) { EXPECT_EQ(FindElem(L"r"), 1); }
};

/// The main position below r, on the element of that name; before the first for null.
class EditedInside : public Edited {
public:
    explicit EditedInside(const wchar_t* text, const wchar_t* name = nullptr) : Edited(text) {
        EXPECT_EQ(IntoElem(), 1);
        EXPECT_EQ(name == nullptr ? 1 : FindElem(name), 1);
    }
};

TEST(MarkupEdit, WhereAnElementGoes) {
    const std::tuple<bool, const wchar_t*, const wchar_t*> table[] = {
        {true, nullptr, L"<r>t<a/>u<b/>v<n/></r>"}, {true, L"a", L"<r>t<a/><n/>u<b/>v</r>"},
        {true, L"b", L"<r>t<a/>u<b/><n/>v</r>"},    {false, nullptr, L"<r><n/>t<a/>u<b/>v</r>"},
        {false, L"a", L"<r>t<n/><a/>u<b/>v</r>"},   {false, L"b", L"<r>t<a/>u<n/><b/>v</r>"},
    };
    for (const auto& [isAdd, reference, result] : table) {
        EditedInside inside(L"<r>t<a/>u<b/>v</r>", reference);
        const TextAdd main =
            isAdd ? TextAdd{&CMarkupMSXML::AddElem} : TextAdd{&CMarkupMSXML::InsertElem};
        EXPECT_EQ((inside.*main)(L"n", nullptr), 1);
        EXPECT_EQ(Doc(inside), result);
        EXPECT_EQ(inside.GetTagName(), L"n") << "it is the main position";
        Edited above(L"<r>t<a/>u<b/>v</r>");
        ASSERT_EQ(reference == nullptr ? 1 : above.FindChildElem(reference), 1);
        EXPECT_EQ(isAdd ? above.AddChildElem(L"n", L"") : above.InsertChildElem(L"n", L""), 1);
        EXPECT_EQ(Doc(above), result);
        EXPECT_EQ(above.GetTagName(), L"r");
        EXPECT_EQ(above.GetChildTagName(), L"n") << "it is the child position";
    }
}

TEST(MarkupEdit, AddsFollowEachOther) {
    CMarkupMSXML markup;
    ASSERT_EQ(markup.CreateMainRoot(L"r", nullptr), 1);
    EXPECT_EQ(markup.AddChildElem(L"c", L"1"), 1);
    EXPECT_EQ(markup.AddChildElem(L"d", L"2"), 1);
    ASSERT_EQ(markup.IntoElem(), 1);
    EXPECT_EQ(markup.AddElem(L"e", L"<&>"), 1);
    EXPECT_EQ(markup.AddChildElem(L"f"), 1);
    EXPECT_EQ(markup.InsertElem(L"g"), 1);
    EXPECT_EQ(markup.GetChildTagName(), L"") << "the main level's work clears it";
    EXPECT_EQ(Doc(markup),
              CString(kDeclaration) + L"<r><c>1</c><d>2</d><g/><e>&lt;&amp;&gt;<f/></e></r>");
}

TEST(MarkupEdit, NumbersAsText) {
    Edited markup(L"<r/>");
    markup.AddChildElem(L"a", -7);
    markup.AddChildElem(L"b", std::numeric_limits<std::int64_t>::min());
    markup.AddChildElem(L"c", 29.97);
    markup.InsertChildElem(L"d", 0);
    markup.InsertChildElem(L"e", std::int64_t{1} << 40);
    markup.InsertChildElem(L"f", 25.0);
    markup.AddChildAttrib(L"k", 5);
    markup.SetAttrib(L"k", -5);
    EXPECT_EQ(Doc(markup), L"<r k=\"-5\"><a>-7</a><b>-9223372036854775808</b><f k=\"5\">25</f>"
                           L"<e>1099511627776</e><d>0</d><c>29.97</c></r>");
    ASSERT_EQ(markup.IntoElem(), 1);
    markup.AddElem(L"g", 1U);
    markup.AddElem(L"h", std::int64_t{2});
    markup.AddElem(L"i", 0.25);
    markup.InsertElem(L"j", 4LL);
    markup.InsertElem(L"k", std::int64_t{5});
    markup.InsertElem(L"l", 1e-3);
    EXPECT_GT(Doc(markup).Find(L"<g>1</g><h>2</h><l>0.001</l><k>5</k><j>4</j><i>0.25</i>"), 0);
    markup.SetData(6ULL);
    EXPECT_EQ(markup.GetData(), L"6");
    markup.SetData(std::int64_t{7}, 1);
    EXPECT_EQ(markup.GetSubDoc(), L"<l><![CDATA[7]]></l>");
    markup.SetData(0.5);
    EXPECT_EQ(markup.GetData(), L"0.5");
}

TEST(MarkupEdit, MainRootStartsANewDocument) {
    CMarkupMSXML markup(L"<old><a/></old>");
    ASSERT_EQ(markup.FindChildElem(), 1);
    EXPECT_EQ(markup.CreateMainRoot(L"r", L"\u7D20"), 1);
    EXPECT_EQ(markup.GetDoc(), CString(kDeclaration) + L"<r>\u7D20</r>\r\n");
    EXPECT_EQ(markup.GetTagName(), L"r");
    EXPECT_EQ(markup.GetChildTagName(), L"");
    EXPECT_EQ(markup.CreateMainRoot(L"s"), 1);
    EXPECT_EQ(markup.GetDoc(), CString(kDeclaration) + L"<s/>\r\n");
    EXPECT_EQ(markup.CreateMainRoot(L"no name"), 0);
    markup.SetDefaultNamespace(L"u");
    EXPECT_EQ(markup.CreateMainRoot(L"r"), 1);
    EXPECT_EQ(markup.AddChildElem(L"a"), 1);
    markup.SetDefaultNamespace(nullptr);
    EXPECT_EQ(markup.AddChildElem(L"b"), 1);
    EXPECT_EQ(Doc(markup), CString(kDeclaration) + L"<r xmlns=\"u\"><a/><b xmlns=\"\"/></r>");
}

TEST(MarkupEdit, SecondDocumentElementIsRefused) {
    CMarkupMSXML markup;
    ASSERT_EQ(markup.CreateMainRoot(L"r"), 1);
    const CString before = markup.GetDoc();
    for (const TextAdd add :
         {TextAdd{&CMarkupMSXML::AddElem}, TextAdd{&CMarkupMSXML::InsertElem}}) {
        EXPECT_EQ((markup.*add)(L"s", L"x"), 0);
        markup.ResetPos();
        EXPECT_EQ((markup.*add)(L"s", L"x"), 0);
        EXPECT_EQ(markup.GetDoc(), before);
        ASSERT_EQ(markup.FindElem(), 1);
    }
    ASSERT_EQ(markup.RemoveElem(), 1);
    EXPECT_EQ(markup.InsertElem(L"s"), 1);
    EXPECT_EQ(Doc(markup), CString(kDeclaration) + L"<s/>") << "never before the declaration";
}

TEST(MarkupEdit, WhatCannotBeMadeIsRefused) {
    CMarkupMSXML empty;
    EXPECT_EQ(empty.AddChildElem(L"a"), 0);
    EXPECT_EQ(empty.InsertChildElem(L"a"), 0);
    EXPECT_EQ(empty.AddAttrib(L"k", L"v"), 0);
    EXPECT_EQ(empty.AddChildAttrib(L"k", L"v"), 0);
    EXPECT_EQ(empty.SetData(L"x"), 0);
    EXPECT_EQ(empty.SetChildData(L"x"), 0);
    EXPECT_EQ(empty.RemoveElem(), 0);
    EXPECT_EQ(empty.RemoveChildElem(), 0);

    Edited markup(L"<r><a/></r>");
    ASSERT_EQ(markup.FindChildElem(), 1);
    for (const wchar_t* const name : {L"", L"a b", L"a:"}) {
        EXPECT_EQ(markup.AddChildElem(name), 0) << CString(name);
        EXPECT_EQ(markup.SetAttrib(name, L"v"), 0) << CString(name);
        EXPECT_EQ(markup.SetChildAttrib(name, 1), 0) << CString(name);
    }
    const wchar_t* const null = nullptr;
    EXPECT_EQ(markup.AddChildElem(null), 0);
    EXPECT_EQ(markup.SetAttrib(null, L"v"), 0);
    for (const wchar_t* const text : {L"\x01", L"a\xFFFE"}) {
        EXPECT_EQ(markup.AddChildElem(L"n", text), 0);
        EXPECT_EQ(markup.SetAttrib(L"k", text), 0);
        EXPECT_EQ(markup.SetData(text), 0);
        EXPECT_EQ(markup.SetChildData(text, 1), 0);
    }
    EXPECT_EQ(Doc(markup), L"<r><a/></r>");
    EXPECT_EQ(markup.GetChildTagName(), L"a");
}

TEST(MarkupEdit, AttributesAreAddedOrReplaced) {
    Edited markup(L"<r a='1'><c/></r>");
    ASSERT_EQ(markup.FindChildElem(), 1);
    EXPECT_EQ(markup.AddAttrib(L"a", L"2"), 1);
    EXPECT_EQ(markup.SetAttrib(L"b", L"\"<\n"), 1);
    EXPECT_EQ(markup.AddAttrib(L"c", static_cast<const wchar_t*>(nullptr)), 1);
    EXPECT_EQ(markup.SetChildAttrib(L"d", L"3"), 1);
    EXPECT_EQ(markup.AddChildAttrib(L"d", L"4"), 1);
    EXPECT_EQ(Doc(markup), L"<r a=\"2\" b=\"&quot;&lt;&#10;\" c=\"\"><c d=\"4\"/></r>");
}

TEST(MarkupEdit, RemovedElementLeavesThePositionBeforeIt) {
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*, const wchar_t*> table[] = {
        {L"a", L"", L"b", L"<r>t<!--x--><b/>u<c/></r>"},
        {L"b", L"a", L"c", L"<r>t<a/><!--x-->u<c/></r>"},
        {L"c", L"b", L"", L"<r>t<a/><!--x--><b/>u</r>"},
    };
    for (const auto& [removed, position, next, result] : table) {
        EditedInside inside(L"<r>t<a/><!--x--><b/>u<c/></r>", removed);
        EXPECT_EQ(inside.RemoveElem(), 1);
        EXPECT_EQ(Doc(inside), result);
        EXPECT_EQ(inside.GetTagName(), position);
        EXPECT_EQ(inside.FindElem(), *next != L'\0' ? 1 : 0);
        EXPECT_EQ(inside.GetTagName(), *next != L'\0' ? next : position);
        Edited above(L"<r>t<a/><!--x--><b/>u<c/></r>");
        ASSERT_EQ(above.FindChildElem(removed), 1);
        EXPECT_EQ(above.RemoveChildElem(), 1);
        EXPECT_EQ(Doc(above), result);
        EXPECT_EQ(above.GetChildTagName(), position);
        EXPECT_EQ(above.GetTagName(), L"r");
    }
}

TEST(MarkupEdit, ReferenceThatLeftTheTreeDoesNoHarm) {
    EditedInside markup(L"<r><a/><b/></r>", L"a");
    ASSERT_EQ(markup.GetNode(L"r").SetNodeText(L"t"), 1);
    EXPECT_EQ(markup.InsertElem(L"n"), 0);
    EXPECT_EQ(Doc(markup), L"<r>t</r>");
    EXPECT_EQ(markup.AddElem(L"n"), 1);
    EXPECT_EQ(Doc(markup), L"<r>t<n/></r>");
}

TEST(MarkupEdit, SavedDocumentLoadsAgain) {
    const nqp2::test::TempFolder folder;
    const CString path = nqp2::platform::TextFromUtf8(folder.Path("saved.xml"));
    CMarkupMSXML markup;
    ASSERT_EQ(markup.CreateMainRoot(L"r"), 1);
    ASSERT_EQ(markup.AddAttrib(L"k", L"\u00E4\t'\""), 1);
    ASSERT_EQ(markup.AddChildElem(L"a", L" \r\n]]>& "), 1);
    ASSERT_EQ(markup.Save(path), 1);
    EXPECT_EQ(markup.Save(path + L"/none/saved.xml"), 0);
    EXPECT_EQ(markup.Save(L""), 0);
    CMarkupMSXML again;
    ASSERT_EQ(again.Load(path), 1) << again.GetError();
    EXPECT_EQ(again.GetDoc(), markup.GetDoc());
    ASSERT_EQ(again.FindChildElem(L"a"), 1);
    EXPECT_EQ(again.GetAttrib(L"k"), L"\u00E4\t'\"");
    EXPECT_EQ(again.GetChildData(), L" \r\n]]>& ");
    ASSERT_EQ(again.IntoElem(), 1);
    ASSERT_EQ(again.AddElem(L"b", 1), 1);
    EXPECT_EQ(again.Save(path), 1);
    EXPECT_EQ(again.LoadXml(path), 1);
    EXPECT_EQ(again.GetNodeText(L"r/b", 0), L"1");
}

using Kind = CMarkupMSXML::NodeKind;

TEST(MarkupNodes, FindsTheKindsThatAreAskedFor) {
    EditedInside markup(L"<r>t<a/><!--c--><?i j?><![CDATA[d]]><b/>u</r>");
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
    const std::tuple<int, const wchar_t*, const wchar_t*> table[] = {
        {Kind::kElementNode, L"n", L"<n/>"},
        {Kind::kTextNode, L"<x>", L"&lt;x&gt;"},
        {Kind::kCDataNode, L"<x>", L"<![CDATA[<x>]]>"},
        {Kind::kInstructionNode, L"t d e", L"<?t d e?>"},
        {Kind::kInstructionNode, L"t", L"<?t?>"},
        {Kind::kCommentNode, L"x", L"<!--x-->"},
    };
    for (const auto& [kind, text, made] : table) {
        EditedInside markup(L"<r><a/><b/></r>");
        ASSERT_EQ(markup.FindElem(L"b"), 1);
        EXPECT_EQ(markup.InsertNode(kind, text), 1);
        EXPECT_EQ(markup.GetNodeType(), kind);
        EXPECT_EQ(Doc(markup), CString(L"<r><a/>") + made + L"<b/></r>");
        EXPECT_EQ(markup.RemoveNode(), 1);
        EXPECT_EQ(markup.GetTagName(), L"a") << "to the node before";
        EXPECT_EQ(markup.AddNode(kind, text), 1);
        EXPECT_EQ(Doc(markup), CString(L"<r><a/>") + made + L"<b/></r>");
    }
}

TEST(MarkupNodes, RefusesWhatWouldSpoilTheDocument) {
    const std::pair<int, std::vector<const wchar_t*>> table[] = {
        {Kind::kElementNode, {L"", L"a b", nullptr}},
        {Kind::kTextNode, {L"\x01"}},
        {Kind::kCDataNode, {L"\xFFFE"}},
        {Kind::kCommentNode, {L"a--b", L"a-", L"\x01"}},
        {Kind::kInstructionNode,
         {L"xml version='1.0'", L"XML d", L"xMl", L"t a?>b", L"a:b", L"1", L"t \x01", L" d",
          nullptr}},
        {0, {L"a"}},
        {Kind::kElementNode | Kind::kTextNode, {L"a"}},
        {Kind::kAnyNode, {L"a"}},
    };
    EditedInside markup(L"<r><a/></r>");
    for (const auto& [kind, texts] : table) {
        for (const wchar_t* const text : texts) {
            EXPECT_EQ(markup.AddNode(kind, text), 0) << kind << CString(text);
            EXPECT_EQ(markup.InsertNode(kind, text), 0) << kind << CString(text);
        }
    }
    CMarkupMSXML whole(L"<?xml version='1.0'?><r/>");
    EXPECT_EQ(whole.AddNode(Kind::kTextNode, L"t"), 0);
    EXPECT_EQ(whole.InsertNode(Kind::kCommentNode, L"c"), 1) << "behind the declaration";
    EXPECT_EQ(whole.GetDoc(), L"<?xml version=\"1.0\"?>\r\n<!--c-->\r\n<r/>\r\n");
    whole.ResetPos();
    ASSERT_EQ(whole.FindNode(), Kind::kInstructionNode);
    EXPECT_EQ(whole.InsertNode(Kind::kInstructionNode, L"i"), 1);
    EXPECT_EQ(CMarkupMSXML(whole.GetDoc()).GetError(), L"");
    EXPECT_EQ(markup.GetError(), L"");
    EXPECT_EQ(markup.AddNode(Kind::kDocumentTypeNode, L"d"), 0);
    EXPECT_EQ(markup.GetError(), L"XMLDOM: Document Type is Read-Only");
    EXPECT_EQ(Doc(markup), L"<r><a/></r>");
}

TEST(MarkupNodes, NodesWithoutChildrenTakeNone) {
    EditedInside markup(L"<r>t<!--c--><a/></r>");
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
    EXPECT_EQ(Doc(markup), L"<r>t<!--c--><a/></r>");
}

TEST(MarkupNodes, SetDataReplacesWhatAnElementHolds) {
    EditedInside markup(L"<r><a>x<b/></a></r>");
    ASSERT_EQ(markup.FindElem(L"a"), 1);
    ASSERT_EQ(markup.FindChildElem(L"b"), 1);
    EXPECT_EQ(markup.SetChildData(L"1", 1), 1);
    EXPECT_EQ(Doc(markup), L"<r><a>x<b><![CDATA[1]]></b></a></r>");
    EXPECT_EQ(markup.SetChildData(2), 1);
    EXPECT_EQ(markup.SetChildData(std::int64_t{3}), 1);
    EXPECT_EQ(markup.SetChildData(0.5), 1);
    EXPECT_EQ(Doc(markup), L"<r><a>x<b>0.5</b></a></r>");
    EXPECT_EQ(markup.SetData(L"<y>"), 1);
    EXPECT_EQ(Doc(markup), L"<r><a>&lt;y&gt;</a></r>");
}

TEST(MarkupNodes, SetDataOfOtherKinds) {
    const wchar_t* const other = L"Specified Target does not match current node";
    const std::tuple<int, const wchar_t*, int, const wchar_t*, const wchar_t*> table[] = {
        {Kind::kTextNode, L"<", 1, L"&lt;", L""},
        {Kind::kCDataNode, L"]]>", 1, L"<![CDATA[]]]]><![CDATA[>]]>", L""},
        {Kind::kCommentNode, L"new", 1, L"<!--new-->", L""},
        {Kind::kCommentNode, L"a--b", 0, L"<!--c-->", L""},
        {Kind::kInstructionNode, L"i new data", 1, L"<?i new data?>", L""},
        {Kind::kInstructionNode, L"i", 1, L"<?i?>", L""},
        {Kind::kInstructionNode, L"i ?>", 0, L"<?i j?>", L""},
        {Kind::kInstructionNode, L"k new", 0, L"<?i j?>", other},
        {Kind::kInstructionNode, L"", 0, L"<?i j?>", other},
    };
    for (const auto& [kind, data, result, written, error] : table) {
        EditedInside markup(L"<r>t<![CDATA[d]]><!--c--><?i j?></r>");
        ASSERT_EQ(markup.FindNode(kind), kind);
        EXPECT_EQ(markup.SetData(data), result) << CString(data);
        EXPECT_EQ(markup.GetSubDoc(), written) << CString(data);
        EXPECT_EQ(markup.GetError(), error);
    }
    CMarkupMSXML declared(L"<?xml version='1.0'?><r/>");
    ASSERT_EQ(declared.FindNode(), Kind::kInstructionNode);
    EXPECT_EQ(declared.SetData(L"xml version='1.1'"), 0) << "the declaration stays";
    EXPECT_EQ(declared.GetDoc(), L"<?xml version=\"1.0\"?>\r\n<r/>\r\n");
}

TEST(MarkupNodes, SubDocumentsGoWhereElementsGo) {
    const wchar_t* const part = L"<?xml version='1.0'?><!--out--><n xmlns='u'>1<m/></n>";
    for (const bool isAdd : {true, false}) {
        const CString result = isAdd ? L"<r><a/><n xmlns=\"u\">1<m/></n><b/></r>"
                                     : L"<r><n xmlns=\"u\">1<m/></n><a/><b/></r>";
        EditedInside inside(L"<r><a/><b/></r>");
        ASSERT_EQ(inside.FindElem(L"a"), 1);
        EXPECT_EQ(isAdd ? inside.AddSubDoc(part) : inside.InsertSubDoc(part), 1);
        EXPECT_EQ(Doc(inside), result);
        EXPECT_EQ(inside.GetSubDoc(), L"<n xmlns=\"u\">1<m/></n>");
        EditedInside above(L"<r><a/><b/></r>");
        ASSERT_EQ(above.OutOfElem(), 1);
        ASSERT_EQ(above.FindChildElem(L"a"), 1);
        EXPECT_EQ(isAdd ? above.AddChildSubDoc(part) : above.InsertChildSubDoc(part), 1);
        EXPECT_EQ(Doc(above), result);
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
