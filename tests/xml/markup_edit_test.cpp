// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "tests/support/print_text.h"
#include "tests/xml/markup_test.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace {

using nqp2::test::Doc;
using nqp2::test::Where;
using M = CMarkupMSXML;

constexpr const wchar_t* kDeclaration =
    L"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\r\n";
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
    const wchar_t* const part = L"<r><a/><n xmlns=\"u\">1<m/></n><b/></r>";
    const wchar_t* const behind = L"<r><b/><n xmlns=\"u\">1<m/></n></r>";
    Check({
        {two, [](M& m) { return m.AddChildElem(L"n"); }, 1, L"<r>t<a/>u<b/><n/>v</r>", L"r/n"},
        {two, [](M& m) { return m.InsertChildElem(L"n"); }, 1, L"<r>t<a/>u<n/><b/>v</r>", L"r/n"},
        {two, [](M& m) { return Into(m).AddElem(L"n"); }, 1, L"<r>t<a/>u<b/><n/>v</r>", L"n/"},
        {two, [](M& m) { return Into(m).InsertElem(L"n"); }, 1, L"<r>t<a/>u<n/><b/>v</r>", L"n/"},
        {one, [](M& m) { return m.AddChildElem(L"n", L"<"); }, 1, L"<r>t<a/>v<n>&lt;</n></r>",
         L"r/n"},
        {one, [](M& m) { return m.InsertChildElem(L"n", L""); }, 1, L"<r><n/>t<a/>v</r>", L"r/n"},
        {one, [](M& m) { return Into(m).AddElem(L"n"); }, 1, L"<r>t<a/>v<n/></r>", L"n/"},
        {one, [](M& m) { return Into(m).InsertElem(L"n"); }, 1, L"<r><n/>t<a/>v</r>", L"n/"},
        {L"<r><a/><b/></r>", [](M& m) { return m.InsertChildSubDoc(kPart); }, 1, part, L"r/n"},
        {L"<r><a/><b/></r>", [](M& m) { return Into(m).InsertSubDoc(kPart); }, 1, part, L"n/"},
        {L"<r><b/></r>", [](M& m) { return m.AddChildSubDoc(kPart); }, 1, behind, L"r/n"},
        {L"<r><b/></r>", [](M& m) { return Into(m).AddSubDoc(kPart); }, 1, behind, L"n/"},
        {L"<r>t<a/><!--x--><b/>u<c/></r>", [](M& m) { return m.RemoveChildElem(); }, 1,
         L"<r>t<a/><!--x-->u<c/></r>", L"r/a"},
        {L"<r>t<a/><!--x--><b/>u<c/></r>", [](M& m) { return Into(m).RemoveElem(); }, 1,
         L"<r>t<a/><!--x-->u<c/></r>", L"a/"},
        {L"<r>t<b/>u<c/></r>", [](M& m) { return Into(m).RemoveElem() + m.FindElem(); }, 2,
         L"<r>tu<c/></r>", L"c/"},
        {L"<r><b/></r>",
         [](M& m) { return m.GetNode(L"r").SetNodeText(L"t") + Into(m).InsertElem(L"n"); }, 1,
         L"<r>t</r>", L"b/"}, // a reference that has left the tree
    });
}

TEST(MarkupEdit, AttributesDataAndNumbers) {
    using I64 = std::int64_t;
    Check({
        {L"<r a='1'><b/></r>",
         [](M& m) { return m.AddAttrib(L"a", L"2") + m.SetAttrib(L"b", L"\"<\n"); }, 2,
         L"<r a=\"2\" b=\"&quot;&lt;&#10;\"><b/></r>", L"r/b"},
        {L"<r><b/></r>",
         [](M& m) { return m.SetChildAttrib(L"d", 3) + m.AddChildAttrib(L"d", L"4"); }, 2,
         L"<r><b d=\"4\"/></r>", L"r/b"},
        {L"<r><b/></r>",
         [](M& m) {
             return m.AddAttrib(L"c", static_cast<const wchar_t*>(nullptr)) +
                    m.SetAttrib(L"k", -5) + m.AddChildAttrib(L"k", 5);
         },
         3, L"<r c=\"\" k=\"-5\"><b k=\"5\"/></r>", L"r/b"},
        {L"<r><b>x<c/></b></r>", [](M& m) { return m.SetChildData(L"<", 1); }, 1,
         L"<r><b><![CDATA[<]]></b></r>", L"r/b"},
        {L"<r><b>x<c/></b></r>", [](M& m) { return m.SetData(L"<y>"); }, 1, L"<r>&lt;y&gt;</r>",
         L"r/b"},
        {L"<r/>",
         [](M& m) {
             return m.AddChildElem(L"a", -7) + m.AddChildElem(L"b", 29.97) +
                    m.AddChildElem(L"c", std::numeric_limits<I64>::min()) +
                    m.InsertChildElem(L"d", 0) + m.InsertChildElem(L"e", I64{1} << 40) +
                    m.InsertChildElem(L"f", 25.0) + m.SetChildData(6ULL, 1);
         },
         7,
         L"<r><a>-7</a><b>29.97</b><f><![CDATA[6]]></f><e>1099511627776</e><d>0</d>"
         L"<c>-9223372036854775808</c></r>",
         L"r/f"},
    });
}

