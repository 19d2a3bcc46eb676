// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

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
    EditedInside(const wchar_t* text, const wchar_t* name) : Edited(text) {
        EXPECT_EQ(IntoElem(), 1);
        EXPECT_EQ(name == nullptr ? 1 : FindElem(name), 1);
    }
};

TEST(MarkupEdit, WhereAnElementGoes) {
    struct {
        TextAdd main;
        TextAdd child;
        const wchar_t* reference;
        const wchar_t* result;
    } const table[] = {
        {&CMarkupMSXML::AddElem, &CMarkupMSXML::AddChildElem, nullptr, L"<r>t<a/>u<b/>v<n/></r>"},
        {&CMarkupMSXML::AddElem, &CMarkupMSXML::AddChildElem, L"a", L"<r>t<a/><n/>u<b/>v</r>"},
        {&CMarkupMSXML::AddElem, &CMarkupMSXML::AddChildElem, L"b", L"<r>t<a/>u<b/><n/>v</r>"},
        {&CMarkupMSXML::InsertElem, &CMarkupMSXML::InsertChildElem, nullptr,
         L"<r><n/>t<a/>u<b/>v</r>"},
        {&CMarkupMSXML::InsertElem, &CMarkupMSXML::InsertChildElem, L"a",
         L"<r>t<n/><a/>u<b/>v</r>"},
        {&CMarkupMSXML::InsertElem, &CMarkupMSXML::InsertChildElem, L"b",
         L"<r>t<a/>u<n/><b/>v</r>"},
    };
    for (const auto& row : table) {
        EditedInside inside(L"<r>t<a/>u<b/>v</r>", row.reference);
        EXPECT_EQ((inside.*row.main)(L"n", nullptr), 1);
        EXPECT_EQ(Doc(inside), row.result);
        EXPECT_EQ(inside.GetTagName(), L"n") << "it is the main position";
        Edited above(L"<r>t<a/>u<b/>v</r>");
        ASSERT_EQ(row.reference == nullptr ? 1 : above.FindChildElem(row.reference), 1);
        EXPECT_EQ((above.*row.child)(L"n", L""), 1);
        EXPECT_EQ(Doc(above), row.result);
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
    const auto whole = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(markup.AddChildElem(L"a", -7), 1);
    EXPECT_EQ(markup.AddChildElem(L"b", whole), 1);
    EXPECT_EQ(markup.AddChildElem(L"c", 29.97), 1);
    EXPECT_EQ(markup.InsertChildElem(L"d", 0), 1);
    EXPECT_EQ(markup.InsertChildElem(L"e", std::int64_t{1} << 40), 1);
    EXPECT_EQ(markup.InsertChildElem(L"f", 25.0), 1);
    EXPECT_EQ(markup.AddChildAttrib(L"k", 5), 1);
    EXPECT_EQ(markup.SetAttrib(L"k", -5), 1);
    EXPECT_EQ(Doc(markup), L"<r k=\"-5\"><a>-7</a><b>-9223372036854775808</b><f k=\"5\">25</f>"
                           L"<e>1099511627776</e><d>0</d><c>29.97</c></r>");
    ASSERT_EQ(markup.IntoElem(), 1);
    EXPECT_EQ(markup.AddElem(L"g", 1), 1);
    EXPECT_EQ(markup.AddElem(L"h", std::int64_t{2}), 1);
    EXPECT_EQ(markup.AddElem(L"i", 0.25), 1);
    EXPECT_EQ(markup.InsertElem(L"j", 4), 1);
    EXPECT_EQ(markup.InsertElem(L"k", std::int64_t{5}), 1);
    EXPECT_EQ(markup.InsertElem(L"l", 1e-3), 1);
    EXPECT_GT(Doc(markup).Find(L"<g>1</g><h>2</h><l>0.001</l><k>5</k><j>4</j><i>0.25</i>"), 0);
    EXPECT_EQ(markup.SetData(6), 1);
    EXPECT_EQ(markup.GetData(), L"6");
    EXPECT_EQ(markup.SetData(std::int64_t{7}, 1), 1);
    EXPECT_EQ(markup.GetSubDoc(), L"<l><![CDATA[7]]></l>");
    EXPECT_EQ(markup.SetData(0.5), 1);
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
    for (const wchar_t* const name : {L"", L"a b", L"<", L"1", L"a:", L"\x01"}) {
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
    struct {
        const wchar_t* removed;
        const wchar_t* position;
        const wchar_t* next;
        const wchar_t* result;
    } const table[] = {
        {L"a", L"", L"b", L"<r>t<!--x--><b/>u<c/></r>"},
        {L"b", L"a", L"c", L"<r>t<a/><!--x-->u<c/></r>"},
        {L"c", L"b", L"", L"<r>t<a/><!--x--><b/>u</r>"},
    };
    for (const auto& row : table) {
        EditedInside inside(L"<r>t<a/><!--x--><b/>u<c/></r>", row.removed);
        EXPECT_EQ(inside.RemoveElem(), 1);
        EXPECT_EQ(Doc(inside), row.result);
        EXPECT_EQ(inside.GetTagName(), row.position);
        EXPECT_EQ(inside.FindElem(), *row.next != L'\0' ? 1 : 0);
        EXPECT_EQ(inside.GetTagName(), *row.next != L'\0' ? row.next : row.position);
        Edited above(L"<r>t<a/><!--x--><b/>u<c/></r>");
        ASSERT_EQ(above.FindChildElem(row.removed), 1);
        EXPECT_EQ(above.RemoveChildElem(), 1);
        EXPECT_EQ(Doc(above), row.result);
        EXPECT_EQ(above.GetChildTagName(), row.position);
        EXPECT_EQ(above.GetTagName(), L"r");
    }
}

TEST(MarkupEdit, AllOfALevelCanBeRemovedInOneWalk) {
    EditedInside markup(L"<r><a/><b/><a/>x<a/></r>", nullptr);
    while (markup.FindElem(L"a") != 0) {
        EXPECT_EQ(markup.RemoveElem(), 1);
    }
    EXPECT_EQ(Doc(markup), L"<r><b/>x</r>");
    EXPECT_EQ(markup.OutOfElem(), 1);
    EXPECT_EQ(markup.GetTagName(), L"r");
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

} // namespace
