// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "NQP2ParserU/ComError.h"
#include "platform/unicode.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"
#include "tests/xml/captured_texts.h"
#include "xml/dom/document.h"
#include "xml/metadata_folder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using nqp2::platform::TextFromUtf8;

namespace {

using M = CMarkupMSXML;

using Texts = std::vector<CString>;

TEST(MarkupLoad, TextIsForSetDocAndFileNamesForLoadAndTheErrorStays) {
    CMarkupMSXML reader(L"<a>t</a>");
    EXPECT_EQ(reader.GetNodeText(L"a", 1), L"t");
    EXPECT_EQ(reader.GetError(), L"");
    EXPECT_EQ(reader.LoadXml(L"<a>t</a>"), 0);
    EXPECT_EQ(reader.GetDoc(), L"") << "a failed load empties";
    const nqp2::test::TempFolder folder;
    const CString path = TextFromUtf8(folder.Write("clip.xml", "<a>file</a>"));
    EXPECT_EQ(reader.SetDoc(path), 0);
    const CString error = reader.GetError();
    EXPECT_EQ(error, TextFromUtf8(reader.GetDocumentPtr()->LastError().reason)) << "and no more";
    EXPECT_EQ(reader.Load(TextFromUtf8(folder.Path()) + L":\\CLIP.XML"), 1);
    EXPECT_EQ(reader.GetNodeText(L"a", 1), L"file");
    EXPECT_EQ(reader.SetDoc(nullptr), 1);
    EXPECT_EQ(reader.GetDoc(), L"");
    EXPECT_EQ(reader.GetError(), error) << "until the next failure";
    EXPECT_EQ(reader.Load(nullptr), 0);
    EXPECT_NE(reader.GetError(), error);
}

TEST(MarkupLoad, TheErrorIsThatOfTheLastFailureHoweverDocumentsAreRead) {
    CMarkupMSXML reader;
    const std::string good = "<a>t</a>";
    CString error;
    for (const char* const head : {"", "<?p?>"}) { // read quickly, and left to libxml2
        EXPECT_EQ(reader.SetDoc(TextFromUtf8(head + good)), 1);
        EXPECT_EQ(reader.GetError(), error) << "of the document before";
        EXPECT_EQ(reader.SetDoc(TextFromUtf8(head + good + "<" + head)), 0);
        error = TextFromUtf8(reader.GetDocumentPtr()->LastError().reason);
        EXPECT_EQ(reader.GetError(), error);
    }
    // A scan reads with the reader or without it, in any order.
    const nqp2::test::TempFolder folder;
    folder.Write("good.xml", good);
    folder.Write("bad.xml", good + "<");
    for (const bool withReader : {true, false}) {
        CMarkupMSXML scanning;
        nqp2::xml::ScanRemarks remarks(nullptr);
        const nqp2::xml::MetadataFolder files(nqp2::platform::Place::At(folder.Path()),
                                              nqp2::xml::MetadataFolder::Subfolders::Remarked);
        CString last;
        files.Read(
            scanning, remarks, [&](const auto&) { last = scanning.GetDoc(); },
            [&](const auto&, std::string_view bytes) {
                const bool isTaken = !withReader && bytes == good;
                last = isTaken ? CMarkupMSXML(TextFromUtf8(good)).GetDoc() : CString();
                return isTaken;
            });
        EXPECT_EQ(CMarkupMSXML(TextFromUtf8(good + "<")).GetError(), scanning.GetError());
        EXPECT_EQ(scanning.GetDoc(), last) << withReader;
    }
}

class MarkupQuery : public testing::Test {
protected:
    CMarkupMSXML m_reader{
        L"<P2Main xmlns='urn:p2' xmlns:xsi='urn:xsi' xsi:type='T' Type='u'>"
        L"<ClipContent><ClipName>0001AA</ClipName><Empty/>"
        L"<Video x='1'>a<b>b</b><![CDATA[c]]></Video></ClipContent>"
        L"<PARAM><VALUE>2</VALUE></PARAM><PARAM><NAME>n</NAME><VALUE>1</VALUE></PARAM></P2Main>"};
    nqp2::test::CapturedTexts m_debug{nqp2::SetDebugOutput};
};

TEST_F(MarkupQuery, TextAndWhatTheDebuggerIsTold) {
    const Texts silent;
    const Texts missing = {L"selectSingleNode Failed", L"selectSingleNode Throw excetption"};
    const Texts thrown = {L"selectSingleNode Throw excetption"};
    const std::tuple<const wchar_t*, int, const wchar_t*, Texts> table[] = {
        {L"//P2Main/ClipContent/ClipName", 0, L"0001AA", silent},
        {L"//P2Main/ClipContent/Video", 0, L"abc", silent},
        {L"//P2Main/ClipContent/Empty", 0, L"", silent},
        {L"//P2Main/ClipContent/None", 1, L"", silent},
        {L"//P2Main/ClipContent/None", 0, L"", missing},
        {L"//P2Main/[", 1, L"", thrown},
        {L"count(//P2Main)", 1, L"", thrown},
    };
    for (const auto& [path, ignoreMissing, text, debug] : table) {
        EXPECT_EQ(m_reader.GetNodeText(path, ignoreMissing), text) << CString(path);
        EXPECT_EQ(m_debug.Take(), debug) << CString(path) << ignoreMissing;
    }
}

TEST_F(MarkupQuery, AttributeByLocalName) {
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> table[] = {
        {L"//P2Main", L"type", L"T"},      {L"//P2Main", L"xsi:type", L""},
        {L"//P2Main", L"xsi", L"urn:xsi"}, {L"//P2Main", L"", L"urn:p2"},
        {L"//P2Main", L"xmlns", L""},      {L"//Video/@x", L"x", L""},
    };
    for (const auto& [path, attribute, value] : table) {
        EXPECT_EQ(m_reader.GetNodeAttribute(path, attribute), value) << CString(attribute);
    }
    EXPECT_EQ(m_debug.Take(), Texts());
    EXPECT_EQ(m_reader.GetNodeAttribute(L"//None", L"x"), L"");
    EXPECT_EQ(m_debug.Take(), Texts{L"selectSingleNode Failed"});
    EXPECT_EQ(m_reader.GetNodeAttribute(L"//[", L"x"), L"");
    EXPECT_EQ(m_debug.Take(), Texts{L"selectSingleNode Throw Exception"});
}

class MarkupCursor : public testing::Test {
protected:
    CMarkupMSXML m_markup{L"<?xml version='1.0'?><!--top--><r k='1'>t<a>1</a><!--c--><b><c/><p:d "
                          L"xmlns:p='u'>2</p:d>x<c e='3'/></b><?i j?><a>4</a> </r>"};
};

TEST_F(MarkupCursor, WalksTheElementsOfALevelAndInAndOut) {
    // A move, its result and the tag names of main and child position after it.
    const std::tuple<int (*)(M&), int, const wchar_t*> moves[] = {
        {[](M& m) { return m.FindElem(L"r"); }, 1, L"r/"},
        {[](M& m) { return m.FindElem(); }, 0, L"r/"},
        {[](M& m) { return m.IntoElem(); }, 1, L"/"},
        {[](M& m) { return m.FindElem(nullptr); }, 1, L"a/"},
        {[](M& m) { return m.FindElem(L""); }, 1, L"b/"},
        {[](M& m) { return m.FindElem(); }, 1, L"a/"},
        {[](M& m) { return m.FindElem(L"a") + m.FindElem(L"b"); }, 0, L"a/"}, // no start over
        {[](M& m) { return m.ResetMainPos(), m.FindElem(L"b"); }, 1, L"b/"},
        {[](M& m) { return m.GetElemCount() * 10 + m.GetElemCount(L"a"); }, 32, L"b/"},
        {[](M& m) { return m.ResetPos(), m.FindElem(L"a"); }, 0, L"/"},
        {[](M& m) { return m.IntoElem() + m.OutOfElem(); }, 0, L"/"},
        {[](M& m) { return m.ResetPos(), m.FindChildElem(L"b"); }, 1, L"r/b"},
        {[](M& m) { return m.ResetChildPos(), m.FindChildElem(); }, 1, L"r/a"},
        {[](M& m) { return m.FindChildElem(); }, 1, L"r/b"},
        {[](M& m) { return m.IntoElem(); }, 1, L"b/"},
        {[](M& m) { return m.FindChildElem(L"d") + m.FindChildElem(L"u:d"); }, 0, L"b/"},
        {[](M& m) { return m.FindChildElem(L"C") + m.FindChildElem(L"*"); }, 0, L"b/"},
        {[](M& m) { return m.FindChildElem(L"p:d"); }, 1, L"b/p:d"},
        {[](M& m) { return m.FindChildElem(L"c"); }, 1, L"b/c"}, // the second one
        {[](M& m) { return m.IntoElem(); }, 1, L"c/"},
        {[](M& m) { return m.OutOfElem(); }, 1, L"b/c"},
        {[](M& m) { return m.OutOfElem(); }, 1, L"r/b"},
        {[](M& m) { return m.OutOfElem(); }, 0, L"r/b"}, // at the top
        {[](M& m) { return m.SetDoc(L"<r><"); }, 0, L"/"},
    };
    for (const auto& [move, result, where] : moves) {
        EXPECT_EQ(move(m_markup), result) << "before " << CString(where);
        EXPECT_EQ(m_markup.GetTagName() + L"/" + m_markup.GetChildTagName(), where);
    }
}

TEST_F(MarkupCursor, FindsNodesOfTheKindsThatAreAskedForWithTheirData) {
    M markup(L"<r>t<![CDATA[<d>]]><!--c--><?i j k?><f><g>1</g> <g>2<!--no--></g></f><!--e-->u</r>");
    ASSERT_EQ(markup.FindElem(), 1);
    EXPECT_EQ(markup.GetData(), L"t<d>1 2u");
    ASSERT_EQ(markup.IntoElem(), 1);
    EXPECT_EQ(markup.GetData() + markup.GetChildData(), L"");
    const std::tuple<int, int, const wchar_t*, const wchar_t*> table[] = {
        {M::kAnyNode, M::kTextNode, L"#text", L"t"},
        {M::kCDataNode | M::kCommentNode, M::kCDataNode, L"#cdata-section", L"<d>"},
        {M::kCDataNode | M::kCommentNode, M::kCommentNode, L"#comment", L"c"},
        {M::kAnyNode, M::kInstructionNode, L"i", L"i j k"},
        {M::kAnyNode, M::kElementNode, L"f", L"1 2"},
        {M::kTextNode, M::kTextNode, L"#text", L"u"},
        {M::kAnyNode, 0, L"#text", L"u"},
    };
    for (const auto& [kinds, kind, name, data] : table) {
        EXPECT_EQ(markup.FindNode(kinds), kind) << CString(data);
        EXPECT_EQ(markup.GetTagName() + L"=" + markup.GetData(), CString(name) + L"=" + data);
    }
}

class Codec : public CMarkupMSXML {
public:
    using CMarkupMSXML::TBase64Decode;
    using CMarkupMSXML::TBase64Encode;

