// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/document.h"

#include "platform/file_system.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_folder.h"
#include "tests/xml/dom/loaded_document.h"
#include "xml/dom/XmlLimits.h"

namespace nqp2::dom {
namespace {

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

TEST_F(LoadFileTest, FindsNamesInAnyCaseAndTakesThemLiterally) {
    m_folder.Write("Clip/0001AA.xml", "<a>1</a>");
    m_folder.Write("a%20b.xml", "<a>2</a>");
    ASSERT_TRUE(m_document.LoadFile(m_folder.Path("CLIP/0001aa.XML")));
    EXPECT_EQ(TextOf(*m_document.DocumentNode()), "1");
    ASSERT_TRUE(m_document.LoadFile(m_folder.Path("a%20b.xml")));
    EXPECT_EQ(TextOf(*m_document.DocumentNode()), "2");
}

TEST_F(LoadFileTest, TellsWhyAFileCannotBeRead) {
    ASSERT_TRUE(m_document.LoadText("<before/>"));
    EXPECT_EQ(FaultOf(m_folder.Path("none.xml")), Fault::NotFound);
    EXPECT_EQ(m_document.LastError().errorCode, 0x800C0006U);
    EXPECT_EQ(FaultOf(m_folder.MakeFolder("folder.xml")), Fault::IsFolder);
    EXPECT_EQ(FaultOf("<a/>"), Fault::NotFound);
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
}

TEST_F(LoadFileTest, LargeFileReadInPiecesIsTheSameDocument) {
    const std::string path = m_folder.Write("large.xml", Large());
    ASSERT_TRUE(m_document.LoadFile(path));
    EXPECT_EQ(Serialize(*m_document.DocumentNode()), Large() + "\r\n");
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

TEST_F(LoadFileTest, SaveWritesWhatLoadReadAndAFailedOneKeepsTheOldFile) {
    const std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<a>\n\t<b/></a>\r\n";
    const std::string path = m_folder.Write("a.xml", text);
    ASSERT_TRUE(m_document.LoadFile(path));
    ASSERT_TRUE(m_document.Save(m_folder.Path("b.xml")));
    std::string saved;
    ASSERT_TRUE(platform::Files().Read(m_folder.Path("b.xml"), 1000, saved));
    EXPECT_EQ(saved, text);

    ASSERT_TRUE(m_document.LoadText("<new/>"));
    FaultyFileSystem files;
    const platform::ScopedFileSystem scope(files);
    files.Fail({.error = platform::IoError::NoSpace, .operation = Operation::WriteWhole});
    EXPECT_FALSE(m_document.Save(m_folder.Path("b.xml")));
    ASSERT_TRUE(platform::Files().Read(m_folder.Path("b.xml"), 1000, saved));
    EXPECT_EQ(saved, text);
}

} // namespace
} // namespace nqp2::dom
