// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQXmlParser.h"

#include "NQP2ParserU/ComError.h"
#include "platform/unicode.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"
#include "tests/xml/captured_texts.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using nqp2::platform::TextFromUtf8;

namespace {

using Texts = std::vector<CString>;

constexpr const wchar_t* kEdit =
    L" xmlns=\"urn:schemas-Professional-Plug-in:P2:EditMetadata:v2.0\"";
constexpr const wchar_t* kClip30 =
    L" xmlns=\"urn:schemas-Professional-Plug-in:P2:ClipMetadata:v3.0\"";
constexpr const wchar_t* kClip31 =
    L" xmlns=\"urn:schemas-Professional-Plug-in:P2:ClipMetadata:v3.1\"";
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

TEST(XmlBuild, RootsOfRenderSettings) {
    CNQXmlParser builder;
    ASSERT_EQ(builder.CreateEPRRoot(L"T&1"), 1);
    EXPECT_EQ(Xml(builder),
              L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
              L"<EPRINFO xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
              L"xsi:noNamespaceSchemaLocation=\"render.xsd\"><EPRTYPE>T&amp;1</EPRTYPE>"
              L"</EPRINFO>\r\n");
    ASSERT_EQ(builder.CreateRoot(L"x"), 1);
    EXPECT_EQ(Xml(builder), L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<x/>\r\n");
}

TEST(XmlBuild, NamespaceOfEachFamilyOfCodeTypes) {
    const std::pair<int, const wchar_t*> rows[] = {
        {2, kClip30},  {34, kClip30}, {5, kClip31}, {42, kClip31},
        {50, kClip31}, {0, L""},      {24, L""},    {200, L""},
    };
    for (const auto& [type, uri] : rows) {
        CNQXmlParser builder;
        ASSERT_EQ(builder.CreateP2MainRoot(static_cast<eCodeType>(type), 0), 1);
        EXPECT_EQ(Xml(builder), CString(kP2Start) + uri + L"/>\r\n") << type;
        ASSERT_EQ(builder.CreateP2MainRoot(static_cast<eCodeType>(type), 2), 1);
        EXPECT_EQ(Xml(builder), CString(kP2Start) + kEdit + L"/>\r\n") << type;
        ASSERT_EQ(builder.CreateP2MainRoot(CT_DV25_50I, 0) + TextChild(builder, L"a", 1), 2);
        EXPECT_EQ(Xml(builder), CString(kP2Start) + L"><a" + kEdit + L">1</a></P2Main>\r\n")
            << "the one before stays in use where none is chosen";
    }
}

TEST(XmlBuild, EachStepWritesWhollyOrNotAtAll) {
    CNQXmlParser b;
    ASSERT_EQ(b.CreateRoot(L"r") + Child(b, L"a"), 2);
    EXPECT_EQ(TextChild(b, L"v", _variant_t()) + TextChild(b, L"v", 9'000'000'000) +
                  TextChild(b, L"v", 0.5) + TextChild(b, L"v", true) +
                  TextChild(b, L"v", L" <a>&amp;\n "),
              5);
    EXPECT_EQ(b.AddXmlFragment(L"<?xml version='1.0'?><!--out--><f k='1'>x<g/><!--c--></f>") +
                  b.AddXmlFragment(L"<p:f xmlns:p='u' p:k='1'/>"),
              2);
    EXPECT_EQ(b.AddChildTextNode(L"x", L"t", L"k", L"1"), 1);
    EXPECT_EQ(b.AddChildTextNode(L"x", L"t", L"", L"1"), 1);
    EXPECT_EQ(b.AddParam(L"n", 1) + b.AddParam(L"", L""), 2);
    EXPECT_EQ(b.AddParam(L"half", _variant_t::Null()) + b.AddParam(L"\x01", 1), 0);
    EXPECT_EQ(b.AddXmlFragment(L"<f/><g/>") + b.AddXmlFragment(L"<p:f/>") + b.AddXmlFragment(L""),
              0);
    EXPECT_EQ(TextChild(b, L"v", _variant_t::Null()) + TextChild(b, L"v", L"\xFFFF"), 0);
    EXPECT_EQ(b.CreateRoot(L"a b"), 0);
    EXPECT_EQ(b.BackToParent(), 1);
    EXPECT_EQ(b.BackToParent(), 0) << "what has no children was not remembered";
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> refused[] = {
        {L"", L"", L""}, {L"a b", L"", L""}, {L"a", L"k=", L"v"}, {L"a", L"k", L"\xFFFE"}};
    for (const auto& [name, attribute, value] : refused) {
        EXPECT_EQ(b.AddChildTextNode(name, 1, attribute, value), 0) << CString(name);
        EXPECT_EQ(b.AddChildElement(name, attribute, value), 0) << CString(name);
    }
    EXPECT_EQ(b.AddChildElement(L"x", L"k", L"v\"<") + b.AddChildElement(L"y", L"k", L""), 2);
    EXPECT_EQ(Xml(b),
              L"<r><a><v></v><v>9000000000</v><v>0.5</v><v>-1</v><v> &lt;a&gt;&amp;amp;\n </v>"
              L"<f k=\"1\">x<g/><!--c--></f><p:f xmlns:p=\"u\" p:k=\"1\"/>"
              L"<x k=\"1\">t</x><x>t</x><PARAM><NAME>n</NAME><VALUE>1</VALUE></PARAM>"
              L"<PARAM><NAME></NAME><VALUE></VALUE></PARAM><PARAM><NAME>half</NAME></PARAM><PARAM/>"
              L"</a><x k=\"v&quot;&lt;\"><y/></x></r>\r\n");
    CNQXmlParser none;
    EXPECT_EQ(Child(none, L"a") + TextChild(none, L"a", 1) + none.AddParam(L"a", 1), 0);
    EXPECT_EQ(none.BackToParent() + none.AddXmlFragment(L"<a/>") + none.SaveXml(L"none.xml"), 0);
    EXPECT_EQ(Xml(none), L"");
}

TEST(XmlBuild, WayBackIsTenLevelsLong) {
    CNQXmlParser builder;
    ASSERT_EQ(builder.CreateRoot(L"r"), 1);
    for (wchar_t name = L'a'; name <= L'k'; ++name) {
        ASSERT_EQ(Child(builder, CString(name, 1).GetString()), 1);
    }
    CNQXmlParser copy = builder; // shares the document and has its own cursor
    EXPECT_EQ(copy.AddParam(L"", L""), 1) << "though its parent is not remembered";
    EXPECT_EQ(Child(copy, L"tenth"), 1) << "the tenth parent, not the eleventh";
    for (int i = 0; i <= 10; ++i) {
        EXPECT_EQ(builder.BackToParent(), i < 10 ? 1 : 0) << i;
    }
    EXPECT_EQ(Child(builder, L"back"), 1);
    EXPECT_EQ(Xml(builder), L"<r><a><b><c><d><e><f><g><h><i><j><k><PARAM><NAME></NAME><VALUE>"
                            L"</VALUE></PARAM></k></j><tenth/></i></h></g></f></e></d></c></b></a>"
                            L"<back/></r>\r\n");
}

/// Runs in a folder of its own, as the current one.
class XmlLoad : public testing::Test {
protected:
    XmlLoad() { std::filesystem::current_path(m_folder.Path()); }
    ~XmlLoad() override { std::filesystem::current_path(m_before); }

    int LoadAsFile(const std::string& text) {
        return m_builder.LoadXml(TextFromUtf8(m_folder.Write("f", text)));
    }

    std::filesystem::path m_before = std::filesystem::current_path();
    nqp2::test::TempFolder m_folder;
    CNQXmlParser m_builder;
    nqp2::test::CapturedTexts m_debug{nqp2::SetDebugOutput};
};

TEST_F(XmlLoad, RootsDeclarationsAreBoundForQueries) {
    const std::string bound = "xmlns='u' xmlns:xsi='x'";
    const std::tuple<std::string, const wchar_t*, const wchar_t*> table[] = {
        {bound, L"//P2Main:P2Main/P2Main:a/xsi:n", L"1"},
        {bound, L"//P2Main/a", L""},
        {bound, L"//P2Main:P2Main/P2Main:a/p:n", nullptr}, // not bound
        {bound + " Xml='1' lang='en'", L"//P2Main:P2Main/P2Main:a", L"12"},
        // Other names that begin with "xml" spoil the binding.
        {bound + " xml:lang='en'", L"//P2Main:P2Main/P2Main:a", nullptr},
        {bound + " xmlfoo='1'", L"//P2Main:P2Main/P2Main:a", nullptr},
    };
    for (const auto& [attributes, path, text] : table) {
        ASSERT_EQ(LoadAsFile("<P2Main " + attributes +
                             "><a><xsi:n>1</xsi:n><m xmlns='v'>2</m></a></P2Main>"),
                  1);
        if (text != nullptr) {
            EXPECT_EQ(m_builder.GetNode(path).GetNodeText(0), text) << CString(path);
        } else {
            EXPECT_THROW(m_builder.GetNode(path), _com_error) << CString(path) << attributes;
        }
    }
}

TEST_F(XmlLoad, BindingsBySetSelectNamespaceAndReadRoot) {
    EXPECT_THROW(m_builder.SetSelectNamespace(L""), _com_error);
    EXPECT_THROW(m_builder.ReadRoot(L":q"), _com_error);
    ASSERT_EQ(m_builder.SetXml(L"<r xmlns='u'><a>1</a></r>"), 1);
    EXPECT_THROW(m_builder.GetNode(L"//P2Main:a"), _com_error) << "a text binds nothing";
    EXPECT_EQ(m_builder.SetSelectNamespace(L" xmlns:p='u' xmlns:q=\"v\"\r\n"), S_OK);
    EXPECT_EQ(m_builder.GetNodeText(L"p:r/p:a", 0), L"1");
    EXPECT_EQ(m_builder.SetSelectNamespace(L"xmlns:p=u"), E_FAIL);
    m_builder.ReadRoot(L":q");
    EXPECT_EQ(m_builder.GetNodeText(L"q:r/q:a", 0), L"1");
}

TEST_F(XmlLoad, WhatFailsIsToldToTheDebuggerOnlyEachInItsForm) {
    EXPECT_EQ(m_builder.LoadXml(TextFromUtf8(m_folder.Path("none.xml"))), 0);
    EXPECT_EQ(m_debug.Take(),
              (Texts{L"Error:\nCode = 0x800c0006\t\t\t \nSource = Line : 0; Char : 0\t\t\t \n"
                     L"Error Description = the file does not exist\n"}));
    ASSERT_EQ(m_builder.SetXml(L"<r/>"), 1);
    EXPECT_EQ(m_builder.AddXmlFragment(L"<a/>\n<b/>") + m_builder.SetXml(L"<r>"), 0);
    EXPECT_EQ(Xml(m_builder), L"") << "a failed load empties the document";
    const Texts told = m_debug.Take();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told[0].Find(L"Error:\nCode = 0xc00ce555\t\t\t\t\t\nSource = Line : 2; Char : "), 0);
    EXPECT_EQ(told[1].Find(L"Error:\nCode = 0xc00ce553\t\t\t\t\t\nSource = Line : 1; Char : "), 0);
}

TEST_F(XmlLoad, LoadsAndNewRootsKeepTheRememberedParents) {
    ASSERT_EQ(LoadAsFile("<r/>"), 1);
    EXPECT_EQ(Child(m_builder, L"a"), 0) << "no cursor yet";
    EXPECT_EQ(m_builder.BackToParent(), 1) << "yet the null parent was remembered";
    EXPECT_EQ(m_builder.CreateRoot(L"old") + LoadAsFile("<r/>") + Child(m_builder, L"a"), 3);
    EXPECT_EQ(Xml(m_builder), L"<r/>\r\n") << "it went to the document before";
    EXPECT_EQ(m_builder.SetXml(L"<s><t/></s>") + Child(m_builder, L"a"), 2);
    EXPECT_EQ(Xml(m_builder), L"<s><t/><a/></s>\r\n") << "a text moves it to its root";
    ASSERT_EQ(m_builder.CreateP2MainRoot(CT_DV25_50I, 0), 1);
    EXPECT_EQ(Child(m_builder, L"a") + m_builder.BackToParent() + Child(m_builder, L"b"), 3);
    const CString all = Xml(m_builder);
    EXPECT_GT(all.Find(L"><a/><b/></P2Main>"), 0) << all;
    EXPECT_EQ(m_builder.BackToParent() + m_builder.BackToParent() + Child(m_builder, L"c"), 3);
    EXPECT_EQ(Xml(m_builder), all) << "the parents of before lead to the old documents";
}

TEST_F(XmlLoad, RenderSchemaInTheCurrentFolderDecides) {
    m_folder.Write("render.xsd", "");
    EXPECT_EQ(m_builder.SetXml(L"<r>12</r>"), 0);
    std::filesystem::remove(m_folder.Path("render.xsd"));
    m_folder.Write("Render.XSD", // any letter case
                   "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                   "<xs:element name='r' type='xs:int'/></xs:schema>");
    m_debug.Take();
    EXPECT_EQ(m_builder.SetXml(L"<r>12</r>"), 1);
    ASSERT_EQ(Child(m_builder, L"a"), 1);

    EXPECT_EQ(m_builder.SetXml(L"<r>x</r>"), 0);
    const Texts told = m_debug.Take();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].Left(32), L"Error code: -1072897499\nReason: ");
    EXPECT_EQ(m_builder.BackToParent() + Child(m_builder, L"b"), 2);
    EXPECT_EQ(Xml(m_builder), L"<r>x</r>\r\n") << "parsed, but the cursor did not move to it";
    EXPECT_EQ(LoadAsFile("<other/>"), 1) << "files are not held against it";
    std::filesystem::rename(m_folder.Path("Render.XSD"), m_folder.Path("s.xsd"));
    m_folder.MakeFolder("render.xsd");
    EXPECT_EQ(m_builder.SetXml(L"<r>12</r>"), 0) << "a folder of that name";
}

} // namespace