TEST(MarkupEdit, WhatCannotBeMadeIsRefusedAndChangesNothing) {
    std::vector<Edit> edits;
    const auto refused = [&](const wchar_t* text, const wchar_t* where, auto... calls) {
        (edits.push_back({text, calls, 0, text, where}), ...);
    };
    refused(
        L"<r><b/></r>", L"r/b", [](M& m) { return m.AddChildElem(L"a b"); },
        [](M& m) { return m.AddChildElem(L"") + m.AddChildElem(L"a:"); },
        [](M& m) { return m.AddChildElem(nullptr, L""); },
        [](M& m) { return m.SetAttrib(L"a b", L"v") + m.SetChildAttrib(L"", 1); },
        [](M& m) { return m.AddChildElem(L"n", L"\x01") + m.SetAttrib(L"k", L"a\xFFFE"); },
        [](M& m) { return m.SetData(L"\x01") + m.SetChildData(L"\xFFFE", 1); },
        [](M& m) { return m.InsertChildSubDoc(L"") + m.AddChildSubDoc(nullptr); },
        [](M& m) { return m.AddChildSubDoc(L"<n>") + (m.GetError().IsEmpty() ? 1 : 0); });
    refused(L"<r/>", L"r/", [](M& m) { return m.AddElem(L"s", L"x") + m.InsertElem(L"s"); });
    refused(L"<r/>", L"r/", [](M& m) { return m.AddSubDoc(L"<s/>") + m.RemoveChildElem(); });
    refused(L"<r/>", L"/", [](M& m) {
        m.ResetPos();
        return m.AddChildElem(L"a") + m.InsertChildElem(L"a") + m.AddAttrib(L"k", L"v") +
               m.AddChildAttrib(L"k", L"v") + m.SetData(L"x") + m.SetChildData(L"x") +
               m.RemoveElem() + m.AddChildSubDoc(L"<n/>") + m.AddElem(L"s") +
               m.GetSubDoc().GetLength() + m.GetChildSubDoc().GetLength();
    });
    // Texts and comments take no children.
    for (const wchar_t* const text : {L"<r>t</r>", L"<r><!--c--></r>"}) {
        refused(text, text[3] == L't' ? L"#text/" : L"#comment/", [](M& m) {
            return Into(m).FindNode() * 0 + m.AddChildElem(L"n") + m.AddChildSubDoc(L"<n/>") +
                   m.AddAttrib(L"k", L"v") + m.RemoveElem() + m.FindChildElem() +
                   Into(m).AddElem(L"n") + m.OutOfElem() - 1;
        });
    }
    Check(edits);
}

TEST(MarkupEdit, MainRootStartsANewDocument) {
    M markup(L"<old><a/></old>");
    ASSERT_EQ(markup.FindChildElem(), 1);
    EXPECT_EQ(markup.CreateMainRoot(L"r", L"\u7D20"), 1);
    EXPECT_EQ(markup.GetDoc(), CString(kDeclaration) + L"<r>\u7D20</r>\r\n");
    EXPECT_EQ(Where(markup), L"r/");
    EXPECT_EQ(markup.CreateMainRoot(L"no name"), 0);
    markup.SetDefaultNamespace(L"u");
    EXPECT_EQ(markup.CreateMainRoot(L"r"), 1);
    EXPECT_EQ(markup.AddChildElem(L"a"), 1);
    markup.SetDefaultNamespace(nullptr);
    EXPECT_EQ(markup.AddChildElem(L"b"), 1);
    EXPECT_EQ(Doc(markup), CString(kDeclaration) + L"<r xmlns=\"u\"><a/><b xmlns=\"\"/></r>");
    ASSERT_EQ(markup.RemoveElem(), 1);
    EXPECT_EQ(markup.InsertElem(L"s"), 1);
    EXPECT_EQ(Doc(markup), CString(kDeclaration) + L"<s/>") << "never before the declaration";
    M fresh;
    EXPECT_EQ(fresh.AddSubDoc(L"<n/>"), 1);
    EXPECT_EQ(Doc(fresh), L"<n/>");
}

TEST(MarkupNodes, FindsTheKindsThatAreAskedFor) {
    M markup(L"<r>t<a/><!--c--><?i j?><![CDATA[d]]><b/>u</r>");
    ASSERT_EQ(markup.FindElem(), 1);
    EXPECT_EQ(Into(markup).GetNodeType(), 0);
    for (const int kind : {M::kCommentNode, M::kCDataNode}) {
        EXPECT_EQ(markup.FindNode(M::kCommentNode | M::kCDataNode), kind);
        EXPECT_EQ(markup.GetNodeType(), kind);
    }
    EXPECT_EQ(markup.FindNode(M::kCommentNode) + markup.FindNode(0), 0);
    EXPECT_EQ(markup.FindElem(L"b"), 1) << "element searches go on from there";
    EXPECT_EQ(markup.FindNode(), M::kTextNode);
    EXPECT_EQ(markup.FindNode() + markup.FindNode(M::kDocumentTypeNode), 0);
}

