// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/XmlLimits.h"
#include "platform/file_system.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_folder.h"
#include "tests/xml/dom/loaded_document.h"
#include "xml/dom/document.h"
#include "xml/dom/quick_parser.h"

#include <chrono>
#include <cstdint>

namespace nqp2::dom {
namespace {

using std::string_literals::operator""s;

std::string Utf16(std::string_view ascii, bool bigEndian) {
    std::string bytes;
    for (const char ch : ascii) {
        bytes.append({bigEndian ? '\0' : ch, bigEndian ? ch : '\0'});
    }
    return bytes;
}

struct Faulty {
    std::string bytes;
    std::uint32_t code;
    int line = 1;
    int column = 0; ///< 0: not checked
};

TEST(ParseFault, TellsTheFirstErrorWithItsPlaceAndLeavesAnEmptyDocument) {
    const Faulty table[] = {
        {"", 0xC00CE558U},
        {" <?xml version='1.0'?><a/>", 0xC00CE557U},
        {"<a>\n <b></c>\n</a>", 0xC00CE56DU, 2, 9},
        {"<a xmlns:p='u' xmlns:q='u' p:x='' q:x=''/>", 0xC00CE554U},
        {"<a x=1/>", 0xC00CE502U},
        {"<a x='<'/>", 0xC00CE506U},
        {"<a/>\n<b/>", 0xC00CE555U, 2},
        {"<a/>x", 0xC00CE556U},
        {"<p:a/>", 0xC00CE01DU},
        {"<a xmlns:p=''/>", 0xC00CE01DU},
        {"<a>&b;</a>", 0xC00CE002U},
        {"<a>x\0y</a>"s, 0xC00CE508U},
        {"<a>&#1;</a>", 0xC00CE508U},
        {"<a>\xED\xA0\x80</a>", 0xC00CE508U}, // a surrogate
        {"\x06\x0E\x2B\x34\x02\x05\x01\x01", 0xC00CE556U},
        {"<?xml version='1.0' encoding='no-such'?><a/>", 0xC00CE56EU},
        {"<?xml version='1.0' encoding='Shift_JIS'?><a>\x81\xFF</a>", 0xC00CE553U},
        {"\xFF\xFE" + Utf16("<a>", false) + "\x00\xD8"s + Utf16("x</a>", false), 0xC00CE553U},
        {"<!DOCTYPE a><a/>", kErrorDocumentType},
        {"<!DOCTYPE a [<!ATTLIST a x CDATA 'given'>]><a/>", kErrorDocumentType},
        {"<!DOCTYPE a [<!ENTITY % p SYSTEM 'file:///etc/passwd'>%p;]><a/>", kErrorDocumentType},
        {"<!DOCTYPE a [<!ENTITY b 'bb'><!ENTITY c '&b;&b;'>]><a x='&c;'/>", kErrorDocumentType},
    };
    testing::internal::CaptureStderr();
    Document document(SelectionRule::Names::Qualified);
    for (const auto& [bytes, code, line, column] : table) {
        EXPECT_FALSE(document.LoadBytes(bytes)) << bytes;
        const ParseError& error = document.LastError();
        EXPECT_EQ(error.errorCode, code) << error.reason << " in " << bytes;
        EXPECT_EQ(error.fault,
                  code == kErrorDocumentType ? Fault::DocumentType : Fault::NotWellFormed);
        EXPECT_EQ(error.line, line) << bytes;
        EXPECT_TRUE(column == 0 || error.linepos == column) << bytes;
        EXPECT_FALSE(error.reason.empty()) << bytes;
        EXPECT_EQ(document.Content()->DocumentNode().FirstChild(), nullptr) << bytes;
        ASSERT_TRUE(document.LoadBytes("<d>text</d>")) << document.LastError().reason;
        EXPECT_EQ(Serialize(document.Content()->DocumentNode()), "<d>text</d>\r\n");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "nothing prints by itself";
}

TEST(ParseFault, CutOffAnywhereIsNoDocument) {
    const std::string whole =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!--c--><P xmlns=\"u\" xmlns:p=\"v\" "
        "p:x=\"1&amp;2\">\xE7\xB4\xA0<p:C>&lt;</p:C><![CDATA[<&]]><?i d?>&#x7D20;</P>";
    Document document(SelectionRule::Names::Qualified);
    EXPECT_FALSE(document.LoadText("\n\n <?xml version='1.0' encoding='UTF-16'?>\n<a></b>"));
    EXPECT_EQ(document.LastError().line, 4) << "of a text, from where that starts";
    ASSERT_TRUE(document.LoadBytes(whole));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(document.LoadBytes(std::string_view(whole).substr(0, length))) << length;
        EXPECT_EQ(document.Content()->Root(), nullptr) << length;
    }
}

// A flood that is handled badly takes minutes or hours, so the limit can be generous.
class Flood : public testing::Test {
protected:
    void ExpectRefused(const std::string& bytes, Fault fault) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(m_document.LoadBytes(bytes));
        EXPECT_EQ(m_document.LastError().fault, fault) << m_document.LastError().reason;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
        EXPECT_TRUE(m_document.LoadBytes("<sound/>")) << "a flood must not spoil the next file";
    }

