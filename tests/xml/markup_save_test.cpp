// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"
#include "NQP2ParserU/NQXmlParser.h"
#include "platform/unicode.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"
#include "xml/dom/document.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

using nqp2::platform::TextFromUtf8;

CString Repeated(wchar_t letter, std::size_t count) {
    return CString(std::wstring(count, letter));
}

/// Saves over an old file; "new" or "old", by what the file holds after it.
std::string Saved(CNQXmlParser& document) {
    const nqp2::test::TempFolder folder;
    const CString path = TextFromUtf8(folder.Write("old.xml", "<old/>"));
    const bool done = document.SaveXml(path) != 0;
    CMarkupMSXML file;
    const bool loads = file.LoadXml(path) != 0;
    const bool isOld = file.GetNode(L"/old").IsEmpty() == 0;
    return !loads || done == isOld ? "a fault" : isOld ? "old" : "new";
}

TEST(MarkupSave, WhatCouldNotBeLoadedAgainTakesNoFilesPlace) {
    const std::tuple<const char*, CString, CString, CString> cases[] = {
        {"new", Repeated(L'n', 50'000), L"", L""},
        {"old", Repeated(L'n', 50'001), L"", L""},
        {"old", L"e", Repeated(L'n', 50'001), L"v"},
        {"old", L"e", L"a", Repeated(L'"', 2'000'000)},
        {"old", L"p:e", L"", L""},
        {"new", L"e", L"xml:lang", L"en"},
        {"old", L"e", L"xmlns:xml", L"urn:x"},
        {"old", L"e", L"xmlns:x", L"http://www.w3.org/2000/xmlns/"},
    };
    for (const auto& [state, name, attribute, value] : cases) {
        CNQXmlParser built;
        ASSERT_EQ(built.CreateRoot(L"r") + built.AddChildElement(name, attribute, value), 2);
        EXPECT_EQ(Saved(built), state) << name.Left(9) << " " << attribute.Left(9);
    }
    for (const auto& [depth, state] : {std::pair{250, "new"}, {300, "old"}}) {
        CNQXmlParser built;
        ASSERT_EQ(built.CreateRoot(L"r"), 1);
        for (int level = 1; level < depth; ++level) {
            ASSERT_EQ(built.AddChildElement(L"e", L"", L""), 1);
        }
        EXPECT_EQ(Saved(built), state) << depth;
    }
}

TEST(MarkupSave, NorDoWhatHasNoRootOrAttributesThatNoReaderTakes) {
    const nqp2::test::TempFolder folder;
    const CString path = TextFromUtf8(folder.Write("a.xml", "<good/>"));
    CMarkupMSXML cursor(L"<r/>");
    ASSERT_EQ(cursor.FindElem() + cursor.RemoveElem(), 2);
    EXPECT_EQ(CMarkupMSXML().Save(path) + cursor.Save(path), 0);
    // Two attributes that an edited declaration makes one.
    ASSERT_EQ(cursor.SetDoc(L"<r xmlns:a='u' xmlns:b='v' a:x='' b:x=''/>"), 1);
    EXPECT_EQ(cursor.Save(path) + cursor.FindElem() + cursor.SetAttrib(L"xmlns:b", L"u"), 3);
    EXPECT_EQ(cursor.Save(path), 0);
    EXPECT_EQ(cursor.Load(path), 1);
}

TEST(MarkupSave, EditingWithoutEndTakesTheMemoryOfWhatIsAlive) {
    CMarkupMSXML markup(L"<r><held><in/></held><a/></r>");
    ASSERT_EQ(markup.FindChildElem(L"held"), 1);
    CMSXmlParserNode held = markup.GetNode(L"r/held/in");
    ASSERT_EQ(markup.RemoveChildElem(), 1);
    CMSXmlParserNode changed = markup.GetNode(L"r/a");
    const CString text = Repeated(L'0', 1000);
    for (int i = 0; i < 3000; ++i) {
        ASSERT_EQ(markup.SetAttrib(L"n" + CString(nqp2::WholeText(i % 7)), text), 1);
        ASSERT_EQ(markup.AddChildElem(L"e" + CString(nqp2::WholeText(i)), text), 1);
        ASSERT_EQ(markup.RemoveChildElem(), 1);
        ASSERT_EQ(changed.SetNodeText(text + CString(nqp2::WholeText(i))), 1);
        ASSERT_EQ(markup.AddElem(L"second"), 0);
    }
    EXPECT_LT(markup.GetDocumentPtr()->Content()->BytesUsed(), 1'000'000U);
    EXPECT_EQ(held.GetXml().Text(), L"<in/>");
    EXPECT_EQ(held.GetNodeText(L"/held/in", 0), L"") << "what it was in is there as well";
    EXPECT_EQ(markup.GetAttrib(L"n6"), text);
    EXPECT_EQ(CMarkupMSXML(markup.GetDoc()).GetNodeText(L"r/a", 0), text + L"2999");
}

} // namespace
