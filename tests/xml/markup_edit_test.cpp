// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace {

using M = CMarkupMSXML;

CString Doc(M& markup) {
    return markup.GetDoc().TrimRight(L"\r\n");
}

/// Tag names of main and child position.
CString Where(M& markup) {
    return markup.GetTagName() + L"/" + markup.GetChildTagName();
}

constexpr const wchar_t* kPart = L"<?xml version='1.0'?><!--out--><n xmlns='u'>1<m/></n>";

M& Into(M& markup) {
    EXPECT_EQ(markup.IntoElem(), 1);
    return markup;
}

/// The main position on r, the child position on the first b below it, if there is one.
struct Edit {
    const wchar_t* before;
    int (*edit)(M& markup);
    int result;
    const wchar_t* after;
    const wchar_t* where; ///< main and child position
};

void Check(const std::vector<Edit>& edits) {
    for (const Edit& each : edits) {
        SCOPED_TRACE(&each - edits.data());
        M markup(each.before);
        ASSERT_EQ(markup.FindElem(L"r"), 1);
        markup.FindChildElem(L"b");
        EXPECT_EQ(each.edit(markup), each.result);
        EXPECT_EQ(Doc(markup), each.after);
        EXPECT_EQ(Where(markup), each.where);
    }
}

TEST(MarkupEdit, WhereElementsGoAndWhatTheCursorDoes) {
    const wchar_t* const two = L"<r>t<a/>u<b/>v</r>";
    const wchar_t* const one = L"<r>t<a/>v</r>"; // no reference position
    const wchar_t* const before = L"<r>t<a/>u<n xmlns=\"u\">1<m/></n><b/>v</r>";
    const wchar_t* const behind = L"<r>t<a/>u<b/><n xmlns=\"u\">1<m/></n>v</r>";
    const wchar_t* const removed = L"<r>t<a/>uv</r>";
    Check({
        {two, [](M& m) { return m.AddChildElem(L"n"); }, 1, L"<r>t<a/>u<b/><n/>v</r>", L"r/n"},
        {two, [](M& m) { return m.InsertChildElem(L"n"); }, 1, L"<r>t<a/>u<n/><b/>v</r>", L"r/n"},
        {two, [](M& m) { return Into(m).AddElem(L"n"); }, 1, L"<r>t<a/>u<b/><n/>v</r>", L"n/"},
        {two, [](M& m) { return Into(m).InsertElem(L"n"); }, 1, L"<r>t<a/>u<n/><b/>v</r>", L"n/"},
        {one, [](M& m) { return m.AddChildElem(L"n"); }, 1, L"<r>t<a/>v<n/></r>", L"r/n"},
        {one, [](M& m) { return m.InsertChildElem(L"n"); }, 1, L"<r><n/>t<a/>v</r>", L"r/n"},
        {two, [](M& m) { return m.InsertChildSubDoc(kPart); }, 1, before, L"r/n"},
        {two, [](M& m) { return Into(m).InsertSubDoc(kPart); }, 1, before, L"n/"},
        {two, [](M& m) { return m.AddChildSubDoc(kPart); }, 1, behind, L"r/n"},
        {two, [](M& m) { return Into(m).AddSubDoc(kPart); }, 1, behind, L"n/"},
        {two, [](M& m) { return m.RemoveChildElem(); }, 1, removed, L"r/a"},
        {two, [](M& m) { return Into(m).RemoveElem(); }, 1, removed, L"a/"},
        {L"<r>t<b/>u<c/></r>", [](M& m) { return Into(m).RemoveElem() + m.FindElem(); }, 2,
         L"<r>tu<c/></r>", L"c/"},
        {two, [](M& m) { return m.GetNode(L"r").SetNodeText(L"t") + Into(m).InsertElem(L"n"); }, 1,
         L"<r>t</r>", L"b/"}, // a reference that has left the tree
    });
}

