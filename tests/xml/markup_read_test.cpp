// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "NQP2ParserU/ComError.h"
#include "platform/unicode.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"
#include "tests/xml/captured_texts.h"
#include "tests/xml/markup_test.h"
#include "xml/dom/document.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

using nqp2::platform::TextFromUtf8;
using nqp2::test::CapturedTexts;
using nqp2::test::TempFolder;
using nqp2::test::Where;

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
    for (const wchar_t* nothing : {static_cast<const wchar_t*>(nullptr), L""}) {
        EXPECT_EQ(reader.SetDoc(L"<a/>") + reader.SetDoc(nothing), 2);
        EXPECT_EQ(reader.GetDoc(), L"");
        EXPECT_TRUE(CMarkupMSXML(nothing).GetError().IsEmpty());
        EXPECT_EQ(reader.Load(nothing), 0);
    }
}

TEST(MarkupLoad, ErrorStaysUntilTheNextFailure) {
    CMarkupMSXML reader(L"<a>\n</b>");
    const CString first = reader.GetError();
    EXPECT_EQ(first, TextFromUtf8(reader.GetDocumentPtr()->LastError().reason)) << "and no more";
    EXPECT_EQ(first, CString(first).TrimRight(L"\r\n"));
    EXPECT_EQ(reader.SetDoc(L"<a/>") + reader.SetDoc(L""), 2);
    EXPECT_EQ(reader.GetError(), first);
    EXPECT_EQ(reader.Load(L"/no/such/file.xml"), 0);
    EXPECT_NE(reader.GetError(), first);
    EXPECT_FALSE(reader.GetError().IsEmpty());
}

class QueryReader : public CMarkupMSXML {
public:
    using CMarkupMSXML::CMarkupMSXML;
    using CMarkupMSXML::GetNodeVal;
    using CMarkupMSXML::m_pDoc;
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

TEST_F(MarkupQuery, TextAndWhatTheDebuggerIsTold) {
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
        _variant_t value(5);
        const int result = m_reader.GetNodeVal(path, value, ignoreMissing);
        EXPECT_EQ(result, debug.empty() ? 1 : 0) << CString(path);
        EXPECT_EQ(value.vt, result == 0 || CString(path).Find(L"None") > 0 ? VT_EMPTY : VT_BSTR);
        m_debug.Take();
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
    EXPECT_EQ(m_reader.GetNodeList(L"//None").IsEmpty(), 1);
    EXPECT_THROW(m_reader.GetNode(L"//["), _com_error);
    EXPECT_THROW(m_reader.GetNodeList(L"//["), _com_error);
    EXPECT_THROW(m_reader.FindParamNode(L"//[", L"n"), _com_error);
    CMSXmlParserNode found = m_reader.FindParamNode(L"//PARAM", L"n");
    EXPECT_EQ(found.GetNodeText(L"VALUE", 0), L"1");
    EXPECT_EQ(found.GetNextNode(), 0) << "no list";
    for (const wchar_t* name : {L"N", L"", L"n "}) {
        EXPECT_EQ(m_reader.FindParamNode(L"//PARAM", name).IsEmpty(), 1) << CString(name);
    }
    EXPECT_EQ(m_reader.FindParamNode(L"//@*", L"n").IsEmpty(), 1);
    EXPECT_EQ(m_debug.Take(), Texts());
}

TEST_F(MarkupQuery, ReaderThatGotNoDocumentAnswersWithNothing) {
    m_reader.m_pDoc = nullptr; // as where memory did not suffice for one
    m_reader.ResetPos();
    EXPECT_EQ(m_reader.SetDoc(L"<a/>") + m_reader.Load(L"x") + m_reader.Save(L"x"), 0);
    EXPECT_EQ(m_reader.CreateMainRoot(L"r") + m_reader.AddElem(L"r") + m_reader.FindElem(), 0);
    EXPECT_EQ(m_reader.GetNodeText(L"a", 0) + m_reader.GetNodeAttribute(L"a", L"x"), L"");
    EXPECT_EQ(m_reader.GetNode(L"[").IsEmpty() + m_reader.GetNodeList(L"[").IsEmpty(), 2);
    EXPECT_EQ(m_reader.FindParamNode(L"a[", L"x").IsEmpty(), 1);
    EXPECT_EQ(m_reader.GetDoc(), L"");
    EXPECT_EQ(m_debug.Take(), Texts());
}

/// One move of the cursor, its result and the tag names of main and child position after it.
struct Move {
    int (*move)(CMarkupMSXML& markup);
    int result;
    const wchar_t* where;
};

class MarkupCursor : public testing::Test {
protected:
    void Go(const std::vector<Move>& moves) {
        for (const Move& each : moves) {
            EXPECT_EQ(each.move(m_markup), each.result) << "move " << &each - moves.data();
            EXPECT_EQ(Where(m_markup), each.where) << "move " << &each - moves.data();
        }
    }