TEST(MarkupNodes, MakesEveryKindBesideThePosition) {
    const std::tuple<int, const wchar_t*, const wchar_t*> table[] = {
        {M::kElementNode, L"n", L"<n/>"},
        {M::kTextNode, L"<x>", L"&lt;x&gt;"},
        {M::kCDataNode, L"<x>", L"<![CDATA[<x>]]>"},
        {M::kInstructionNode, L"t d e", L"<?t d e?>"},
        {M::kInstructionNode, L"t", L"<?t?>"},
        {M::kCommentNode, L"x", L"<!--x-->"},
    };
    for (const auto& [kind, text, made] : table) {
        M markup(L"<r><a/><b/></r>");
        ASSERT_EQ(markup.FindChildElem(L"b"), 1);
        EXPECT_EQ(Into(markup).InsertNode(kind, text), 1);
        EXPECT_EQ(markup.GetNodeType(), kind);
        EXPECT_EQ(Doc(markup), CString(L"<r><a/>") + made + L"<b/></r>");
        EXPECT_EQ(markup.RemoveNode(), 1);
        EXPECT_EQ(Where(markup), L"a/") << "to the node before";
        EXPECT_EQ(markup.AddNode(kind, text), 1);
        EXPECT_EQ(Doc(markup), CString(L"<r><a/>") + made + L"<b/></r>");
    }
}

TEST(MarkupNodes, RefusesWhatWouldSpoilTheDocument) {
    const std::pair<int, std::vector<const wchar_t*>> table[] = {
        {M::kElementNode, {L"", L"a b", nullptr}},
        {M::kTextNode, {L"\x01"}},
        {M::kCDataNode, {L"\xFFFE"}},
        {M::kCommentNode, {L"a--b", L"a-", L"\x01"}},
        {M::kInstructionNode,
         {L"xml version='1.0'", L"xMl", L"t a?>b", L"a:b", L"1", L"t \x01", L" d", nullptr}},
        {M::kElementNode | M::kTextNode, {L"a"}},
        {M::kAnyNode, {L"a"}},
    };
    M markup(L"<?xml version='1.0'?><r/>");
    const CString declared = L"<?xml version=\"1.0\"?>\r\n";
    ASSERT_EQ(markup.FindElem(), 1);
    for (const auto& [kind, texts] : table) {
        for (const wchar_t* const text : texts) {
            EXPECT_EQ(Into(markup).AddNode(kind, text), 0) << kind << CString(text);
            EXPECT_EQ(markup.InsertNode(kind, text), 0) << kind << CString(text);
            EXPECT_EQ(markup.OutOfElem(), 1);
        }
    }
    EXPECT_EQ(markup.AddNode(M::kTextNode, L"t"), 0) << "beside the root";
    EXPECT_EQ(markup.GetError(), L"");
    EXPECT_EQ(markup.AddNode(M::kDocumentTypeNode, L"d"), 0);
    EXPECT_EQ(markup.GetError(), L"XMLDOM: Document Type is Read-Only");
    EXPECT_EQ(Doc(markup), declared + L"<r/>");
    markup.ResetPos();
    ASSERT_EQ(markup.FindNode(), M::kInstructionNode);
    EXPECT_EQ(markup.SetData(L"xml version='1.1'"), 0) << "the declaration stays";
    EXPECT_EQ(markup.InsertNode(M::kCommentNode, L"c"), 1);
    EXPECT_EQ(Doc(markup), declared + L"<!--c-->\r\n<r/>") << "behind the declaration";
}

TEST(MarkupNodes, SetDataOfEveryKind) {
    const wchar_t* const other = L"Specified Target does not match current node";
    const std::tuple<int, const wchar_t*, int, const wchar_t*, const wchar_t*> table[] = {
        {M::kTextNode, L"<", 1, L"&lt;", L""},
        {M::kCDataNode, L"]]>", 1, L"<![CDATA[]]]]><![CDATA[>]]>", L""},
        {M::kCommentNode, L"new", 1, L"<!--new-->", L""},
        {M::kCommentNode, L"a--b", 0, L"<!--c-->", L""},
        {M::kInstructionNode, L"i new data", 1, L"<?i new data?>", L""},
        {M::kInstructionNode, L"i", 1, L"<?i?>", L""},
        {M::kInstructionNode, L"i ?>", 0, L"<?i j?>", L""},
        {M::kInstructionNode, L"k new", 0, L"<?i j?>", other},
        {M::kInstructionNode, L"", 0, L"<?i j?>", other},
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
