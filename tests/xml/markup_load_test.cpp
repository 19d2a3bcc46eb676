// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "platform/unicode.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"
#include "tests/xml/captured_texts.h"
#include "xml/document_creation.h"
#include "xml/dom/document.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using nqp2::platform::TextFromUtf8;
using nqp2::test::CapturedTexts;
using nqp2::test::TempFolder;

namespace {

constexpr int kIgnore = 1;

/// Lets a test see the cursor.
class Reader : public CMarkupMSXML {
public:
    using CMarkupMSXML::CMarkupMSXML;
    void PlaceCursor() {
        m_pMainPos = m_pDoc->SelectSingle("*[1]");
        m_pChildPos = m_pMainPos;
        m_pParentPos = m_pMainPos;
    }
    [[nodiscard]] bool CursorIsReset() const {
        return m_pMainPos == nullptr && m_pChildPos == nullptr &&
               m_pParentPos == m_pDoc->DocumentNode();
    }
};

TEST(MarkupLoad, TextIsForSetDocAndFileNamesForLoadXml) {
    CMarkupMSXML reader;
    EXPECT_EQ(reader.SetDoc(L"<a>t</a>"), 1);
    EXPECT_EQ(reader.GetNodeText(L"a", kIgnore), L"t");
    EXPECT_TRUE(reader.GetError().IsEmpty());
    EXPECT_EQ(reader.LoadXml(L"<a>t</a>"), 0);
    EXPECT_FALSE(reader.GetError().IsEmpty());
    EXPECT_TRUE(reader.GetNodeText(L"a", kIgnore).IsEmpty()) << "a failed load empties";

    const TempFolder folder;
    const CString path = TextFromUtf8(folder.Write("clip.xml", "<a>file</a>"));
    EXPECT_EQ(reader.LoadXml(path), 1);
    EXPECT_EQ(reader.GetNodeText(L"a", kIgnore), L"file");
    const CString asDrive = TextFromUtf8(folder.Path()) + L":\\CLIP.XML";
    EXPECT_EQ(reader.Load(asDrive), 1);
    EXPECT_EQ(reader.SetDoc(path), 0);
}

TEST(MarkupLoad, EmptyTextGivesAnEmptyDocument) {
    for (const wchar_t* nothing : {static_cast<const wchar_t*>(nullptr), L""}) {
        CMarkupMSXML reader(L"<a/>");
        EXPECT_EQ(reader.SetDoc(nothing), 1);
        EXPECT_EQ(reader.GetNode(L"a").IsEmpty(), 1);
        EXPECT_TRUE(reader.GetError().IsEmpty());
        EXPECT_TRUE(CMarkupMSXML(nothing).GetError().IsEmpty());
        EXPECT_EQ(reader.Load(nothing), 0);
    }
}

TEST(MarkupLoad, ErrorStaysUntilTheNextFailure) {
    CMarkupMSXML reader(L"<a>\n</b>");
    const CString first = reader.GetError();
    EXPECT_GE(first.Find(L"line 2"), 0) << first;
    EXPECT_EQ(first, CString(first).TrimRight(L"\r\n"));
    EXPECT_EQ(reader.SetDoc(L"<a/>"), 1);
    EXPECT_EQ(reader.GetError(), first);
    EXPECT_EQ(reader.SetDoc(L""), 1);
    EXPECT_EQ(reader.GetError(), first);
    EXPECT_EQ(reader.Load(L"/no/such/file.xml"), 0);
    EXPECT_NE(reader.GetError(), first);
    EXPECT_FALSE(reader.GetError().IsEmpty());
}

TEST(MarkupLoad, EveryLoadResetsTheCursor) {
    Reader reader(L"<a/>");
    EXPECT_TRUE(reader.CursorIsReset());
    const std::function<int()> loads[] = {
        [&] { return reader.SetDoc(L"<b/>"); },   [&] { return reader.SetDoc(L"<b>"); },
        [&] { return reader.SetDoc(L""); },       [&] { return reader.Load(L"/none.xml"); },
        [&] { return reader.LoadBytes("<c/>"); },
    };
    for (const auto& load : loads) {
        ASSERT_EQ(reader.SetDoc(L"<a/>"), 1);
        reader.PlaceCursor();
        EXPECT_FALSE(reader.CursorIsReset());
        load();
        EXPECT_TRUE(reader.CursorIsReset());
    }
}

TEST(MarkupLoad, SavesWhatItHolds) {
    const TempFolder folder;
    const CString path = TextFromUtf8(folder.Path("saved.xml"));
    CMarkupMSXML reader(L"<?xml version='1.0'?><a>\u7D20\xD800</a>");
    ASSERT_EQ(reader.SetDoc(L"<?xml version='1.0'?><a>\u7D20</a>"), 1);
    EXPECT_EQ(reader.Save(path), 1);
    CMarkupMSXML again;
    EXPECT_EQ(again.Load(path), 1);
    EXPECT_EQ(again.GetNodeText(L"a", kIgnore), L"\u7D20");
    EXPECT_EQ(reader.Save(TextFromUtf8(folder.Path("none/saved.xml"))), 0);
    EXPECT_EQ(reader.Save(L""), 0);
}

TEST(MarkupLoad, CopiesShareTheDocument) {
    CMarkupMSXML reader(L"<a>1</a>");
    reader.SetDoc(L"<a>");
    reader.SetDoc(L"<a>1</a>");
    CMarkupMSXML copy(reader);
    CMarkupMSXML assigned;
    assigned = reader;
    EXPECT_EQ(copy.GetError(), reader.GetError());
    ASSERT_EQ(reader.GetNode(L"a").SetNodeText(L"2"), 1);
    EXPECT_EQ(copy.GetNodeText(L"a", kIgnore), L"2");
    EXPECT_EQ(copy.SetDoc(L"<a>3</a>"), 1);
    EXPECT_EQ(assigned.GetNodeText(L"a", kIgnore), L"3");
    EXPECT_EQ(reader.SetDoc(L""), 1) << "takes a document of its own";
    EXPECT_EQ(assigned.GetNodeText(L"a", kIgnore), L"3");
}

class WithoutDocument : public testing::TestWithParam<HRESULT> {
protected:
    CapturedTexts m_debug{nqp2::SetDebugOutput};
    CapturedTexts m_boxes{nqp2::SetMessageBoxSink};
    nqp2::xml::ScopedDocumentCreator m_creator{[](IXMLDOMDocumentPtr&) { return GetParam(); }};
};

INSTANTIATE_TEST_SUITE_P(Failures, WithoutDocument,
                         testing::Values(REGDB_E_CLASSNOTREG, E_OUTOFMEMORY, E_FAIL));

TEST_P(WithoutDocument, OneMessageForEachAttemptAndEmptyAnswers) {
    const std::vector<CString> message = {GetParam() == REGDB_E_CLASSNOTREG
                                              ? L"MSXML not registered"
                                              : L"Unable to create MSXML instance"};
    CMarkupMSXML reader(L"<a/>");
    EXPECT_EQ(m_boxes.Take(), message);
    EXPECT_EQ(reader.SetDoc(nullptr), 0);
    EXPECT_EQ(m_boxes.Take(), message);
    EXPECT_EQ(reader.SetDoc(L"<a/>"), 0);
    EXPECT_EQ(reader.Load(L"x.xml"), 0);
    EXPECT_EQ(reader.Save(L"x.xml"), 0);
    EXPECT_TRUE(reader.GetNodeText(L"a", 0).IsEmpty());
    EXPECT_TRUE(reader.GetNodeAttribute(L"a", L"x").IsEmpty());
    EXPECT_EQ(reader.GetNode(L"a").IsEmpty(), 1);
    EXPECT_EQ(reader.GetNodeList(L"a").IsEmpty(), 1);
    EXPECT_EQ(reader.FindParamNode(L"a[", L"x").IsEmpty(), 1);
    EXPECT_EQ(m_boxes.Take(), std::vector<CString>());
    EXPECT_EQ(m_debug.Take(), std::vector<CString>());
}

} // namespace