    static std::string Numbered(std::string_view before, std::string_view after, int count) {
        std::string text;
        for (int i = 0; i < count; ++i) {
            text.append(before).append(std::to_string(i)).append(after);
        }
        return text;
    }

    Document m_document{SelectionRule::Names::Qualified};
};

TEST_F(Flood, IsRefusedInTime) {
    constexpr std::size_t kDeep = 100'000;
    ExpectRefused(Repeated("<a>", kDeep) + Repeated("</a>", kDeep), Fault::NotWellFormed);
    ExpectRefused(Repeated("<a>", kDeep), Fault::NotWellFormed);
    const std::string many = "<a " + Numbered("xmlns:x", "='u' ", 100) + ">";
    for (const std::string& bytes :
         {"<a " + Numbered("x", "='' ", 1'000'000) + "/>",
          "<a " + Numbered("xmlns:x", "='u' ", 300'000) + "/>", Repeated(many, 200),
          "<a>" + Repeated("<b/>", 2'000'000), "<a>" + Repeated("<b/>", 900'000) + "</a>",
          "<a>" + std::string(MaxXmlFileSize() + 4'000'000, 'x') + "</a>"}) {
        SCOPED_TRACE(bytes.substr(0, 20));
        ExpectRefused(bytes, Fault::TooLarge);
    }
}

TEST_F(Flood, EverNewNamesFromFileToFile) {
    // libxml2 gives up at 10 MB of names in one parser.
    for (int file = 0; file < 14; ++file) {
        const std::string name = "<name-of-file-" + std::to_string(file) + "-number-";
        ASSERT_TRUE(m_document.LoadBytes("<?i?><a>" + Numbered(name, "/>", 30'000) + "</a>"))
            << file;
    }
}

TEST(QuickParser, GivesLargeDocumentsAsLibxml2Does) {
    const std::string part = "<p:b xmlns:p='u' p:x='&lt;'>t&amp;t<c/><![CDATA[<]]></p:b>\n";
    Document quick(SelectionRule::Names::Qualified);
    Document sound(SelectionRule::Names::Qualified);
    for (const std::size_t size :
         {std::size_t{300'000}, kLargestQuickDocument - 8, kLargestQuickDocument + 100}) {
        std::string text = Repeated(part, size / part.size());
        text = "<a>" + text + std::string(size - text.size(), 'x') + "</a>";
        ASSERT_TRUE(quick.LoadBytes(text) && sound.LoadBytes("<?i?>" + text)) << size;
        EXPECT_TRUE("<?i?>\r\n" + Serialize(*quick.DocumentNode()) == // too large to be printed
                    Serialize(*sound.DocumentNode()))
            << size;
    }
}

TEST(Encoding, IsToldByMarkOrDeclaration) {
    const std::string utf16 = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>";
    const std::string table[] = {
        "<a>\xC3\xA4</a>",
        "\xEF\xBB\xBF<a>\xC3\xA4</a>",
        "<?xml version='1.0' encoding='windows-1252'?><a>\xE4</a>",
        "\xFF\xFE" + Utf16(utf16, false) + "\xE4\0"s + Utf16("</a>", false),
        "\xFE\xFF" + Utf16(utf16, true) + "\0\xE4"s + Utf16("</a>", true),
        Utf16(utf16, false) + "\xE4\0"s + Utf16("</a>", false),
    };
    for (const std::string& bytes : table) {
        Document document(SelectionRule::Names::Qualified);
        ASSERT_TRUE(document.LoadBytes(bytes)) << document.LastError().reason << bytes;
        const bool declared = bytes.find('?') != std::string::npos;
        const std::string start = declared ? "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n" : "";
        EXPECT_EQ(Serialize(document.Content()->DocumentNode()), start + "<a>\xC3\xA4</a>\r\n");
    }
}

class LoadFileTest : public testing::Test {
protected:
    ~LoadFileTest() override { SetMaxXmlFileSize(m_limit); }

    Fault FaultOf(const std::string& path) {
        EXPECT_FALSE(m_document.LoadFile(path));
        EXPECT_NE(m_document.LastError().reason, "");
        EXPECT_EQ(m_document.LastError().line, 0);
        EXPECT_EQ(m_document.Content()->Root(), nullptr);
        return m_document.LastError().fault;
    }

    test::TempFolder m_folder;
    Document m_document{SelectionRule::Names::Qualified};
    std::uint64_t m_limit = MaxXmlFileSize();
    /// Beyond the size up to which a file is read whole.
    const std::string m_text = "<a>" + std::string(kLargestQuickDocument, 'x') + "</a>";
    const std::string m_large = m_folder.Write("Clip/large%20.xml", m_text);
};

TEST_F(LoadFileTest, TellsWhyAFileCannotBeReadAndRefusesLargeOnesUnread) {
    EXPECT_EQ(FaultOf(m_folder.Path("none.xml")), Fault::NotFound);
    EXPECT_EQ(m_document.LastError().errorCode, 0x800C0006U);
    EXPECT_EQ(FaultOf(m_folder.Path("Clip")), Fault::IsFolder);
    const std::string small = m_folder.Write("small.xml", "<a>" + std::string(993, 'x') + "</a>");
    SetMaxXmlFileSize(1000);
    EXPECT_TRUE(m_document.LoadFile(small));
    SetMaxXmlFileSize(999);
    EXPECT_EQ(FaultOf(small), Fault::TooLarge);
    SetMaxXmlFileSize(m_text.size() - 1);
    EXPECT_EQ(FaultOf(m_large), Fault::TooLarge);
    SetMaxXmlFileSize(m_text.size());
    EXPECT_TRUE(m_document.LoadFile(m_folder.Path("Clip/large%20.xml")));
    EXPECT_EQ(Serialize(*m_document.DocumentNode()), m_text + "\r\n") << "read in pieces";
    SetMaxXmlFileSize(UINT64_MAX);
    EXPECT_TRUE(m_document.LoadText("<a>" + Repeated("<b/>", 60'000) + "</a>")) << "no small limit";
}

TEST_F(LoadFileTest, MediumThatFailsInMidFileIsNoShortDocument) {
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem scope(files);
    files.Fail({.operation = test::Operation::ReadBlock, .skip = 2});
    EXPECT_EQ(FaultOf(m_large), Fault::Unreadable);
    files.HealAll();
    files.Fail({.operation = test::Operation::ReadBlock, .skip = 2});
    EXPECT_FALSE(
        m_document.LoadFile(m_folder.Write("broken.xml", "<a>" + std::string(m_text.size(), '&'))));
    EXPECT_EQ(m_document.LastError().fault, Fault::NotWellFormed) << "nothing is read behind it";
    files.HealAll();
    files.Fail({.operation = test::Operation::Read});
    EXPECT_EQ(FaultOf(m_large), Fault::Unreadable);
}

} // namespace
} // namespace nqp2::dom
