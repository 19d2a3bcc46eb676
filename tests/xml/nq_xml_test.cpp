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
#include <iterator>
#include <string>
#include <utility>
#include <vector>

using nqp2::platform::TextFromUtf8;
using nqp2::test::CapturedTexts;
using nqp2::test::TempFolder;

namespace {

using Texts = std::vector<CString>;

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

/// Builders whose document has the root r.
class Builder : public CNQXmlParser {
public:
    Builder() { EXPECT_EQ(CreateRoot(L"r"), 1); }

    CString BelowRoot() {
        const CString xml = Xml(*this);
        EXPECT_EQ(xml.Left(3), L"<r>");
        EXPECT_EQ(xml.Right(6), L"</r>\r\n");
        return xml.Mid(3, xml.GetLength() - 9);
    }
};

TEST(XmlBuild, ExactTextOfEachRoot) {
    CNQXmlParser builder;
    ASSERT_EQ(builder.CreateP2MainRoot(CT_DV100_1080_50I, 0), 1);
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
    EXPECT_EQ(builder.CreateEPRRoot(L"\x01"), 0);
    EXPECT_EQ(Child(builder, L"after"), 1);
    EXPECT_EQ(builder.GetNode(L"EPRINFO[EPRTYPE='']/*[2]").IsEmpty(), 0) << "the new root is there";
    ASSERT_EQ(builder.CreateRoot(L"x"), 1);
    EXPECT_EQ(Xml(builder), L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<x/>\r\n")
        << "takes the present root's place and nothing else";
    CNQXmlParser fresh;
    ASSERT_EQ(fresh.CreateRoot(L"x"), 1);
    EXPECT_EQ(Xml(fresh), L"<x/>\r\n");
}

TEST(XmlBuild, NamespaceOfEachFamilyOfCodeTypes) {
    const std::pair<int, const wchar_t*> rows[] = {
        {2, kClip30}, {34, kClip30}, {5, kClip31}, {42, kClip31}, {7, kClip31}, {50, kClip31},
        {0, L""},     {1, L""},      {24, L""},    {27, L""},     {51, L""},    {200, L""},
    };
    for (const auto& [type, uri] : rows) {
        CNQXmlParser builder;
        ASSERT_EQ(builder.CreateP2MainRoot(static_cast<eCodeType>(type), 0), 1);
        const CString written = *uri != L'\0' ? CString(L" xmlns=\"") + uri + L"\"" : CString();
        EXPECT_EQ(Xml(builder), CString(kP2Start) + written + L"/>\r\n") << type;
        ASSERT_EQ(builder.CreateP2MainRoot(static_cast<eCodeType>(type), 2), 1);
        EXPECT_EQ(Xml(builder), CString(kP2Start) + L" xmlns=\"" + kEdit + L"\"/>\r\n") << type;
    }
    CNQXmlParser builder; // the namespace before stays in use where none is chosen
    ASSERT_EQ(builder.CreateP2MainRoot(CT_AVCI50_1080_50I, 0), 1);
    ASSERT_EQ(builder.CreateP2MainRoot(CT_DV25_50I, 0), 1);
    ASSERT_EQ(TextChild(builder, L"a", 1), 1);
    EXPECT_EQ(Xml(builder),
              CString(kP2Start) + L"><a xmlns=\"" + kClip31 + L"\">1</a></P2Main>\r\n");
    ASSERT_EQ(builder.CreateEPRRoot(L""), 1);
    ASSERT_EQ(TextChild(builder, L"a", 1), 1);
    EXPECT_GT(Xml(builder).Find(CString(L"<EPRTYPE></EPRTYPE><a xmlns=\"") + kClip31), 0)
        << "the type is never in a namespace";
}

TEST(XmlBuild, EachStepWritesWhollyOrNotAtAll) {
    struct Step {
        int (*step)(CNQXmlParser& builder);
        int result;
        const wchar_t* written; ///< below r/a
        bool moves = false;     ///< the cursor, onto what was written
    };
    using B = CNQXmlParser;
    const Step steps[] = {
        {[](B& b) { return b.AddChildElement(L"x", L"k", L"v\"<"); }, 1,
         L"<x k=\"v&quot;&lt;\"><c/></x>", true},
        {[](B& b) { return b.AddChildElement(L"x", L"k", L""); }, 1, L"<x><c/></x>", true},
        {[](B& b) { return b.AddChildTextNode(L"x", L"t", L"k", L"1"); }, 1, L"<x k=\"1\">t</x>"},
        {[](B& b) { return b.AddChildTextNode(L"x", L"t", L"", L"1"); }, 1, L"<x>t</x>"},
        {[](B& b) { return TextChild(b, L"v", _variant_t()); }, 1, L"<v></v>"},
        {[](B& b) { return TextChild(b, L"v", -5); }, 1, L"<v>-5</v>"},
        {[](B& b) { return TextChild(b, L"v", std::int64_t{9'000'000'000}); }, 1,
         L"<v>9000000000</v>"},
        {[](B& b) { return TextChild(b, L"v", 0.5) + TextChild(b, L"w", true); }, 2,
         L"<v>0.5</v><w>-1</w>"},
        {[](B& b) { return TextChild(b, L"v", L" <a>&amp;\n "); }, 1,
         L"<v> &lt;a&gt;&amp;amp;\n </v>"},
        {[](B& b) { return TextChild(b, L"v", _variant_t::Null()); }, 0, L""},
        {[](B& b) { return TextChild(b, L"v", L"\xFFFF"); }, 0, L""},
        {[](B& b) { return b.AddParam(L"n", 1) + b.AddParam(L"", L""); }, 2,
         L"<PARAM><NAME>n</NAME><VALUE>1</VALUE></PARAM><PARAM><NAME></NAME><VALUE></VALUE>"
         L"</PARAM>"},
        {[](B& b) { return b.AddXmlFragment(L"<f k='1'>x<g/><!--c--></f>"); }, 1,
         L"<f k=\"1\">x<g/><!--c--></f>"},
        {[](B& b) { return b.AddXmlFragment(L"<?xml version='1.0'?><!--out--><f/>"); }, 1, L"<f/>"},
        {[](B& b) { return b.AddXmlFragment(L"<f xmlns='u'><g/></f>"); }, 1,
         L"<f xmlns=\"u\"><g/></f>"},
        {[](B& b) { return b.AddXmlFragment(L"<p:f xmlns:p='u' p:k='1'/>"); }, 1,
         L"<p:f xmlns:p=\"u\" p:k=\"1\"/>"},
        {[](B& b) { return b.AddXmlFragment(L"<f/><g/>") + b.AddXmlFragment(L"<p:f/>"); }, 0, L""},
        {[](B& b) { return b.AddXmlFragment(L"") + b.AddXmlFragment(L"text"); }, 0, L""},
        {[](B& b) { return b.CreateRoot(L"a b"); }, 0, L""},
    };
    for (const Step& each : steps) {
        Builder builder;
        ASSERT_EQ(Child(builder, L"a"), 1);
        EXPECT_EQ(each.step(builder), each.result) << CString(each.written);
        ASSERT_EQ(Child(builder, L"c"), 1);
        EXPECT_EQ(builder.BelowRoot(),
                  CString(L"<a>") + each.written + (each.moves ? L"</a>" : L"<c/></a>"));
        EXPECT_EQ(builder.BackToParent() + builder.BackToParent() + builder.BackToParent(),
                  each.moves ? 3 : 2);
    }
}

TEST(XmlBuild, NamesThatCannotBeAndADocumentThatIsMissing) {
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> table[] = {
        {L"", L"", L""}, {L"a b", L"", L""}, {L"a", L"k=", L"v"}, {L"a", L"k", L"\xFFFE"}};
    Builder builder;
    for (const auto& [name, attribute, value] : table) {
        EXPECT_EQ(builder.AddChildTextNode(name, 1, attribute, value), 0) << CString(name);
        EXPECT_EQ(builder.AddChildElement(name, attribute, value), 0) << CString(name);
    }
    EXPECT_EQ(builder.AddParam(L"bad", _variant_t::Null()) + builder.AddParam(L"\x01", 1), 0);
    EXPECT_EQ(builder.AddParam(L"last", true), 1);
    EXPECT_EQ(builder.GetNode(L"r/PARAM[3]/VALUE[.='-1']").IsEmpty(), 0) << "the cursor came back";

    CNQXmlParser none;
    EXPECT_EQ(Child(none, L"a") + TextChild(none, L"a", 1) + none.BackToParent(), 0);
    EXPECT_EQ(none.AddParam(L"a", 1) + none.AddXmlFragment(L"<a/>") + none.SaveXml(L"none.xml"), 0);
    EXPECT_EQ(Xml(none), L"");
    EXPECT_EQ(none.GetDocumentPtr(), nullptr);
}

TEST(XmlBuild, WayBackIsTenLevelsLong) {
    Builder builder;
    for (wchar_t name = L'a'; name <= L'k'; ++name) {
        ASSERT_EQ(Child(builder, CString(name, 1).GetString()), 1);
    }
    CNQXmlParser copy = builder; // shares the document and has its own cursor
    EXPECT_EQ(copy.GetDocumentPtr(), builder.GetDocumentPtr());
    EXPECT_EQ(copy.AddParam(L"n", 1), 1) << "though its parent is not remembered";
    EXPECT_EQ(Child(copy, L"tenth"), 1) << "the tenth parent, not the eleventh";
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(builder.BackToParent(), 1) << i;
    }
    EXPECT_EQ(builder.BackToParent(), 0);
    EXPECT_EQ(Child(builder, L"back"), 1);
    EXPECT_EQ(builder.BelowRoot(), L"<a><b><c><d><e><f><g><h><i><j><k><PARAM><NAME>n</NAME>"
                                   L"<VALUE>1</VALUE></PARAM></k></j><tenth/></i>"
                                   L"</h></g></f></e></d></c></b></a><back/>");
}

constexpr const char* kSchema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                "<xs:element name='r' type='xs:int'/></xs:schema>";

/// Runs in a folder of its own, as the current one.
class XmlLoad : public testing::Test {
protected:
    XmlLoad() { std::filesystem::current_path(m_folder.Path()); }
    ~XmlLoad() override { std::filesystem::current_path(m_before); }

    /// Writes a file and loads it.
    int Load(const std::string& text) {
        return m_builder.LoadXml(TextFromUtf8(m_folder.Write("f", text)));
    }
    CString Xml() { return m_builder.GetXml().Text(); }
    int Child(const wchar_t* name) { return m_builder.AddChildElement(name, L"", L""); }

    std::filesystem::path m_before = std::filesystem::current_path();
    TempFolder m_folder;
    CNQXmlParser m_builder;
    CapturedTexts m_debug{nqp2::SetDebugOutput};
};

TEST_F(XmlLoad, RootsDeclarationsAreBoundForQueries) {
    ASSERT_EQ(Load("<P2Main xmlns='u' xmlns:xsi='x' k='1'><ClipContent><xsi:n>1</xsi:n>"
                   "<m xmlns='v'>2</m></ClipContent></P2Main>"),
              1);
    const std::pair<const wchar_t*, const wchar_t*> table[] = {
        {L"//P2Main:P2Main/P2Main:ClipContent/xsi:n", L"1"},
        {L"/P2Main:P2Main/P2Main:ClipContent[1]", L"12"},
        {L"//P2Main/ClipContent", L""},
        {L"//P2Main:P2Main/P2Main:ClipContent/P2Main:m", L""},
        {L"//P2Main:P2Main/P2Main:ClipContent/p:n", L""}, // not bound
    };
    for (const auto& [path, text] : table) {
        EXPECT_EQ(m_builder.GetNodeText(path, 0), text) << CString(path);
    }
    EXPECT_THROW(m_builder.GetNode(L"//p:n"), _com_error);
    EXPECT_EQ(m_debug.Take(), Texts());
}

TEST_F(XmlLoad, OtherNamesThatBeginWithXmlSpoilTheBinding) {
    for (const char* const attribute : {"xml:lang='en'", "xml:space='preserve'", "xmlfoo='1'"}) {
        ASSERT_EQ(Load("<P2Main xmlns='u' " + std::string(attribute) + "><a>1</a></P2Main>"), 1);
        EXPECT_THROW(m_builder.GetNode(L"//P2Main:P2Main/P2Main:a"), _com_error) << attribute;
    }
    ASSERT_EQ(Load("<P2Main xmlns='u' Xml='1' lang='en'><a>1</a></P2Main>"), 1);
    EXPECT_EQ(m_builder.GetNodeText(L"//P2Main:P2Main/P2Main:a", 0), L"1");
}

TEST_F(XmlLoad, BindingsBySetSelectNamespaceAndReadRoot) {
    EXPECT_THROW(m_builder.SetSelectNamespace(L""), _com_error);
    EXPECT_THROW(m_builder.ReadRoot(L":q"), _com_error);
    ASSERT_EQ(m_builder.SetXml(L"<r xmlns='u'><a>1</a></r>"), 1);
    EXPECT_THROW(m_builder.GetNode(L"//P2Main:a"), _com_error) << "a text binds nothing";
    EXPECT_EQ(m_builder.SetSelectNamespace(L" xmlns:p='u' xmlns:q=\"v\"\r\n"), S_OK);
    EXPECT_EQ(m_builder.GetNodeText(L"p:r/p:a", 0), L"1");
    EXPECT_EQ(m_builder.SetSelectNamespace(L"xmlns:p=u"), E_FAIL);
    EXPECT_THROW(m_builder.GetNode(L"p:r"), _com_error);
    m_builder.ReadRoot(L":q");
    EXPECT_EQ(m_builder.GetNodeText(L"q:r/q:a", 0), L"1");
}

TEST_F(XmlLoad, WhatFailsIsToldToTheDebuggerOnlyEachInItsForm) {
    EXPECT_EQ(m_builder.LoadXml(TextFromUtf8(m_folder.Path("none.xml"))), 0);
    EXPECT_EQ(m_debug.Take(),
              (Texts{L"Error:\nCode = 0x800c0006\t\t\t \nSource = Line : 0; Char : 0\t\t\t \n"
                     L"Error Description = the file does not exist\n"}));
    EXPECT_EQ(Load("<r>\n<a></b></r>"), 0);
    EXPECT_EQ(Xml(), L"") << "a failed load empties the document";
    EXPECT_NE(m_builder.GetDocumentPtr(), nullptr) << "but there is one";
    EXPECT_EQ(m_builder.SetXml(L"<r>"), 0);
    ASSERT_EQ(m_builder.SetXml(L"<r/>"), 1);
    EXPECT_EQ(m_builder.AddXmlFragment(L"<a/><b/>"), 0);
    EXPECT_EQ(Xml(), L"<r/>\r\n");
    const Texts told = m_debug.Take();
    const wchar_t* const begins[] = {
        L"Error:\nCode = 0xc00ce56d\t\t\t \nSource = Line : 2; Char : ",
        L"Error:\nCode = 0xc00ce553\t\t\t\t\t\nSource = Line : 1; Char : ",
        L"Error:\nCode = 0xc00ce555\t\t\t\t\t\nSource = Line : 1; Char : ",
    };
    ASSERT_EQ(told.size(), std::size(begins));
    for (std::size_t i = 0; i < told.size(); ++i) {
        EXPECT_EQ(told[i].Find(begins[i]), 0) << told[i];
        EXPECT_GT(told[i].Find(L"\nError Description = "), 0) << told[i];
        EXPECT_EQ(told[i].Right(1), L"\n");
    }
}

TEST_F(XmlLoad, LoadLeavesTheCursorAndTheRememberedParents) {
    ASSERT_EQ(Load("<r/>"), 1);
    EXPECT_EQ(Child(L"a"), 0) << "no cursor yet";
    EXPECT_EQ(m_builder.BackToParent(), 1) << "yet the null parent was remembered";
    ASSERT_EQ(m_builder.CreateRoot(L"old"), 1);
    ASSERT_EQ(Load("<r/>"), 1);
    EXPECT_EQ(Child(L"a"), 1);
    EXPECT_EQ(Xml(), L"<r/>\r\n") << "it went to the document before";
    ASSERT_EQ(m_builder.SetXml(L"<s><t/></s>"), 1);
    EXPECT_EQ(Child(L"a"), 1);
    EXPECT_EQ(Xml(), L"<s><t/><a/></s>\r\n") << "a text moves it to its root";
    EXPECT_EQ(m_builder.BackToParent() + m_builder.BackToParent() + m_builder.BackToParent(), 2);
}

TEST_F(XmlLoad, RenderSchemaInTheCurrentFolderDecides) {
    EXPECT_EQ(m_builder.SetXml(L"<?xml version='1.0' encoding='UTF-16'?><any>\u7D20</any>"), 1);
    for (const char* const schema : {"", "<xs:schema", "<r/>"}) {
        m_folder.Write("render.xsd", schema);
        EXPECT_EQ(m_builder.SetXml(L"<r>12</r>"), 0) << schema;
    }
    std::filesystem::remove(m_folder.Path("render.xsd"));
    m_folder.MakeFolder("render.xsd");
    EXPECT_EQ(m_builder.SetXml(L"<r>12</r>"), 0) << "a folder of that name";
    std::filesystem::remove(m_folder.Path("render.xsd"));
    m_folder.Write("Render.XSD", kSchema); // any letter case
    EXPECT_EQ(m_builder.SetXml(L""), 0);
    m_debug.Take();
    EXPECT_EQ(m_builder.SetXml(L"<r>12</r>"), 1);
    EXPECT_EQ(m_debug.Take(), Texts());
    ASSERT_EQ(Child(L"a"), 1);

    EXPECT_EQ(m_builder.SetXml(L"<r>x</r>"), 0);
    const Texts told = m_debug.Take();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].Left(32), L"Error code: -1072897499\nReason: ");
    EXPECT_GT(told[0].GetLength(), 32);
    EXPECT_EQ(m_builder.BackToParent() + Child(L"b"), 2);
    EXPECT_EQ(Xml(), L"<r>x</r>\r\n") << "parsed, but the cursor did not move to it";
    EXPECT_EQ(Load("<other/>"), 1) << "files are not held against it";
    EXPECT_EQ(m_builder.AddXmlFragment(L"<other/>"), 1);
}

TEST_F(XmlLoad, SavedFileLoadsAgainAsItWas) {
    ASSERT_EQ(m_builder.CreateP2MainRoot(CT_DV100_1080_50I, 1), 1);
    ASSERT_EQ(m_builder.AddChildTextNode(L"b", L" \u7D20 & \u00E4 ", L"k", L"\"\n"), 1);
    const CString path = TextFromUtf8(m_folder.Path("saved.xml"));
    ASSERT_EQ(m_builder.SaveXml(path), 1);
    CNQXmlParser again;
    ASSERT_EQ(again.LoadXml(path), 1);
    EXPECT_EQ(again.GetXml().Text(), Xml());
    EXPECT_EQ(again.GetNodeText(L"//P2Main:P2Main/P2Main:b", 0), L" \u7D20 & \u00E4 ");
    EXPECT_EQ(m_builder.SaveXml(TextFromUtf8(m_folder.Path("no/such/folder.xml"))), 0);
    EXPECT_EQ(m_builder.SaveXml(TextFromUtf8(m_folder.MakeFolder("folder"))), 0);
}

} // namespace
