// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/XmlLimits.h"
#include "platform/file_system.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_folder.h"
#include "tests/xml/dom/loaded_document.h"
#include "xml/dom/document.h"
#include "xml/dom/parser.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>

namespace nqp2::dom {
namespace {

using std::string_literals::operator""s;

struct Faulty {
    const char* what;
    std::string bytes;
    std::uint32_t code;
    Fault fault = Fault::NotWellFormed;
    int line = 1;
    int column = 0; ///< 0: not checked
};

void ExpectFault(const Faulty& faulty) {
    SCOPED_TRACE(faulty.what);
    Document document(SelectionRule::Names::Qualified);
    ASSERT_TRUE(document.LoadText("<before/>"));
    EXPECT_FALSE(document.LoadBytes(faulty.bytes));
    const ParseError& error = document.LastError();
    EXPECT_EQ(error.errorCode, faulty.code) << error.reason;
    EXPECT_EQ(error.fault, faulty.fault);
    EXPECT_EQ(error.line, faulty.line);
    if (faulty.column != 0) {
        EXPECT_EQ(error.linepos, faulty.column);
    }
    EXPECT_FALSE(error.reason.empty());
    EXPECT_EQ(document.Content()->Root(), nullptr);
    EXPECT_EQ(document.Content()->DocumentNode().FirstChild(), nullptr);
    ASSERT_TRUE(document.LoadBytes("<d>text</d>")) << document.LastError().reason;
    EXPECT_EQ(document.LastError().errorCode, 0U);
    EXPECT_EQ(Serialize(document.Content()->DocumentNode()), "<d>text</d>\r\n");
}

TEST(ParseFault, TellsTheFirstErrorWithItsPlaceAndLeavesAnEmptyDocument) {
    const Faulty table[] = {
        {"empty", "", 0xC00CE558U},
        {"blanks only", " \n ", 0xC00CE558U, Fault::NotWellFormed, 2},
        {"blank before the declaration", " <?xml version='1.0'?><a/>", 0xC00CE557U},
        {"wrong end tag", "<a>\n <b></c>\n</a>", 0xC00CE56DU, Fault::NotWellFormed, 2, 9},
        {"attribute twice", "<a x='1' x='2'/>", 0xC00CE554U},
        {"attribute twice by namespace", "<a xmlns:p='u' xmlns:q='u' p:x='' q:x=''/>", 0xC00CE554U},
        {"no quote", "<a x=1/>", 0xC00CE502U},
        {"< in a value", "<a x='<'/>", 0xC00CE506U},
        {"second root", "<a/>\n<b/>", 0xC00CE555U, Fault::NotWellFormed, 2},
        {"text behind the root", "<a/>x", 0xC00CE556U},
        {"undeclared prefix", "<p:a/>", 0xC00CE01DU},
        {"prefix declared away", "<a xmlns:p=''/>", 0xC00CE01DU},
        {"undeclared entity", "<a>&b;</a>", 0xC00CE002U},
        {"NUL", "<a>x\0y</a>"s, 0xC00CE508U},
        {"reference to a control character", "<a>&#1;</a>", 0xC00CE508U},
        {"surrogate in UTF-8", "<a>\xED\xA0\x80</a>", 0xC00CE508U},
        {"overlong UTF-8", "<a>\xC0\xAF</a>", 0xC00CE508U},
        {"binary", "\x06\x0E\x2B\x34\x02\x05\x01\x01", 0xC00CE556U},
        {"unknown encoding", "<?xml version='1.0' encoding='no-such'?><a/>", 0xC00CE56EU},
    };
    for (const Faulty& faulty : table) {
        ExpectFault(faulty);
    }
}

TEST(ParseFault, RefusesEveryDocumentTypeBeforeItTakesEffect) {
    const std::string bombs = "<!DOCTYPE a [<!ENTITY b 'bbbbbbbbbb'><!ENTITY c '&b;&b;&b;'>]>";
    const std::string bodies[] = {
        "<!DOCTYPE a><a/>",
        "<!DOCTYPE a SYSTEM 'file:///etc/passwd'><a/>",
        "<!DOCTYPE a PUBLIC '-//X' 'http://127.0.0.1:9/x.dtd'><a/>",
        "<!DOCTYPE a [<!ENTITY f SYSTEM 'file:///etc/passwd'>]><a>&f;</a>",
        "<!DOCTYPE a [<!ATTLIST a x CDATA 'given'>]><a/>",
        "<!DOCTYPE a [<!ENTITY % p SYSTEM 'file:///etc/passwd'>%p;]><a/>",
        bombs + "<a>&c;</a>",
        bombs + "<a x='&c;'/>",
    };
    for (const std::string& bytes : bodies) {
        ExpectFault({bytes.c_str(), bytes, kErrorDocumentType, Fault::DocumentType});
    }
}

TEST(ParseFault, CutOffAnywhereIsNoDocument) {
    const std::string whole =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!--c--><P xmlns=\"u\" xmlns:p=\"v\" "
        "p:x=\"1&amp;2\"><?i d?>\xE7\xB4\xA0<p:C>&#x7D20;</p:C><![CDATA[<&]]></P>";
    Document document(SelectionRule::Names::Qualified);
    EXPECT_FALSE(document.LoadText("\n\n <?xml version='1.0' encoding='UTF-16'?>\n<a></b>"));
    EXPECT_EQ(document.LastError().line, 4) << "of a text, from where that starts";
    ASSERT_TRUE(document.LoadBytes(whole));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(document.LoadBytes(std::string_view(whole).substr(0, length))) << length;
        EXPECT_NE(document.LastError().reason, "") << length;
        EXPECT_EQ(document.Content()->Root(), nullptr) << length;
    }
}

// A flood that is handled badly takes minutes or hours, so the limit can be generous.
class Flood : public testing::Test {
protected:
    static constexpr auto kLimit = std::chrono::seconds(15);

