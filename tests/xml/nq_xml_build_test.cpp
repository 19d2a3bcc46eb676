// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/NQXmlParser.h"

#include "tests/support/print_text.h"
#include "xml/MarkupMSXML.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

namespace {

constexpr const wchar_t* kEdit = L"urn:schemas-Professional-Plug-in:P2:EditMetadata:v2.0";
constexpr const wchar_t* kClip30 = L"urn:schemas-Professional-Plug-in:P2:ClipMetadata:v3.0";
constexpr const wchar_t* kClip31 = L"urn:schemas-Professional-Plug-in:P2:ClipMetadata:v3.1";
constexpr const wchar_t* kP2Start =
    L"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\r\n<P2Main "
    L"xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";

CString Xml(CNQXmlParser& builder) {
    return builder.GetXml().Text();
}

int Child(CNQXmlParser& builder, const wchar_t* name) {
    return builder.AddChildElement(name, L"", L"");
}

int TextChild(CNQXmlParser& builder, const wchar_t* name, const _variant_t& value) {
    return builder.AddChildTextNode(name, value, L"", L"");
}

/// What stands below the root of a builder that started with CreateRoot("r").
CString BelowRoot(CNQXmlParser& builder) {
    CString xml = Xml(builder);
    EXPECT_EQ(xml.Left(3), L"<r>");
    EXPECT_EQ(xml.Right(6), L"</r>\r\n");
    return xml.Mid(3, xml.GetLength() - 9);
}

/// Builders whose document has the root r.
class Builder : public CNQXmlParser {
public:
    Builder() { EXPECT_EQ(CreateRoot(L"r"), 1); }
};

TEST(XmlBuild, ExactTextOfEachRoot) {
    CNQXmlParser builder;
    ASSERT_EQ(builder.CreateP2MainRoot(CT_DV100_1080_50I, 0), 1);
    EXPECT_EQ(Xml(builder), CString(kP2Start) + L" xmlns=\"" + kClip30 + L"\"/>\r\n");
    ASSERT_EQ(TextChild(builder, L"ClipName", L"a<\u00E4"), 1);
    EXPECT_EQ(Xml(builder), CString(kP2Start) + L" xmlns=\"" + kClip30 +
                                L"\"><ClipName>a&lt;\u00E4</ClipName></P2Main>\r\n");

    ASSERT_EQ(builder.CreateEPRRoot(L"T&1"), 1);
    EXPECT_EQ(Xml(builder),
              L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
              L"<EPRINFO xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
              L"xsi:noNamespaceSchemaLocation=\"render.xsd\"><EPRTYPE>T&amp;1</EPRTYPE>"
              L"</EPRINFO>\r\n");
    EXPECT_EQ(builder.GetNodeAttribute(L"//EPRINFO", L"noNamespaceSchemaLocation"), L"render.xsd");

    ASSERT_EQ(builder.CreateRoot(L"x"), 1);
    EXPECT_EQ(Xml(builder), L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<x/>\r\n")
        << "takes the present root's place and nothing else";
    CNQXmlParser fresh;
    ASSERT_EQ(fresh.CreateRoot(L"x"), 1);
    EXPECT_EQ(Xml(fresh), L"<x/>\r\n");
}

TEST(XmlBuild, NamespaceOfEveryCodeType) {
    std::set<int> clip30 = {2, 14, 15, 16};
    std::set<int> clip31 = {5, 17, 18, 19, 7, 20, 21, 22};
    for (int type = 29; type <= 34; ++type) {
        clip30.insert(type);
    }
    for (int type = 35; type <= 50; ++type) {
        clip31.insert(type);
    }
    for (int type = -1; type <= 210; ++type) {
        const wchar_t* const uri = clip30.count(type) != 0   ? kClip30
                                   : clip31.count(type) != 0 ? kClip31
                                                             : nullptr;
        CNQXmlParser builder;
        ASSERT_EQ(builder.CreateP2MainRoot(static_cast<eCodeType>(type), 0), 1);
        const CString written =
            uri != nullptr ? CString(L" xmlns=\"") + uri + L"\"/>\r\n" : CString(L"/>\r\n");
        EXPECT_EQ(Xml(builder), CString(kP2Start) + written) << type;
        ASSERT_EQ(builder.CreateP2MainRoot(static_cast<eCodeType>(type), 2), 1);
        EXPECT_EQ(Xml(builder), CString(kP2Start) + L" xmlns=\"" + kEdit + L"\"/>\r\n") << type;
    }
}

TEST(XmlBuild, NamespaceStaysInUseWhereNoneIsChosen) {
    CNQXmlParser builder;
    ASSERT_EQ(builder.CreateP2MainRoot(CT_DV25_50I, 0), 1);
    ASSERT_EQ(TextChild(builder, L"a", 1), 1);
    EXPECT_EQ(Xml(builder), CString(kP2Start) + L"><a>1</a></P2Main>\r\n");
    ASSERT_EQ(builder.CreateP2MainRoot(CT_AVCI50_1080_50I, 0), 1);
    ASSERT_EQ(builder.CreateP2MainRoot(CT_DV25_50I, 0), 1);
    ASSERT_EQ(TextChild(builder, L"a", 1), 1);
    EXPECT_EQ(Xml(builder),
              CString(kP2Start) + L"><a xmlns=\"" + kClip31 + L"\">1</a></P2Main>\r\n");
    ASSERT_EQ(builder.CreateEPRRoot(L""), 1);
    EXPECT_EQ(builder.GetNode(L"//EPRTYPE").GetXml().Text(), L"<EPRTYPE></EPRTYPE>")
        << "the type is never in a namespace";
    ASSERT_EQ(TextChild(builder, L"a", 1), 1);
    builder.SetSelectNamespace((CString(L"xmlns:p='") + kClip31 + L"'").GetString());
    EXPECT_EQ(builder.GetNodeText(L"EPRINFO/p:a", 0), L"1");
}

TEST(XmlBuild, ElementsWithAttributesUnderTheCursor) {
    Builder builder;
    EXPECT_EQ(builder.AddChildElement(L"a", L"k", L"v\"<"), 1);
    EXPECT_EQ(builder.AddChildElement(L"b", L"k", L""), 1);
    EXPECT_EQ(builder.AddChildTextNode(L"c", L"t", L"k", L"1"), 1);
    EXPECT_EQ(builder.AddChildTextNode(L"d", L"t", L"", L"1"), 1);
    EXPECT_EQ(builder.BackToParent(), 1);
    EXPECT_EQ(Child(builder, L"e"), 1);
    EXPECT_EQ(BelowRoot(builder), L"<a k=\"v&quot;&lt;\"><b><c k=\"1\">t</c><d>t</d></b><e/></a>");
}

TEST(XmlBuild, TextOfEveryKindOfValue) {
    _variant_t null;
    null.vt = VT_NULL;
    struct {
        _variant_t value;
        int result;
        const wchar_t* written;
    } const table[] = {
        {L"text", 1, L"<v>text</v>"},
        {L"", 1, L"<v></v>"},
        {_variant_t(), 1, L"<v></v>"},
        {-5, 1, L"<v>-5</v>"},
        {std::int64_t{9'000'000'000}, 1, L"<v>9000000000</v>"},
        {0.5, 1, L"<v>0.5</v>"},
        {true, 1, L"<v>-1</v>"},
        {false, 1, L"<v>0</v>"},
        {L" <a>&amp;\n ", 1, L"<v> &lt;a&gt;&amp;amp;\n </v>"},
        {null, 0, L""},
        {L"\x01", 0, L""},
        {L"\xFFFF", 0, L""},
    };
    for (const auto& row : table) {
        Builder builder;
        ASSERT_EQ(TextChild(builder, L"before", 1), 1);
        EXPECT_EQ(TextChild(builder, L"v", row.value), row.result) << CString(row.written);
        EXPECT_EQ(BelowRoot(builder), CString(L"<before>1</before>") + row.written);
        EXPECT_EQ(builder.BackToParent(), 0) << "nothing was remembered";
    }
}

TEST(XmlBuild, WhatNoDocumentMayHoldIsRefused) {
    struct {
        const wchar_t* name;
        const wchar_t* attribute;
        const wchar_t* value;
    } const table[] = {
        {L"", L"", L""},     {L"a b", L"", L""},  {L"1", L"", L""},      {L"a:", L"", L""},
        {L"<a>", L"", L""},  {L"\x01", L"", L""}, {L"a", L"k k", L"v"},  {L"a", L"1", L"v"},
        {L"a", L"k=", L"v"}, {L"a", L":", L"v"},  {L"a", L"k", L"\x02"}, {L"a", L"k", L"\xFFFE"},
    };
    Builder builder;
    ASSERT_EQ(TextChild(builder, L"before", 1), 1);
    const CString before = Xml(builder);
    for (const auto& row : table) {
        EXPECT_EQ(builder.AddChildTextNode(row.name, 1, row.attribute, row.value), 0);
        EXPECT_EQ(builder.AddChildElement(row.name, row.attribute, row.value), 0);
        EXPECT_EQ(Xml(builder), before) << CString(row.name) << CString(row.attribute);
    }
    for (const wchar_t* const name : {L"", L"a b", L"\x01"}) {
        EXPECT_EQ(builder.CreateRoot(name), 0) << CString(name);
    }
    EXPECT_EQ(builder.CreateEPRRoot(L"\x01"), 0);
    EXPECT_EQ(Child(builder, L"after"), 1);
    EXPECT_EQ(BelowRoot(builder), L"<before>1</before><after/>") << "the cursor never moved";
    EXPECT_EQ(CMarkupMSXML(Xml(builder)).GetError(), L"");
}

TEST(XmlBuild, WayBackIsTenLevelsLong) {
    Builder builder;
    const wchar_t* const names[] = {L"a", L"b", L"c", L"d", L"e", L"f",
                                    L"g", L"h", L"i", L"j", L"k"};
    for (const wchar_t* const name : names) {
        ASSERT_EQ(Child(builder, name), 1);
    }
    EXPECT_EQ(TextChild(builder, L"deepest", L""), 1);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(builder.BackToParent(), 1) << i;
    }
    EXPECT_EQ(builder.BackToParent(), 0);
    EXPECT_EQ(Child(builder, L"back"), 1);
    EXPECT_EQ(BelowRoot(builder),
              L"<a><b><c><d><e><f><g><h><i><j><k><deepest></deepest></k></j></i>"
              L"</h></g></f></e></d></c></b></a><back/>");
}

TEST(XmlBuild, EleventhLevelIsNotRemembered) {
    Builder builder;
    for (int i = 0; i < 11; ++i) {
        ASSERT_EQ(Child(builder, L"e"), 1);
    }
    ASSERT_EQ(builder.BackToParent(), 1);
    ASSERT_EQ(Child(builder, L"here"), 1);
    EXPECT_EQ(builder.GetNodeList(L"//here/ancestor::*").IsEmpty(), 0);
    EXPECT_EQ(builder.GetNode(L"r/e/e/e/e/e/e/e/e/e/here").IsEmpty(), 0)
        << "the tenth parent, not the eleventh";
}

TEST(XmlBuild, NewRootKeepsTheRememberedParents) {
    CNQXmlParser builder;
    ASSERT_EQ(builder.CreateP2MainRoot(CT_DV100_1080_50I, 0), 1);
    ASSERT_EQ(Child(builder, L"a"), 1);
    ASSERT_EQ(builder.CreateP2MainRoot(CT_DV100_1080_50I, 0), 1);
    const CString second = Xml(builder);
    EXPECT_EQ(builder.BackToParent(), 1);
    EXPECT_EQ(Child(builder, L"lost"), 1) << "goes to the document before";
    EXPECT_EQ(Xml(builder), second);
    EXPECT_EQ(builder.BackToParent(), 1);
    EXPECT_EQ(builder.BackToParent(), 0);
}

TEST(XmlBuild, ParameterBlock) {
    Builder builder;
    _variant_t null;
    null.vt = VT_NULL;
    EXPECT_EQ(builder.AddParam(L"n", 1), 1);
    EXPECT_EQ(builder.AddParam(L"", L""), 1);
    EXPECT_EQ(BelowRoot(builder), L"<PARAM><NAME>n</NAME><VALUE>1</VALUE></PARAM>"
                                  L"<PARAM><NAME></NAME><VALUE></VALUE></PARAM>");
    EXPECT_EQ(builder.AddParam(L"bad", null), 0);
    EXPECT_EQ(builder.AddParam(L"\x01", 1), 0);
    EXPECT_EQ(builder.AddParam(L"last", true), 1);
    EXPECT_EQ(builder.GetNode(L"r/PARAM[5]/VALUE[.='-1']").IsEmpty(), 0) << "the cursor came back";
    EXPECT_EQ(builder.BackToParent(), 0);
    CNQXmlParserNode found = builder.FindParamNode(L"//PARAM", L"n");
    EXPECT_EQ(found.SetParamVal(L"2"), 1);
    EXPECT_EQ(builder.GetNodeText(L"//PARAM/VALUE", 0), L"2");
}

TEST(XmlBuild, NothingWorksBeforeThereIsADocument) {
    CNQXmlParser builder;
    EXPECT_EQ(Child(builder, L"a"), 0);
    EXPECT_EQ(TextChild(builder, L"a", 1), 0);
    EXPECT_EQ(builder.BackToParent(), 0) << "and nothing was remembered";
    EXPECT_EQ(builder.AddParam(L"a", 1), 0);
    EXPECT_EQ(builder.AddXmlFragment(L"<a/>"), 0);
    EXPECT_EQ(builder.SaveXml(L"/tmp/never-written.xml"), 0);
    EXPECT_EQ(Xml(builder), L"");
    EXPECT_EQ(builder.GetDocumentPtr(), nullptr);
    EXPECT_EQ(builder.CreateRoot(L"r"), 1);
    EXPECT_NE(builder.GetDocumentPtr(), nullptr);
}

TEST(XmlBuild, CopySharesTheDocumentAndHasItsOwnCursor) {
    Builder builder;
    ASSERT_EQ(Child(builder, L"a"), 1);
    CNQXmlParser copy = builder;
    EXPECT_EQ(copy.BackToParent(), 1);
    EXPECT_EQ(Child(copy, L"b"), 1);
    EXPECT_EQ(Child(builder, L"c"), 1);
    EXPECT_EQ(BelowRoot(builder), L"<a><c/></a><b/>");
    EXPECT_EQ(Xml(copy), Xml(builder));
    CNQXmlParser other;
    other = std::as_const(copy);
    EXPECT_EQ(other.GetDocumentPtr(), builder.GetDocumentPtr());
}

TEST(XmlBuild, FragmentGoesInLastWithItsNamespaces) {
    struct {
        const wchar_t* fragment;
        int result;
        const wchar_t* written;
    } const table[] = {
        {L"<f k='1'>x<g/><!--c--></f>", 1, L"<f k=\"1\">x<g/><!--c--></f>"},
        {L"<?xml version='1.0'?><!--out--><f/>", 1, L"<f/>"},
        {L"<f xmlns='u'><g/></f>", 1, L"<f xmlns=\"u\"><g/></f>"},
        {L"<p:f xmlns:p='u' p:k='1'/>", 1, L"<p:f xmlns:p=\"u\" p:k=\"1\"/>"},
        {L"<f/><g/>", 0, L""},
        {L"text", 0, L""},
        {L"<p:f/>", 0, L""},
        {L"", 0, L""},
    };
    for (const auto& row : table) {
        Builder builder;
        ASSERT_EQ(Child(builder, L"a"), 1);
        ASSERT_EQ(Child(builder, L"b"), 1);
        ASSERT_EQ(builder.BackToParent(), 1);
        EXPECT_EQ(builder.AddXmlFragment(row.fragment), row.result) << CString(row.fragment);
        ASSERT_EQ(Child(builder, L"c"), 1) << "the cursor stays";
        EXPECT_EQ(BelowRoot(builder), CString(L"<a><b/>") + row.written + L"<c/></a>");
    }
}

TEST(XmlBuild, FragmentInAP2Document) {
    CNQXmlParser builder;
    ASSERT_EQ(builder.CreateP2MainRoot(CT_DV100_1080_50I, 1), 1);
    const CString same = CString(L"<f xmlns=\"") + kEdit + L"\"/>";
    ASSERT_EQ(builder.AddXmlFragment(same.GetString()), 1);
    ASSERT_EQ(builder.AddXmlFragment(L"<g/>"), 1);
    EXPECT_EQ(Xml(builder), CString(kP2Start) + L" xmlns=\"" + kEdit + L"\">" + same +
                                L"<g xmlns=\"\"/></P2Main>\r\n");
}

} // namespace