TEST(MarkupEdit, AttributesDataAndNumbers) {
    M markup(L"<r a='1'>t<b>x<c/></b></r>");
    ASSERT_EQ(markup.FindChildElem(), 1);
    EXPECT_EQ(markup.AddAttrib(L"a", L"2") + markup.SetAttrib(L"b", L"\"<\n"), 2);
    EXPECT_EQ(markup.SetChildAttrib(L"d", 3) + markup.AddChildAttrib(L"d", L"4"), 2);
    EXPECT_EQ(markup.SetChildData(L"<", 1), 1);
    EXPECT_EQ(Doc(markup), L"<r a=\"2\" b=\"&quot;&lt;&#10;\">t<b d=\"4\"><![CDATA[<]]></b></r>");
    EXPECT_EQ(markup.SetData(L"<y>") + markup.AddChildElem(L"a", -7), 2);
    EXPECT_EQ(markup.AddChildElem(L"b", 29.97) + markup.SetChildAttrib(L"k", -5), 2);
    EXPECT_EQ(markup.AddChildElem(L"c", std::numeric_limits<std::int64_t>::min()), 1);
    EXPECT_EQ(markup.InsertChildElem(L"d", 25.0) + markup.SetChildData(6ULL), 2);
    EXPECT_EQ(markup.GetSubDoc(), L"<r a=\"2\" b=\"&quot;&lt;&#10;\">&lt;y&gt;<a>-7</a>"
                                  L"<b k=\"-5\">29.97</b><d>6</d><c>-9223372036854775808</c></r>");
}

TEST(MarkupEdit, WhatCannotBeMadeIsRefusedAndChangesNothing) {
    std::vector<Edit> edits;
    const auto refused = [&](const wchar_t* text, const wchar_t* where, auto... calls) {
        (edits.push_back({text, calls, 0, text, where}), ...);
    };
    refused(
        L"<r><b/></r>", L"r/b",
        [](M& m) { return m.AddChildElem(L"a b") + m.AddChildElem(L"") + m.AddChildElem(L"a:"); },
        [](M& m) { return m.SetAttrib(L"a b", L"v") + m.SetAttrib(L"k", L"a\xFFFE"); },
        [](M& m) { return m.SetData(L"\x01") + m.SetChildData(L"\xFFFE", 1); },
        [](M& m) { return m.AddChildSubDoc(L"<n>") + (m.GetError().IsEmpty() ? 1 : 0); });
    refused(L"<r/>", L"r/", [](M& m) {
        return m.AddElem(L"s") + m.InsertElem(L"s") + m.AddSubDoc(L"<s/>") + m.RemoveChildElem();
    });
    refused(L"<r/>", L"/", [](M& m) {
        m.ResetPos();
        return m.AddChildElem(L"a") + m.InsertChildElem(L"a") + m.AddAttrib(L"k", L"v") +
               m.AddChildAttrib(L"k", L"v") + m.SetData(L"x") + m.SetChildData(L"x") +
               m.RemoveElem() + m.AddChildSubDoc(L"<n/>") + m.AddElem(L"s") +
               m.GetSubDoc().GetLength() + m.GetChildSubDoc().GetLength();
    });
    refused(L"<r><!--c--></r>", L"#comment/", [](M& m) { // comments take no children
        return Into(m).FindNode() * 0 + m.AddChildElem(L"n") + m.AddChildSubDoc(L"<n/>") +
               m.AddAttrib(L"k", L"v") + m.RemoveElem() + m.FindChildElem();
    });
    Check(edits);
}

TEST(MarkupEdit, MainRootStartsANewDocument) {
    M markup(L"<old><a/></old>");
    ASSERT_EQ(markup.FindChildElem(), 1);
    markup.SetDefaultNamespace(L"u");
    EXPECT_EQ(markup.CreateMainRoot(L"r", L"\u7D20"), 1);
    EXPECT_EQ(Where(markup), L"r/");
    EXPECT_EQ(markup.AddChildElem(L"a"), 1);
    markup.SetDefaultNamespace(nullptr);
    EXPECT_EQ(markup.AddChildElem(L"b"), 1);
    const CString start = L"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\r\n";
    EXPECT_EQ(Doc(markup), start + L"<r xmlns=\"u\">\u7D20<a/><b xmlns=\"\"/></r>");
    EXPECT_EQ(markup.RemoveElem() + markup.InsertElem(L"s"), 2);
    EXPECT_EQ(Doc(markup), start + L"<s/>") << "never before the declaration";
}