    CMarkupMSXML m_markup{L"<?xml version='1.0'?><!--top--><r k='1'>t<a>1</a><!--c--><b><c/><p:d "
                          L"xmlns:p='u'>2</p:d>x<c e='3'/></b><?i j?><a>4</a> </r>"};
};

using M = CMarkupMSXML;

TEST_F(MarkupCursor, WalksTheElementsOfALevel) {
    Go({
        {[](M& m) { return m.FindElem(L"r"); }, 1, L"r/"},
        {[](M& m) { return m.FindElem(); }, 0, L"r/"},
        {[](M& m) { return m.IntoElem(); }, 1, L"/"},
        {[](M& m) { return m.FindElem(nullptr); }, 1, L"a/"},
        {[](M& m) { return m.FindElem(L""); }, 1, L"b/"},
        {[](M& m) { return m.FindElem(); }, 1, L"a/"},
        {[](M& m) { return m.FindElem(L"a") + m.FindElem(L"b"); }, 0, L"a/"}, // no start over
        {[](M& m) { return m.ResetMainPos(), m.FindElem(L"b"); }, 1, L"b/"},
        {[](M& m) { return m.FindElem(L"b"); }, 0, L"b/"},
        {[](M& m) { return m.GetElemCount() * 10 + m.GetElemCount(L"a"); }, 32, L"b/"},
        {[](M& m) { return m.GetElemCount(L"c"); }, 0, L"b/"},
        {[](M& m) { return m.ResetPos(), m.FindElem(L"a"); }, 0, L"/"},
        {[](M& m) { return m.GetElemCount(); }, 1, L"/"},
    });
}

TEST_F(MarkupCursor, ChildrenAndTheWayInAndOut) {
    Go({
        {[](M& m) { return m.IntoElem() + m.OutOfElem(); }, 0, L"/"},
        {[](M& m) { return m.FindChildElem(L"none"); }, 0, L"r/"}, // that much has moved
        {[](M& m) { return m.ResetPos(), m.FindChildElem(L"b"); }, 1, L"r/b"},
        {[](M& m) { return m.FindChildElem(L"b") + m.FindElem(L"none"); }, 0, L"r/b"},
        {[](M& m) { return m.ResetChildPos(), 1; }, 1, L"r/"},
        {[](M& m) { return m.FindChildElem(); }, 1, L"r/a"},
        {[](M& m) { return m.FindChildElem(); }, 1, L"r/b"},
        {[](M& m) { return m.IntoElem(); }, 1, L"b/"},
        {[](M& m) { return m.FindChildElem(L"d") + m.FindChildElem(L"u:d"); }, 0, L"b/"},
        {[](M& m) { return m.FindChildElem(L"C") + m.FindChildElem(L"*"); }, 0, L"b/"},
        {[](M& m) { return m.FindChildElem(L"p:d"); }, 1, L"b/p:d"},
        {[](M& m) { return m.FindChildElem(L"c"); }, 1, L"b/c"}, // the second one
        {[](M& m) { return m.GetChildAttrib(L"e") == L"3" ? 1 : 0; }, 1, L"b/c"},
        {[](M& m) { return m.IntoElem(); }, 1, L"c/"},
        {[](M& m) { return m.OutOfElem(); }, 1, L"b/c"},
        {[](M& m) { return m.OutOfElem(); }, 1, L"r/b"},
        {[](M& m) { return m.OutOfElem(); }, 0, L"r/b"}, // at the top
        {[](M& m) { return m.SetDoc(L"<r><"); }, 0, L"/"},
        {[](M& m) { return m.FindElem(); }, 0, L"/"},
        {[](M& m) { return m.SetDoc(L"<s/>") + m.FindElem(L"s"); }, 2, L"s/"},
        {[](M& m) { return m.Load(L"/no/such/file.xml") + m.OutOfElem(); }, 0, L"/"},
    });
}

TEST_F(MarkupCursor, DataOfEveryKindOfNode) {
    ASSERT_EQ(m_markup.SetDoc(L"<r>t<![CDATA[<d>]]><!--c--><?i j k?><?n?><e/><f><g>1</g> <g>2"
                              L"<!--no--></g></f></r>"),
              1);
    ASSERT_EQ(m_markup.FindElem(), 1);
    EXPECT_EQ(m_markup.GetData(), L"t<d>1 2");
    ASSERT_EQ(m_markup.IntoElem(), 1);
    EXPECT_EQ(m_markup.GetData() + m_markup.GetChildData(), L"");
    const std::tuple<int, const wchar_t*, const wchar_t*> table[] = {
        {M::kTextNode, L"#text", L"t"},       {M::kCDataNode, L"#cdata-section", L"<d>"},
        {M::kCommentNode, L"#comment", L"c"}, {M::kInstructionNode, L"i", L"i j k"},
        {M::kInstructionNode, L"n", L"n "},   {M::kElementNode, L"e", L""},
        {M::kElementNode, L"f", L"1 2"},
    };
    for (const auto& [kind, name, data] : table) {
        EXPECT_EQ(m_markup.FindNode(), kind) << CString(data);
        EXPECT_EQ(m_markup.GetTagName(), name);
        EXPECT_EQ(m_markup.GetData(), data);
    }
}

TEST_F(MarkupCursor, AttributesByExactQualifiedName) {
    ASSERT_EQ(m_markup.SetDoc(L"<r xmlns='u' xmlns:p='v' p:k='1' k='2'><s k='3'/></r>"), 1);
    EXPECT_EQ(m_markup.GetAttrib(L"k"), L"") << "no position";
    ASSERT_EQ(m_markup.FindChildElem(), 1);
    const std::pair<const wchar_t*, const wchar_t*> table[] = {
        {L"xmlns", L"u"}, {L"xmlns:p", L"v"}, {L"p:k", L"1"}, {L"k", L"2"}};
    for (int i = 0; i < static_cast<int>(std::size(table)); ++i) {
        EXPECT_EQ(m_markup.GetAttrib(table[i].first), table[i].second) << i;
        EXPECT_EQ(m_markup.GetAttribName(i), table[i].first) << i;
    }
    EXPECT_EQ(m_markup.GetAttrib(L"p") + m_markup.GetAttrib(nullptr) + m_markup.GetAttrib(L"K"),
              L"");
    EXPECT_EQ(m_markup.GetAttribName(-1) + m_markup.GetAttribName(4), L"");
    EXPECT_EQ(m_markup.GetChildAttrib(L"k"), L"3");
}

TEST_F(MarkupCursor, MainPositionCanBeHandedOver) {
    ASSERT_EQ(m_markup.FindElem(), 1);
    const IXMLDOMNodePtr root = m_markup.GetMainPosPtr();
    ASSERT_EQ(m_markup.IntoElem(), 1);
    EXPECT_EQ(m_markup.GetMainPosPtr(), nullptr);
    EXPECT_EQ(m_markup.SetMainPosPtr(nullptr), 0);
    EXPECT_EQ(m_markup.SetMainPosPtr(root), 1);
    EXPECT_EQ(m_markup.FindChildElem(L"b"), 1);
    EXPECT_EQ(m_markup.GetChildSubDoc().Left(6), L"<b><c/");
    EXPECT_EQ(m_markup.RemoveElem(), 1);
    EXPECT_EQ(m_markup.SetMainPosPtr(root), 0) << "it is in no document any more";
}

} // namespace
