// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "platform/ComError.h"
#include "platform/unicode.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"
#include "tests/xml/captured_texts.h"
#include "xml/document_creation.h"
#include "xml/dom/document.h"

#include <gtest/gtest.h>

#include <memory>
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
    struct {
        const wchar_t* path;
        int ignoreMissing;
        const wchar_t* text;
        Texts debug;
    } const table[] = {
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
    for (const auto& row : table) {
        EXPECT_EQ(m_reader.GetNodeText(row.path, row.ignoreMissing), row.text) << CString(row.path);
        EXPECT_EQ(m_debug.Take(), row.debug) << CString(row.path) << row.ignoreMissing;
    }
}

TEST_F(MarkupQuery, ValueTellsEmptyTextFromNoNode) {
    _variant_t value(5);
    EXPECT_EQ(m_reader.GetNodeVal(L"//Empty", value, 0), 1);
    EXPECT_EQ(value.vt, VT_BSTR);
    EXPECT_TRUE(value.Text().IsEmpty());
    EXPECT_EQ(m_reader.GetNodeVal(L"//None", value, 1), 1);
    EXPECT_EQ(value.vt, VT_EMPTY);
    value = _variant_t(5);
    EXPECT_EQ(m_reader.GetNodeVal(L"//None", value, 0), 0);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST_F(MarkupQuery, AttributeByLocalName) {
    const Texts silent;
    struct {
        const wchar_t* path;
        const wchar_t* attribute;
        const wchar_t* value;
        Texts debug;
    } const table[] = {
        {L"//Video", L"x", L"1", silent},
        {L"//Video", L"X", L"", silent},
        {L"//P2Main", L"type", L"T", silent},
        {L"//P2Main", L"xsi:type", L"", silent},
        {L"//P2Main", L"Type", L"u", silent},
        {L"//P2Main", L"xsi", L"urn:xsi", silent},
        {L"//P2Main", L"", L"urn:p2", silent},
        {L"//P2Main", L"xmlns", L"", silent},
        {L"//None", L"x", L"", {L"selectSingleNode Failed"}},
        {L"//[", L"x", L"", {L"selectSingleNode Throw Exception"}},
        {L"//Video/@x", L"x", L"", silent},
    };
    for (const auto& row : table) {
        EXPECT_EQ(m_reader.GetNodeAttribute(row.path, row.attribute), row.value)
            << CString(row.path) << CString(row.attribute);
        EXPECT_EQ(m_debug.Take(), row.debug) << CString(row.path);
    }
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
    EXPECT_EQ(found.GetXml().Text().Left(6), L"<PARAM");
    for (const wchar_t* name : {L"N", L"", L"n ", L"none"}) {
        EXPECT_EQ(m_reader.FindParamNode(L"//PARAM", name).IsEmpty(), 1) << CString(name);
    }
    EXPECT_EQ(m_reader.FindParamNode(L"//None", L"n").IsEmpty(), 1);
    EXPECT_EQ(m_reader.FindParamNode(L"//@*", L"n").IsEmpty(), 1);
}

TEST(MarkupNamespaces, PathsWithoutPrefixMatchWhateverTheDefaultNamespaceIs) {
    const wchar_t* const documents[] = {
        L"<P2Main><ClipContent><ClipName>A</ClipName></ClipContent></P2Main>",
        L"<P2Main xmlns='u'><ClipContent><ClipName>A</ClipName></ClipContent></P2Main>",
        L"<P2Main xmlns='u'><ClipContent xmlns='v'><ClipName>A</ClipName></ClipContent></P2Main>",
        L"<P2Main xmlns='u'><ClipContent><ClipName xmlns=''>A</ClipName></ClipContent></P2Main>",
        (L"<P2Main xmlns:p='u'><ClipContent><p:ClipName/>"
         L"<ClipName>A</ClipName></ClipContent></P2Main>"),
    };
    for (const wchar_t* document : documents) {
        CMarkupMSXML reader(document);
        for (const wchar_t* path : {L"//P2Main/ClipContent/ClipName", L"//ClipName[.='A']"}) {
            EXPECT_EQ(reader.GetNodeText(path, 1), L"A") << CString(document) << CString(path);
        }
    }
}

TEST(TextConversion, CopiesTextAndConvertsNothing) {
    const wchar_t* const texts[] = {L"", L"P2", L"\u7D20\U00020BB7", L"\xD800"};
    for (const wchar_t* text : texts) {
        EXPECT_EQ(CMarkupMSXML::FromBSTR(CMarkupMSXML::ToBSTR(text)), text);
        const _variant_t variant = CMarkupMSXML::ToVARIANT(text);
        EXPECT_EQ(variant.vt, VT_BSTR);
        EXPECT_EQ(CMarkupMSXML::FromVARIANT(variant), text);
    }
    EXPECT_TRUE(CMarkupMSXML::FromBSTR(_bstr_t()).IsEmpty());
    EXPECT_TRUE(CMarkupMSXML::FromBSTR(CMarkupMSXML::ToBSTR(nullptr)).IsEmpty());
    EXPECT_EQ(CMarkupMSXML::ToVARIANT(nullptr).vt, VT_BSTR);
    _variant_t null(L"hidden");
    null.vt = VT_NULL;
    const _variant_t others[] = {_variant_t(),    null,
                                 _variant_t(5),   _variant_t(true),
                                 _variant_t(1.5), _variant_t(std::int64_t{7})};
    for (const _variant_t& other : others) {
        EXPECT_TRUE(CMarkupMSXML::FromVARIANT(other).IsEmpty()) << other.vt;
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

std::string SomeBytes(std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<char>((i * 37 + count * 101) & 0xFFU));
    }
    return bytes;
}

TEST(Base64, ShapeOfTheText) {
    const std::string line(76, 'A');
    const std::pair<std::size_t, std::string> table[] = {
        {0, ""},
        {1, "AA=="},
        {2, "AAA="},
        {3, "AAAA"},
        {56, line.substr(0, 75) + "="},
        {57, line + "\r\n"}, // the one length at which a break ends the text
        {58, line + "\r\nAA=="},
        {114, line + "\r\n" + line + "\r\n"},
    };
    for (const auto& [length, text] : table) {
        EXPECT_EQ(Codec().Encoded(std::string(length, '\0')), text) << length;
    }
}

TEST(Base64, EveryLengthComesBackAndTheAlphabetIsTheUsualOne) {
    Codec codec;
    for (std::size_t length = 0; length <= 300; ++length) {
        const std::string bytes = SomeBytes(length);
        ASSERT_EQ(codec.Decoded(nqp2::platform::TextFromUtf8(codec.Encoded(bytes))), bytes);
    }
    std::string counted; // the numbers 0 to 63 of six bits each
    for (unsigned i = 0; i < 64; i += 4) {
        const unsigned group = i << 18U | (i + 1) << 12U | (i + 2) << 6U | (i + 3);
        for (const unsigned shift : {16U, 8U, 0U}) {
            counted += static_cast<char>(group >> shift & 0xFFU);
        }
    }
    EXPECT_EQ(codec.Encoded(counted),
              "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST(Base64, LengthsThatCannotBeEncodedGiveNothing) {
    Codec codec;
    unsigned char byte = 0;
    EXPECT_TRUE(codec.TBase64Encode(&byte, -1).IsEmpty());
    EXPECT_TRUE(codec.TBase64Encode(&byte, 536'870'912).IsEmpty());
    EXPECT_TRUE(codec.TBase64Encode(nullptr, 5).IsEmpty());
}

TEST(Base64, DecodingSkipsWhatIsNotOfTheAlphabet) {
    const std::pair<const wchar_t*, const char*> table[] = {
        {L"", ""},
        {L"QUJD", "ABC"},
        {L" Q=U\r\nJ\tD= ", "ABC"},
        {L"Q-U_J*D\u00E4\u7D20", "ABC"},
        {L"QUJDRA==", "ABCD"},
        {L"QUJDRA", "ABCD"},
        {L"QUJDREU", "ABCDE"},
        {L"QUJDR", "ABC"}, // a lone character holds no byte
        {L"QUI=QUI=", "AB\x10P"},
        {L"====", ""},
    };
    for (const auto& [text, bytes] : table) {
        EXPECT_EQ(Codec().Decoded(text), bytes) << CString(text);
    }
    EXPECT_EQ(Codec().Decoded(CString(L"QUJD\0RERE", 9)), "ABC") << "a zero ends the text";
}

TEST(Base64, TextForms) {
    Codec codec;
    CString text = L"z\u00E4\u00FF";
    CString encoded = codec.TBase64Encode(text);
    EXPECT_EQ(encoded, L"euT/");
    EXPECT_EQ(codec.TBase64Decode(encoded), text);
    CString foreign = L"\u7D20a";
    EXPECT_EQ(codec.TBase64Encode(foreign), L"P2E=");
    CString withZero = L"QUIAQUI=";
    EXPECT_EQ(codec.TBase64Decode(withZero), L"AB");
    CString nothing;
    EXPECT_TRUE(codec.TBase64Encode(nothing).IsEmpty());
    EXPECT_TRUE(codec.TBase64Decode(nothing).IsEmpty());
}

} // namespace