TEST(MarkupNodes, MakesEveryKindBesideThePositionAndNothingThatWouldSpoilTheDocument) {
    const std::tuple<int, const wchar_t*, const wchar_t*> table[] = {
        {M::kElementNode, L"n", L"<n/>"},
        {M::kTextNode, L"<x>", L"&lt;x&gt;"},
        {M::kCDataNode, L"<x>", L"<![CDATA[<x>]]>"},
        {M::kInstructionNode, L"t d e", L"<?t d e?>"},
        {M::kCommentNode, L"x", L"<!--x-->"},
        {M::kElementNode, L"a b", L""},
        {M::kTextNode | M::kCDataNode, L"a", L""},
        {M::kCommentNode, L"a--b", L""},
        {M::kInstructionNode, L"xMl version='1.0'", L""},
        {M::kInstructionNode, L"t a?>b", L""},
    };
    for (const auto& [kind, text, made] : table) {
        M markup(L"<r><a/><b/></r>");
        ASSERT_EQ(markup.FindChildElem(L"b"), 1);
        const int result = *made != L'\0' ? 1 : 0;
        EXPECT_EQ(Into(markup).InsertNode(kind, text), result) << kind << CString(text);
        EXPECT_EQ(markup.GetNodeType(), result != 0 ? kind : M::kElementNode);
        EXPECT_EQ(Doc(markup), CString(L"<r><a/>") + made + L"<b/></r>");
        EXPECT_EQ(markup.RemoveNode(), 1);
        EXPECT_EQ(Where(markup), L"a/") << "to the node before";
        EXPECT_EQ(markup.AddNode(kind, text), result) << kind << CString(text);
    }
    M markup(L"<?xml version='1.0'?><r/>");
    ASSERT_EQ(markup.FindElem(), 1);
    EXPECT_EQ(markup.AddNode(M::kTextNode, L"t"), 0) << "beside the root";
    EXPECT_EQ(markup.AddNode(M::kDocumentTypeNode, L"d"), 0);
    EXPECT_EQ(markup.GetError(), L"XMLDOM: Document Type is Read-Only");
    markup.ResetPos();
    ASSERT_EQ(markup.FindNode(), M::kInstructionNode);
    EXPECT_EQ(markup.SetData(L"xml version='1.1'"), 0) << "the declaration stays";
    EXPECT_EQ(markup.InsertNode(M::kCommentNode, L"c"), 1);
    EXPECT_EQ(Doc(markup), L"<?xml version=\"1.0\"?>\r\n<!--c-->\r\n<r/>") << "behind it";
}

TEST(MarkupNodes, SetDataOfEveryKind) {
    const wchar_t* const other = L"Specified Target does not match current node";
    const std::tuple<int, const wchar_t*, int, const wchar_t*, const wchar_t*> table[] = {
        {M::kTextNode, L"<", 1, L"&lt;", L""},
        {M::kCDataNode, L"]]>", 1, L"<![CDATA[]]]]><![CDATA[>]]>", L""},
        {M::kCommentNode, L"new", 1, L"<!--new-->", L""},
        {M::kCommentNode, L"a--b", 0, L"<!--c-->", L""},
        {M::kInstructionNode, L"i new data", 1, L"<?i new data?>", L""},
        {M::kInstructionNode, L"i ?>", 0, L"<?i j?>", L""},
        {M::kInstructionNode, L"k new", 0, L"<?i j?>", other},
    };
    for (const auto& [kind, data, result, written, error] : table) {
        M markup(L"<r>t<![CDATA[d]]><!--c--><?i j?></r>");
        ASSERT_EQ(markup.FindElem(), 1);
        ASSERT_EQ(Into(markup).FindNode(kind), kind);
        EXPECT_EQ(markup.SetData(data), result) << CString(data);
        EXPECT_EQ(markup.GetSubDoc(), written) << CString(data);
        EXPECT_EQ(markup.GetError(), error);
    }
}

} // namespace
