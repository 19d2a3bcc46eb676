// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/ingest/ingest_test.h"
#include "tests/support/child_process.h"
#include "tests/support/faulty_file_system.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

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
    /// Adds a clip on a file system with that fault.
    __int64 AddWith(const test::Fault& fault) {
        FaultyFileSystem faulty;
        faulty.Fail(fault);
        const platform::ScopedFileSystem inPlace(faulty);
        return Add({{L"new", {{1, 2}}}});
    }
};

TEST_F(IngestFaultsTest, RefusedWritesKeepTheOldFileAndOnlyRemovalTells) {
    for (const IoError error : {IoError::NoSpace, IoError::ReadOnly, IoError::Denied,
                                IoError::Device, IoError::NotFound}) {
        EXPECT_EQ(AddWith({.error = error, .operation = Operation::WriteWhole}), 0);
        ExpectOldFileAlone();
        FaultyFileSystem faulty;
        faulty.Fail({.error = error, .operation = Operation::WriteWhole});
        const platform::ScopedFileSystem inPlace(faulty);
        EXPECT_EQ(Delete(L"old"), 0);
        EXPECT_EQ(RemoveFromIngestList(m_card.Root(), L"old"), IngestRemoval::NotSaved);
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
        AddWith({.skip = call, .times = 1});
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

TEST_F(IngestFaultsTest, AnUnreadableFileThatCannotBeKeptAsideIsNotReplaced) {
    for (const IoError error : {IoError::Denied, IoError::ReadOnly, IoError::Exists}) {
        SetFile("<broken");
        EXPECT_EQ(AddWith({.error = error, .operation = Operation::MoveToFree}), 0);
        EXPECT_EQ(File(), "<broken");
        EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
    }
}

TEST_F(IngestFaultsTest, AFolderInTheFilesPlaceStays) {
    std::filesystem::remove(m_card.Folder().Path("USERDATA/Ingest.xml"));
    m_card.Folder().Write("USERDATA/Ingest.xml/inside", "x");
    EXPECT_EQ(Add({{L"new", {{1, 2}}}}), 0);
    EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
    EXPECT_TRUE(std::filesystem::exists(m_card.Folder().Path("USERDATA/Ingest.xml/inside")));
    EXPECT_EQ(Delete(L"new"), 1);
}

TEST_F(IngestFaultsTest, ACardTakenAwayBeforeTheWriteKeepsItsList) {
    const std::string away = m_card.Folder().Path("AWAY");
    FaultyFileSystem faulty;
    faulty.SetHook([&](Operation operation, const std::string&) {
        if (operation == Operation::WriteWhole) {
            std::filesystem::rename(m_card.Folder().Path("USERDATA"), away);
        }
    });
    {
        const platform::ScopedFileSystem inPlace(faulty);
        EXPECT_EQ(Delete(L"old"), 0);
    }
    std::filesystem::rename(away, m_card.Folder().Path("USERDATA"));
    ExpectOldFileAlone();
}

TEST_F(IngestFaultsTest, AListThatDoesNotFitKeepsTheOldOne) {
    const IngestClips large = {{L"new", std::vector<tag_P2SegInfo>(10'000)}};
    const int result = test::RunInChild([&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {10'000, 10'000};
        return setrlimit(RLIMIT_FSIZE, &limit) == 0 ? static_cast<int>(Add(large)) : 255;
    });
    EXPECT_EQ(result, 0);
    ExpectOldFileAlone();
}

TEST_F(IngestFaultsTest, AFolderThatMayNotBeWrittenKeepsItsList) {
    const std::string folder = m_card.Folder().Path("USERDATA");
    ASSERT_EQ(chmod(m_card.Folder().Path().c_str(), 0755), 0);
    for (const char* content : {kOld, "<broken"}) {
        SetFile(content);
        ASSERT_EQ(chmod(folder.c_str(), 0555), 0);
        const int result = test::RunInChild([&] {
            return test::BecomeOrdinaryUser() ? static_cast<int>(Add({{L"new", {{1, 2}}}})) : 255;
        });
        ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
        EXPECT_EQ(result, 0);
        EXPECT_EQ(File(), content);
        EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
    }
}

} // namespace
} // namespace nqp2::ingest
