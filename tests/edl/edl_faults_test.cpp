// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/edl/edl_test.h"
#include "tests/support/child_process.h"
#include "tests/support/faulty_file_system.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

namespace nqp2::edl {
namespace {

using platform::IoError;
using test::FaultyFileSystem;
using test::Operation;
using testing::ElementsAre;

class EdlFaultsTest : public EdlTest {
protected:
    EdlFaultsTest() {
        AddClip("0001AA");
        AddFile("MINE.xml", "old");
    }
    __int64 Save() { return m_parser.SaveToEdl(m_card.Root(), OneEvent(), 1, L"MINE"); }
    void ExpectOldFileAlone() const {
        EXPECT_EQ(Bytes("MINE.xml"), "old");
        EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml"));
    }
};

TEST_F(EdlFaultsTest, EveryRefusedWriteKeepsTheOldFile) {
    for (const IoError error : {IoError::NoSpace, IoError::ReadOnly, IoError::Denied,
                                IoError::Device, IoError::NotFound}) {
        FaultyFileSystem faulty;
        faulty.Fail({.error = error, .operation = Operation::WriteWhole});
        const platform::ScopedFileSystem inPlace(faulty);
        EXPECT_EQ(Save(), 1);
        EXPECT_EQ(faulty.Calls(Operation::WriteWhole), 1U);
        ExpectOldFileAlone();
    }
}

TEST_F(EdlFaultsTest, WhateverCallFailsTheOldFileOrTheNewOneIsWhole) {
    FaultyFileSystem counter;
    {
        const platform::ScopedFileSystem inPlace(counter);
        ASSERT_EQ(Save(), 0);
    }
    const std::string whole = Bytes("MINE.xml");
    for (std::uint64_t call = 0; call < counter.Calls(); ++call) {
        AddFile("MINE.xml", "old");
        FaultyFileSystem faulty;
        faulty.Fail({.skip = call});
        __int64 result = 0;
        {
            const platform::ScopedFileSystem inPlace(faulty);
            result = Save();
        }
        EXPECT_EQ(Bytes("MINE.xml"), result == 0 ? whole : "old") << "call " << call;
        EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml"));
    }
}

TEST_F(EdlFaultsTest, ACardTakenAwayBeforeTheWriteIsAFailure) {
    const std::string away = m_card.Folder().Path("AWAY");
    FaultyFileSystem faulty;
    faulty.SetHook([&](Operation operation, const std::string&) {
        if (operation == Operation::WriteWhole) {
            std::filesystem::rename(m_card.Folder().Path("EDITLIST"), away);
        }
    });
    {
        const platform::ScopedFileSystem inPlace(faulty);
        EXPECT_EQ(Save(), 1);
    }
    std::filesystem::rename(away, m_card.Folder().Path("EDITLIST"));
    ExpectOldFileAlone();
}

TEST_F(EdlFaultsTest, AFileThatDoesNotFitKeepsTheOldOne) {
    tag_P2EDL edl = OneEvent();
    for (int i = 0; i < 1000; ++i) {
        edl.Events.Add(edl.Events[0]);
    }
    const int result = test::RunInChild([&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {10'000, 10'000};
        return setrlimit(RLIMIT_FSIZE, &limit) == 0
                   ? static_cast<int>(m_parser.SaveToEdl(m_card.Root(), edl, 1, L"MINE"))
                   : 255;
    });
    EXPECT_EQ(result, 1);
    ExpectOldFileAlone();
}

TEST_F(EdlFaultsTest, FoldersThatMayNotBeWrittenAreAFailure) {
    ASSERT_EQ(chmod(m_card.Folder().Path().c_str(), 0555), 0);
    ASSERT_EQ(chmod(m_card.Folder().Path("EDITLIST").c_str(), 0555), 0);
    const int existing = test::RunInChild(
        [&] { return test::BecomeOrdinaryUser() ? static_cast<int>(Save()) : 255; });
    ASSERT_EQ(chmod(m_card.Folder().Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(m_card.Folder().Path("EDITLIST").c_str(), 0755), 0);
    EXPECT_EQ(existing, 1);
    ExpectOldFileAlone();
}

TEST_F(EdlFaultsTest, FoldersAndFilesInEachOthersPlaceAreAFailure) {
    std::filesystem::remove(m_card.Folder().Path("EDITLIST/MINE.xml"));
    m_card.Folder().MakeFolder("EDITLIST/MINE.xml");
    EXPECT_EQ(Save(), 1);
    EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml"));
    EXPECT_TRUE(std::filesystem::is_empty(m_card.Folder().Path("EDITLIST/MINE.xml")));
    std::filesystem::remove_all(m_card.Folder().Path("EDITLIST"));
    m_card.Folder().Write("EDITLIST", "a file");
    EXPECT_EQ(Save(), 1);
    EXPECT_TRUE(std::filesystem::is_regular_file(m_card.Folder().Path("EDITLIST")));
}

TEST_F(EdlFaultsTest, AFolderThatBreaksOffGivesTheListsBefore) {
    std::filesystem::remove(m_card.Folder().Path("EDITLIST/MINE.xml"));
    for (const char* name : {"P001.XML", "P002.XML", "P003.XML"}) {
        AddEdl(name);
    }
    FaultyFileSystem faulty;
    faulty.Fail({.operation = Operation::List, .keptEntries = 2});
    faulty.Fail({.operation = Operation::Read, .times = 1});
    const platform::ScopedFileSystem inPlace(faulty);
    EXPECT_EQ(Load().GetSize(), 1) << "two were listed, one of them could not be read";
}

} // namespace
} // namespace nqp2::edl