    void ExpectRefused(const std::string& bytes, Fault fault) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(m_document.LoadBytes(bytes));
        EXPECT_EQ(m_document.LastError().fault, fault) << m_document.LastError().reason;
        EXPECT_LT(std::chrono::steady_clock::now() - start, kLimit);
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
          "<a>" + Repeated("<b/>", 2'000'000),
          "<a>" + std::string(MaxXmlFileSize() + 4'000'000, 'x') + "</a>"}) {
        SCOPED_TRACE(bytes.substr(0, 20));
        ExpectRefused(bytes, Fault::TooLarge);
    }
}

TEST_F(Flood, EverNewNamesFromFileToFile) {
    // libxml2 gives up at 10 MB of names in one parser.
    for (int file = 0; file < 14; ++file) {
        const std::string name = "<name-of-file-" + std::to_string(file) + "-number-";
        ASSERT_TRUE(m_document.LoadBytes("<a>" + Numbered(name, "/>", 30'000) + "</a>")) << file;
    }
}

class EndlessFaults : public platform::FileReader {
public:
    [[nodiscard]] std::uint64_t Size() const override { return UINT64_MAX; }
    platform::IoStatus Read(char* buffer, std::size_t capacity, std::size_t& count) override {
        std::fill_n(buffer, capacity, '&');
        count = capacity;
        m_bytesRead += count;
        return {};
    }
    [[nodiscard]] std::size_t BytesRead() const { return m_bytesRead; }

private:
    std::size_t m_bytesRead = 0;
};

TEST(ParseFault, NothingIsReadBehindTheFirst) {
    constexpr std::uint64_t kLimit = 16'000'000;
    EndlessFaults reader;
    const auto tree = std::make_shared<Tree>();
    EXPECT_EQ(Parser().ParseStream(reader, kLimit, *tree).fault, Fault::NotWellFormed);
    EXPECT_LT(reader.BytesRead(), kLimit / 100);
}

std::string Utf16(std::string_view ascii, bool bigEndian) {
    std::string bytes;
    for (const char ch : ascii) {
        bytes.append({bigEndian ? '\0' : ch, bigEndian ? ch : '\0'});
    }
    return bytes;
}

TEST(Encoding, IsToldByMarkOrDeclaration) {
    const std::string utf16 = "<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>";
    const std::pair<const char*, std::string> table[] = {
        {"UTF-8", "<a>\xC3\xA4</a>"},
        {"UTF-8 with mark", "\xEF\xBB\xBF<a>\xC3\xA4</a>"},
        {"Windows-1252", "<?xml version='1.0' encoding='windows-1252'?><a>\xE4</a>"},
        {"ISO-8859-1", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>"},
        {"UTF-16LE with mark", "\xFF\xFE" + Utf16(utf16, false) + "\xE4\0"s + Utf16("</a>", false)},
        {"UTF-16BE with mark", "\xFE\xFF" + Utf16(utf16, true) + "\0\xE4"s + Utf16("</a>", true)},
        {"UTF-16LE without", Utf16(utf16, false) + "\xE4\0"s + Utf16("</a>", false)},
        {"UTF-16BE without", Utf16(utf16, true) + "\0\xE4"s + Utf16("</a>", true)},
    };
    for (const auto& [what, bytes] : table) {
        SCOPED_TRACE(what);
        Document document(SelectionRule::Names::Qualified);
        ASSERT_TRUE(document.LoadBytes(bytes)) << document.LastError().reason;
        EXPECT_EQ(TextOf(document.Content()->DocumentNode()), "\xC3\xA4");
        const std::string saved = Serialize(document.Content()->DocumentNode());
        EXPECT_TRUE(saved.ends_with("<a>\xC3\xA4</a>\r\n")) << saved;
        if (bytes.find('?') != std::string::npos) {
            EXPECT_TRUE(saved.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"))
                << saved;
        }
    }
}

TEST(Encoding, FaultyBytesAreReportedAndNothingIsPrinted) {
    testing::internal::CaptureStderr();
    Document document(SelectionRule::Names::Qualified);
    EXPECT_FALSE(document.LoadBytes("<?xml version='1.0' encoding='Shift_JIS'?><a>\x81\xFF</a>"));
    EXPECT_EQ(document.LastError().fault, Fault::NotWellFormed);
    EXPECT_FALSE(
        document.LoadBytes("\xFF\xFE" + Utf16("<a>", false) + "\x00\xD8"s + Utf16("x</a>", false)));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

using test::FaultyFileSystem;
using test::Operation;
using test::TempFolder;

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

    /// Beyond the size up to which a file is read whole.
    static std::string Large() { return "<a>" + std::string(300'000, 'x') + "</a>"; }

    TempFolder m_folder;
    Document m_document{SelectionRule::Names::Qualified};
    std::uint64_t m_limit = MaxXmlFileSize();
};

TEST_F(LoadFileTest, FindsNamesInAnyCaseAndTellsWhyAFileCannotBeRead) {
    m_folder.Write("Clip/a%20b.xml", "<a>1</a>");
    ASSERT_TRUE(m_document.LoadFile(m_folder.Path("Clip/a%20b.xml")));
    EXPECT_EQ(TextOf(*m_document.DocumentNode()), "1");
    EXPECT_EQ(FaultOf(m_folder.Path("none.xml")), Fault::NotFound);
    EXPECT_EQ(m_document.LastError().errorCode, 0x800C0006U);
    EXPECT_EQ(FaultOf(m_folder.MakeFolder("folder.xml")), Fault::IsFolder);
    EXPECT_EQ(FaultOf(""), Fault::NotFound);
}

TEST_F(LoadFileTest, RefusesFilesBeyondTheLimitUnread) {
    const std::string small = m_folder.Write("small.xml", "<a>" + std::string(993, 'x') + "</a>");
    const std::string large = m_folder.Write("large.xml", Large());
    SetMaxXmlFileSize(1000);
    EXPECT_TRUE(m_document.LoadFile(small));
    EXPECT_EQ(FaultOf(large), Fault::TooLarge);
    SetMaxXmlFileSize(999);
    EXPECT_EQ(FaultOf(small), Fault::TooLarge);
    SetMaxXmlFileSize(300'006);
    EXPECT_EQ(FaultOf(large), Fault::TooLarge);
    SetMaxXmlFileSize(300'007);
    EXPECT_TRUE(m_document.LoadFile(large));
    EXPECT_EQ(Serialize(*m_document.DocumentNode()), Large() + "\r\n") << "read in pieces";
    SetMaxXmlFileSize(UINT64_MAX);
    EXPECT_TRUE(m_document.LoadText("<a>" + Repeated("<b/>", 60'000) + "</a>")) << "no small limit";
}

TEST_F(LoadFileTest, MediumThatFailsInMidFileIsNoShortDocument) {
    const std::string path = m_folder.Write("large.xml", Large());
    FaultyFileSystem files;
    const platform::ScopedFileSystem scope(files);
    files.Fail({.operation = Operation::ReadBlock, .skip = 2});
    EXPECT_EQ(FaultOf(path), Fault::Unreadable);
    files.HealAll();
    EXPECT_TRUE(m_document.LoadFile(path));
    files.Fail({.operation = Operation::Read});
    EXPECT_EQ(FaultOf(path), Fault::Unreadable);
}

} // namespace
} // namespace nqp2::dom
