// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/NQXmlParser.h"

#include "platform/ComError.h"
#include "platform/unicode.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"
#include "tests/xml/captured_texts.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using nqp2::platform::TextFromUtf8;
using nqp2::test::CapturedTexts;
using nqp2::test::TempFolder;

namespace {

using Texts = std::vector<CString>;

constexpr const char* kSchema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                "<xs:element name='r' type='xs:int'/></xs:schema>";

std::string BytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

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
    struct {
        const wchar_t* path;
        const wchar_t* text;
    } const table[] = {
        {L"//P2Main:P2Main/P2Main:ClipContent/xsi:n", L"1"},
        {L"/P2Main:P2Main/P2Main:ClipContent[1]", L"12"},
        {L"//P2Main/ClipContent", L""},
        {L"//P2Main:P2Main/P2Main:ClipContent/P2Main:m", L""},
        {L"//P2Main:P2Main/P2Main:ClipContent/p:n", L""}, // not bound
    };
    for (const auto& row : table) {
        EXPECT_EQ(m_builder.GetNodeText(row.path, 0), row.text) << CString(row.path);
    }
    EXPECT_THROW(m_builder.GetNode(L"//p:n"), _com_error);
    EXPECT_EQ(m_debug.Take(), Texts());
}

TEST_F(XmlLoad, OtherNamesThatBeginWithXmlSpoilTheBinding) {
    for (const char* const attribute : {"xml:lang='en'", "xml:space='preserve'", "xmlfoo='1'"}) {
        ASSERT_EQ(Load("<P2Main xmlns='u' " + std::string(attribute) + "><a>1</a></P2Main>"), 1);
        EXPECT_THROW(m_builder.GetNode(L"//P2Main:P2Main/P2Main:a"), _com_error) << attribute;
        EXPECT_EQ(m_builder.GetNodeText(L"//P2Main:P2Main/P2Main:a", 1), L"") << attribute;
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

TEST_F(XmlLoad, FileThatFailsIsToldToTheDebuggerOnly) {
    EXPECT_EQ(m_builder.LoadXml(TextFromUtf8(m_folder.Path("none.xml"))), 0);
    EXPECT_EQ(m_debug.Take(),
              (Texts{L"Error:\nCode = 0x800c0006\t\t\t \nSource = Line : 0; Char : 0\t\t\t \n"
                     L"Error Description = the file does not exist\n"}));
    EXPECT_EQ(Load("<r>\n<a></b></r>"), 0);
    const Texts told = m_debug.Take();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].Left(told[0].Find(L"; Char")),
              L"Error:\nCode = 0xc00ce56d\t\t\t \nSource = Line : 2");
    EXPECT_EQ(Xml(), L"") << "a failed load empties the document";
    EXPECT_NE(m_builder.GetDocumentPtr(), nullptr) << "but there is one";
}

TEST_F(XmlLoad, TextThatFailsIsToldInItsOwnForm) {
    const CString form = L"\t\t\t\t\t\nSource = Line : 1; Char : ";
    EXPECT_EQ(m_builder.SetXml(L"<r>"), 0);
    EXPECT_NE(m_builder.GetDocumentPtr(), nullptr);
    ASSERT_EQ(m_builder.SetXml(L"<r/>"), 1);
    EXPECT_EQ(m_builder.AddXmlFragment(L"<a/><b/>"), 0);
    EXPECT_EQ(Xml(), L"<r/>\r\n");
    const Texts told = m_debug.Take();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told[0].Left(told[0].Find(L"Char : ") + 7),
              CString(L"Error:\nCode = 0xc00ce553") + form);
    EXPECT_EQ(told[1].Left(told[1].Find(L"Char : ") + 7),
              CString(L"Error:\nCode = 0xc00ce555") + form);
    for (const CString& text : told) {
        EXPECT_GT(text.Find(L"\t\t\t\t\t\nError Description = "), 0) << text;
        EXPECT_EQ(text.Right(1), L"\n");
    }
}

TEST_F(XmlLoad, LoadLeavesTheCursorWhereItWas) {
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
    EXPECT_EQ(m_builder.SetXml(L"<s>"), 0);
    EXPECT_EQ(m_builder.BackToParent(), 1);
}

