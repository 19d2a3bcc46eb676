// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/edl/edl_test.h"
#include "tests/support/child_process.h"
#include "tests/support/faulty_file_system.h"

#include <atomic>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

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

/// With every call failing in turn, and with every call from one on.
TEST_F(EdlFaultsTest, WhateverCallFailsTheOldFileOrTheNewOneIsWhole) {
    FaultyFileSystem counter;
    {
        const platform::ScopedFileSystem inPlace(counter);
        ASSERT_EQ(Save(), 0);
    }
    const std::string whole = Bytes("MINE.xml");
    for (std::uint64_t call = 0; call < counter.Calls(); ++call) {
        for (const std::uint64_t times : {std::uint64_t{1}, counter.Calls()}) {
            AddFile("MINE.xml", "old");
            FaultyFileSystem faulty;
            faulty.Fail({.error = IoError::NoSpace, .skip = call, .times = times});
            __int64 result = 0;
            {
                const platform::ScopedFileSystem inPlace(faulty);
                result = Save();
            }
            EXPECT_EQ(Bytes("MINE.xml"), result == 0 ? whole : "old") << "call " << call;
            EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml"));
        }
    }
}

TEST_F(EdlFaultsTest, ANumberIsNeverGivenTwiceAndNoFileReplacedWhenOthersWriteToo) {
    // Another writer takes the two names that come next, in the last moment.
    FaultyFileSystem busy;
    int taken = 0;
    busy.SetHook([&](Operation operation, const std::string&) {
        if (operation == Operation::MoveToFree && ++taken <= 2) {
            AddFile("P00" + std::to_string(taken) + "AB.XML", "theirs");
        }
    });
    {
        const platform::ScopedFileSystem inPlace(busy);
        EXPECT_EQ(m_parser.SaveToEdl(m_card.Root(), OneEvent(), 0, L""), 0);
    }
    EXPECT_EQ(busy.Calls(Operation::List), 1U) << "one look, however many names are tried";
    EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml", "P001AB.XML", "P002AB.XML", "P003AB.XML"));
    EXPECT_EQ(Bytes("P001AB.XML"), "theirs");
    constexpr int kWriters = 8;
    std::atomic<__int64> failed = 0;
    {
        std::vector<std::jthread> writers;
        for (int i = 0; i < kWriters; ++i) {
            writers.emplace_back([&] {
                CNQP2Parser parser;
                parser.Init();
                failed += parser.SaveToEdl(m_card.Root(), OneEvent(), 0, L"");
                parser.Release();
            });
        }
    }
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(FilesInFolder().size(), 4U + kWriters);
}

TEST_F(EdlFaultsTest, WithoutAFreeNameNothingIsLeftAndTheSearchEnds) {
    for (const IoError error : {IoError::Exists, IoError::NoSpace}) {
        FaultyFileSystem faulty;
        faulty.Fail({.error = error, .operation = Operation::MoveToFree});
        const platform::ScopedFileSystem inPlace(faulty);
        EXPECT_EQ(SaveOnCard(OneEvent()), "");
        ExpectOldFileAlone();
    }
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

TEST_F(EdlFaultsTest, EveryLossOfAScanIsTold) {
    std::filesystem::remove(m_card.Folder().Path("EDITLIST/MINE.xml"));
    for (const char* name : {"P001.XML", "P002.XML", "P003.XML"}) {
        AddEdl(name);
    }
    FaultyFileSystem faulty;
    faulty.Fail({.operation = Operation::List, .times = 1, .keptEntries = 2});
    faulty.Fail({.operation = Operation::Read, .times = 1});
    faulty.Fail({.error = IoError::Denied, .operation = Operation::Stat, .pathPart = "CONTENTS"});
    const platform::ScopedFileSystem inPlace(faulty);
    CArray<tag_P2EDL> edls;
    EXPECT_EQ(m_parser.LoadCardEdls(m_card.Root(), edls, m_report), 0);
    EXPECT_EQ(edls.GetSize(), 1) << "two were listed, one of them could not be read";
    std::vector<SkipReason> reasons;
    for (const SkippedFile& file : m_report.skipped) {
        reasons.push_back(file.reason);
        EXPECT_EQ(file.text, L"made to fail");
    }
    EXPECT_THAT(reasons, ElementsAre(SkipReason::Unreadable, SkipReason::FolderUnreadable,
                                     SkipReason::FolderUnreadable));
}

} // namespace
} // namespace nqp2::edl