    std::string Encoded(std::string bytes) {
        const CString text = TBase64Encode(reinterpret_cast<unsigned char*>(bytes.data()),
                                           static_cast<int>(bytes.size()));
        return {text.View().begin(), text.View().end()};
    }

    std::string Decoded(const CString& text) {
        unsigned char* buffer = nullptr;
        const int length = TBase64Decode(text, &buffer);
        const std::unique_ptr<unsigned char[]> owner(buffer);
        return {reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(length)};
    }
};

TEST(Base64, EveryLengthComesBackAndForeignCharactersAreSkipped) {
    const std::string line(76, 'A');
    Codec codec;
    EXPECT_EQ(codec.Encoded(std::string(57, '\0')), line + "\r\n"); // a break ends the text
    EXPECT_EQ(codec.Encoded(std::string(58, '\0')), line + "\r\nAA==");
    std::string bytes;
    for (unsigned length = 0; length <= 300; ++length) {
        ASSERT_EQ(codec.Decoded(TextFromUtf8(codec.Encoded(bytes))), bytes);
        bytes.push_back(static_cast<char>((length * 37 + 101) & 0xFFU));
    }
    const std::pair<CString, const char*> table[] = {
        {L" Q=U\r\nJ\tD= ", "ABC"},
        {L"Q-U_J*D\u00E4\u7D20", "ABC"},
        {L"+/+/", "\xFB\xFF\xBF"},
        {CString(L"QUJD\0RERE", 9), "ABC"},
    };
    for (const auto& [text, decoded] : table) {
        EXPECT_EQ(codec.Decoded(text), decoded) << text;
    }
}

} // namespace