TEST_F(XmlLoad, WithoutSchemaAnyTextThatIsWellFormedIsTaken) {
    EXPECT_EQ(m_builder.SetXml(L"<?xml version='1.0' encoding='UTF-16'?><any>\u7D20</any>"), 1);
    EXPECT_EQ(m_builder.SetXml(L""), 0);
    m_folder.Write("Other.xsd", kSchema);
    EXPECT_EQ(m_builder.SetXml(L"<any/>"), 1);
}

TEST_F(XmlLoad, RenderSchemaInTheCurrentFolderDecides) {
    m_folder.Write("render.xsd", kSchema);
    EXPECT_EQ(m_builder.SetXml(L"<r>12</r>"), 1);
    EXPECT_EQ(m_debug.Take(), Texts());
    ASSERT_EQ(Child(L"a"), 1);

    EXPECT_EQ(m_builder.SetXml(L"<r>x</r>"), 0);
    const Texts told = m_debug.Take();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].Left(32), L"Error code: -1072897499\nReason: ");
    EXPECT_GT(told[0].GetLength(), 32);
    EXPECT_EQ(Xml(), L"<r>x</r>\r\n") << "parsed, only not accepted";
    EXPECT_EQ(m_builder.BackToParent(), 1);
    EXPECT_EQ(Child(L"b"), 1);
    EXPECT_EQ(Xml(), L"<r>x</r>\r\n") << "the cursor did not move to it";

    EXPECT_EQ(Load("<other/>"), 1) << "files are not held against it";
    EXPECT_EQ(m_builder.AddXmlFragment(L"<other/>"), 1);
}

TEST_F(XmlLoad, SchemaThatIsNoneRefusesEverything) {
    for (const char* const schema : {"", "<xs:schema", "<r/>"}) {
        m_folder.Write("render.xsd", schema);
        EXPECT_EQ(m_builder.SetXml(L"<r>12</r>"), 0) << schema;
    }
    std::filesystem::remove(m_folder.Path("render.xsd"));
    m_folder.MakeFolder("render.xsd");
    EXPECT_EQ(m_builder.SetXml(L"<r>12</r>"), 0) << "a folder of that name is there";
    std::filesystem::remove(m_folder.Path("render.xsd"));
    EXPECT_EQ(m_builder.SetXml(L"<r>12</r>"), 1);
}

TEST_F(XmlLoad, RenderDocumentsMayNameTheSchema) {
    ASSERT_EQ(m_builder.CreateEPRRoot(L"t"), 1);
    const CString document = Xml();
    m_folder.Write("render.xsd",
                   "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element "
                   "name='EPRINFO'><xs:complexType><xs:sequence><xs:element name='EPRTYPE' "
                   "type='xs:string'/></xs:sequence></xs:complexType></xs:element></xs:schema>");
    EXPECT_EQ(m_builder.SetXml(document), 1);
    ASSERT_EQ(m_builder.AddParam(L"n", 1), 1);
    EXPECT_EQ(m_builder.SetXml(Xml()), 0);
}

TEST_F(XmlLoad, SavedFileLoadsAgainAsItWas) {
    ASSERT_EQ(m_builder.CreateP2MainRoot(CT_DV100_1080_50I, 1), 1);
    ASSERT_EQ(Child(L"a"), 1);
    ASSERT_EQ(m_builder.AddChildTextNode(L"b", L" \u7D20 & \u00E4 ", L"k", L"\"\n"), 1);
    const std::string path = m_folder.Path("saved.xml");
    ASSERT_EQ(m_builder.SaveXml(TextFromUtf8(path)), 1);
    EXPECT_EQ(nqp2::platform::TextFromUtf8(BytesOf(path)), Xml());
    CNQXmlParser again;
    ASSERT_EQ(again.LoadXml(TextFromUtf8(path)), 1);
    EXPECT_EQ(again.GetXml().Text(), Xml());
    EXPECT_EQ(again.GetNodeText(L"//P2Main:P2Main/P2Main:a/P2Main:b", 0), L" \u7D20 & \u00E4 ");
    EXPECT_EQ(again.GetNodeAttribute(L"//P2Main:b", L"k"), L"\"\n");
    EXPECT_EQ(m_builder.SaveXml(TextFromUtf8(m_folder.Path("no/such/folder.xml"))), 0);
    EXPECT_EQ(m_builder.SaveXml(TextFromUtf8(m_folder.MakeFolder("folder"))), 0);
}

} // namespace
