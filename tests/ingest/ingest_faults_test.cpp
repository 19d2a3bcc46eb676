// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/folder_lock.h"
#include "tests/ingest/ingest_test.h"
#include "tests/support/child_process.h"
#include "tests/support/faulty_file_system.h"

#include <atomic>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace nqp2::ingest {
namespace {

using platform::IoError;
using test::FaultyFileSystem;
using test::Operation;
using testing::ElementsAre;

constexpr const char* kOld = "<Media MediaID=\"P2\"><Clip ClipName=\"old\"/></Media>";

class IngestFaultsTest : public IngestTest {
protected:
    IngestFaultsTest() { SetFile(kOld); }
    void ExpectOldFileAlone() const {
        EXPECT_EQ(File(), kOld);
        EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
    }
};

TEST_F(IngestFaultsTest, RefusedWritesKeepTheOldFile) {
    for (const IoError error : {IoError::NoSpace, IoError::ReadOnly, IoError::NotFound}) {
        FaultyFileSystem faulty;
        faulty.Fail({.error = error, .operation = Operation::WriteWhole});
        const platform::ScopedFileSystem inPlace(faulty);
        EXPECT_EQ(Add({{L"new", {{1, 2}}}}), 0) << "kept: nobody is told";
        EXPECT_EQ(Delete(L"old"), 0);
        const CString root = m_card.Root();
        EXPECT_EQ(RemoveFromIngestList(root, L"old").status, IngestStatus::NotSaved);
        EXPECT_EQ(AddToIngestList(root, {{L"new", {}}}).status, IngestStatus::NotSaved);
        ExpectOldFileAlone();
    }
}

TEST_F(IngestFaultsTest, WhateverCallFailsNoListIsLost) {
    FaultyFileSystem counter;
    {
        const platform::ScopedFileSystem inPlace(counter);
        ASSERT_EQ(Add({{L"new", {{1, 2}}}}), 0);
    }
    for (std::uint64_t call = 0; call < counter.Calls(); ++call) {
        SCOPED_TRACE(call);
        std::filesystem::remove_all(m_card.Folder().Path("USERDATA"));
        SetFile(kOld);
        FaultyFileSystem faulty;
        faulty.Fail({.skip = call, .times = 1});
        {
            const platform::ScopedFileSystem inPlace(faulty);
            Add({{L"new", {{1, 2}}}});
        }
        const auto files = FilesInFolder();
        const bool setAside = files.count("Ingest.xml.unreadable1") != 0;
        EXPECT_EQ(files.size(), setAside ? 2U : 1U) << testing::PrintToString(files);
        if (setAside) {
            EXPECT_EQ(File("Ingest.xml.unreadable1"), kOld);
        } else {
            EXPECT_EQ(Listed().at(0), "old");
        }
    }
}

/// The writer that tells changes a list only when it says so.
TEST_F(IngestFaultsTest, WhateverCallFailsAnAdditionTellsTheTruth) {
    bool done = false;
    for (std::uint64_t call = 0; !done; ++call) {
        SCOPED_TRACE(call);
        SetFile(kOld);
        FaultyFileSystem faulty;
        faulty.Fail({.skip = call, .times = 1});
        IngestStatus status = {};
        {
            const platform::ScopedFileSystem inPlace(faulty);
            status = AddToIngestList(m_card.Root(), {{L"new", {{1, 2}}}}).status;
        }
        EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
        EXPECT_EQ(Listed().size(), status == IngestStatus::Done ? 2U : 1U);
        done = faulty.Calls() <= call;
    }
}

TEST_F(IngestFaultsTest, WhoChangesAListAtOnceLosesNothing) {
    constexpr int kWriters = 8;
    std::atomic<int> failed = 0;
    {
        std::vector<std::jthread> writers;
        for (int i = 0; i < kWriters; ++i) {
            writers.emplace_back([&, i] {
                CString name;
                name.Format(L"%d", i);
                CNQP2Parser parser;
                IngestRequest request = {{m_card.Root(), {{name, {{1, 2}}}}}};
                failed += static_cast<int>(parser.WriteIngestXML(L"Ingest.xml", request));
                failed += RemoveFromIngestList(m_card.Root(), i == 0 ? L"old" : name).status ==
                                  IngestStatus::Done
                              ? 0
                              : 1;
                failed +=
                    AddToIngestList(m_card.Root(), {{name, {{3, 4}}}}).status == IngestStatus::Done
                        ? 0
                        : 1;
            });
        }
    }
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(Listed().size(), static_cast<std::size_t>(kWriters));
}

TEST_F(IngestFaultsTest, AFolderThatAnotherKeepsLockedIsAFailureAfterAWhile) {
    const platform::FolderLock others(m_card.Folder().Path("USERDATA"));
    std::atomic<int> busy = 0;
    {
        // At once, because each waits for seconds.
        const std::jthread first([&] { busy += Add({{L"new", {{1, 2}}}}) == 1 ? 1 : 0; });
        const std::jthread second([&] { busy += Delete(L"old") == 0 ? 1 : 0; });
        const std::jthread third([&] {
            busy += AddToIngestList(m_card.Root(), {{L"new", {}}}).status == IngestStatus::Busy;
        });
    }
    EXPECT_EQ(busy, 3);
    ExpectOldFileAlone();
}

TEST_F(IngestFaultsTest, AnUnreadableFileThatCannotBeKeptAsideIsNotReplaced) {
    for (const IoError error : {IoError::Denied, IoError::Exists}) {
        SetFile("<broken");
        FaultyFileSystem faulty;
        faulty.Fail({.error = error, .operation = Operation::MoveToFree});
        const platform::ScopedFileSystem inPlace(faulty);
        EXPECT_EQ(Add({{L"new", {{1, 2}}}}), 0);
        EXPECT_EQ(File(), "<broken");
        EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
    }
}

TEST_F(IngestFaultsTest, AFolderInTheFilesPlaceStays) {
    std::filesystem::remove(m_card.Folder().Path("USERDATA/Ingest.xml"));
    m_card.Folder().Write("USERDATA/Ingest.xml/inside", "x");
    EXPECT_EQ(Add({{L"new", {{1, 2}}}}), 0);
    EXPECT_TRUE(std::filesystem::exists(m_card.Folder().Path("USERDATA/Ingest.xml/inside")));
    EXPECT_EQ(Delete(L"new"), 1);
}

TEST_F(IngestFaultsTest, AListThatCannotBeSeenIsNotTakenForNone) {
    ASSERT_EQ(chmod(m_card.Folder().Path().c_str(), 0755), 0);
    std::string folder = m_card.Folder().Path("USERDATA");
    for (const char* next : {"Userdata", "USERDATA"}) { // in other letters, too
        ASSERT_EQ(chmod(folder.c_str(), 0), 0);
        EXPECT_EQ(test::RunInChild([&] {
                      IngestList list;
                      return test::BecomeOrdinaryUser() && !LoadIngestList(m_card.Root(), list) &&
                                     AddToIngestList(m_card.Root(), {{L"new", {}}}).status ==
                                         IngestStatus::Unreadable
                                 ? 0
                                 : 1;
                  }),
                  0);
        std::filesystem::rename(folder, m_card.Folder().Path(next));
        folder = m_card.Folder().Path(next);
    }
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
}

TEST_F(IngestFaultsTest, AListThatDoesNotFitOrMayNotBeWrittenKeepsTheOldOne) {
    const IngestClips large = {{L"new", std::vector<tag_P2SegInfo>(10'000)}};
    EXPECT_EQ(test::RunInChild([&] {
                  signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit = {10'000, 10'000};
                  return setrlimit(RLIMIT_FSIZE, &limit) == 0 ? static_cast<int>(Add(large)) : 255;
              }),
              0);
    ExpectOldFileAlone();
    const std::string folder = m_card.Folder().Path("USERDATA");
    ASSERT_EQ(chmod(m_card.Folder().Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0555), 0);
    EXPECT_EQ(test::RunInChild(
                  [&] { return test::BecomeOrdinaryUser() ? static_cast<int>(Add(large)) : 255; }),
              0);
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    ExpectOldFileAlone();
}

} // namespace
} // namespace nqp2::ingest
