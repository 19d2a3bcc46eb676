// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "NQP2ParserU/ComError.h"
#include "platform/unicode.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"
#include "tests/xml/captured_texts.h"
#include "xml/dom/document.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

using nqp2::platform::TextFromUtf8;
using nqp2::test::CapturedTexts;
using nqp2::test::TempFolder;

namespace {

using Texts = std::vector<CString>;

constexpr int kIgnore = 1;

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
    EXPECT_EQ(reader.Load(TextFromUtf8(folder.Path()) + L":\\CLIP.XML"), 1);
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
    EXPECT_EQ(first, TextFromUtf8(reader.GetDocumentPtr()->LastError().reason)) << "and no more";
    EXPECT_EQ(first, CString(first).TrimRight(L"\r\n"));
    EXPECT_EQ(reader.SetDoc(L"<a/>"), 1);
    EXPECT_EQ(reader.GetError(), first);
    EXPECT_EQ(reader.SetDoc(L""), 1);
    EXPECT_EQ(reader.GetError(), first);
    EXPECT_EQ(reader.Load(L"/no/such/file.xml"), 0);
    EXPECT_NE(reader.GetError(), first);
    EXPECT_FALSE(reader.GetError().IsEmpty());
}

TEST(MarkupLoad, CopiesShareTheDocument) {
    CMarkupMSXML reader(L"<a>");
    reader.SetDoc(L"<a>1</a>");
    CMarkupMSXML copy(reader);
    CMarkupMSXML assigned;
    assigned = reader;
    EXPECT_EQ(copy.GetError(), reader.GetError());
    EXPECT_EQ(copy.SetDoc(L"<a>3</a>"), 1);
    EXPECT_EQ(reader.GetNodeText(L"a", kIgnore), L"3");
    EXPECT_EQ(reader.SetDoc(L""), 1) << "takes a document of its own";
    EXPECT_EQ(assigned.GetNodeText(L"a", kIgnore), L"3");
}

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
    const std::tuple<const wchar_t*, int, const wchar_t*, Texts> table[] = {
        {L"//P2Main/ClipContent/ClipName", 0, L"0001AA", silent},
        {L"P2Main/ClipContent/ClipName", 1, L"0001AA", silent},
        {L"/P2Main/ClipContent/ClipName[1]", 1, L"0001AA", silent},
        {L"//P2Main/ClipContent/Video", 0, L"abc", silent},
        {L"//P2Main/ClipContent/Empty", 0, L"", silent},
        {L"//P2Main/ClipContent/None", 1, L"", silent},
        {L"//P2Main/ClipContent/None", 0, L"", missing},
        {L"//clipcontent/ClipName", 0, L"", missing},
        {L"//P2Main/[", 1, L"", thrown},
        {L"//P2Main/[", 0, L"", thrown},
        {L"", 1, L"", thrown},
        {L"count(//P2Main)", 1, L"", thrown},
    };
    for (const auto& [path, ignoreMissing, text, debug] : table) {
        EXPECT_EQ(m_reader.GetNodeText(path, ignoreMissing), text) << CString(path);
        EXPECT_EQ(m_debug.Take(), debug) << CString(path) << ignoreMissing;
    }
}

TEST_F(MarkupQuery, ValueTellsEmptyTextFromNoNode) {
    const std::tuple<const wchar_t*, int, int, VARTYPE> table[] = {
        {L"//Empty", 0, 1, VT_BSTR}, {L"//None", 1, 1, VT_EMPTY}, {L"//None", 0, 0, VT_EMPTY}};
    for (const auto& [path, ignoreMissing, result, type] : table) {
        _variant_t value(5);
        EXPECT_EQ(m_reader.GetNodeVal(path, value, ignoreMissing), result);
        EXPECT_EQ(value.vt, type) << CString(path);
        EXPECT_TRUE(value.Text().IsEmpty());
    }
}

TEST_F(MarkupQuery, AttributeByLocalName) {
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> table[] = {
        {L"//Video", L"x", L"1"},      {L"//Video", L"X", L""},
        {L"//P2Main", L"type", L"T"},  {L"//P2Main", L"xsi:type", L""},
        {L"//P2Main", L"Type", L"u"},  {L"//P2Main", L"xsi", L"urn:xsi"},
        {L"//P2Main", L"", L"urn:p2"}, {L"//P2Main", L"xmlns", L""},
        {L"//Video/@x", L"x", L""},
    };
    for (const auto& [path, attribute, value] : table) {
        EXPECT_EQ(m_reader.GetNodeAttribute(path, attribute), value) << CString(attribute);
        EXPECT_EQ(m_debug.Take(), Texts()) << CString(path);
    }
    EXPECT_EQ(m_reader.GetNodeAttribute(L"//None", L"x"), L"");
    EXPECT_EQ(m_debug.Take(), Texts{L"selectSingleNode Failed"});
    EXPECT_EQ(m_reader.GetNodeAttribute(L"//[", L"x"), L"");
    EXPECT_EQ(m_debug.Take(), Texts{L"selectSingleNode Throw Exception"});
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
    for (const wchar_t* name : {L"N", L"", L"n "}) {
        EXPECT_EQ(m_reader.FindParamNode(L"//PARAM", name).IsEmpty(), 1) << CString(name);
    }
    EXPECT_EQ(m_reader.FindParamNode(L"//None", L"n").IsEmpty(), 1);
    EXPECT_EQ(m_reader.FindParamNode(L"//@*", L"n").IsEmpty(), 1);
}

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
    EXPECT_EQ(m_markup.FindChildElem(L"none"), 0);
    EXPECT_EQ(Where(m_markup), L"r/") << "that much has moved";
    m_markup.ResetPos();
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
    const std::tuple<int, const wchar_t*, const wchar_t*> table[] = {
        {CMarkupMSXML::kTextNode, L"#text", L"t"},
        {CMarkupMSXML::kCDataNode, L"#cdata-section", L"<d>"},
        {CMarkupMSXML::kCommentNode, L"#comment", L"c"},
        {CMarkupMSXML::kInstructionNode, L"i", L"i j k"},
        {CMarkupMSXML::kInstructionNode, L"n", L"n "},
        {CMarkupMSXML::kElementNode, L"e", L""},
        {CMarkupMSXML::kElementNode, L"f", L"1 2"},
    };
    for (const auto& [kind, name, data] : table) {
        EXPECT_EQ(m_markup.FindNode(), kind) << CString(data);
        EXPECT_EQ(m_markup.GetTagName(), name);
        EXPECT_EQ(m_markup.GetData(), data);
    }
    EXPECT_EQ(m_markup.GetChildData(), L"");
}

TEST_F(MarkupCursor, AttributesByExactQualifiedName) {
    ASSERT_EQ(m_markup.SetDoc(L"<r xmlns='u' xmlns:p='v' p:k='1' k='2'><s k='3'/></r>"), 1);
    EXPECT_EQ(m_markup.GetAttrib(L"k"), L"") << "no position";
    ASSERT_EQ(m_markup.FindChildElem(), 1);
    const std::pair<const wchar_t*, const wchar_t*> table[] = {
        {L"k", L"2"}, {L"p:k", L"1"}, {L"xmlns", L"u"}, {L"xmlns:p", L"v"},
        {L"p", L""},  {nullptr, L""}, {L"", L""},       {L"K", L""}};
    for (const auto& [name, value] : table) {
        EXPECT_EQ(m_markup.GetAttrib(name), value) << CString(name);
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
