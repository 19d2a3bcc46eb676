// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_import.h"

#include "tests/worker/transfer_fixture.h"
#include "worker/verified_copy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nqp2::worker {
namespace {

using platform::IoError;
using test::Operation;
using testing::HasSubstr;

class ClipImportTest : public testing::Test {
protected:
    ClipImportTest() {
        AddWholeClip(m_card, "0001AB");
        m_card.AddClip("0001A"); // names that begin or go on alike belong to other clips
        m_card.AddFile("VIDEO/0001ABC.MXF", "other");
        m_card.AddFile("AUDIO/0001AB0.MXF", "other");
        m_card.AddFile("VIDEO/.0001AB.MXF", "hidden");
    }

    Outcome Import(const CString& name = L"0001AB", std::size_t block = kSmallestBlock) {
        return ImportClip({m_card.Root(), name, InterfaceRoot(m_to.Path("new/place"))}, block,
                          m_watch, m_sizes);
    }
    std::map<std::string, std::string> Arrived() {
        return std::filesystem::exists(m_to.Path("new/place"))
                   ? FilesBelow(m_to.Path("new/place"))
                   : std::map<std::string, std::string>();
    }
    std::string Card(const std::string& name) {
        return FilesBelow(m_card.Folder().Path()).at(name);
    }

    test::CardBuilder m_card;
    test::TempFolder m_to;
    RecordingWatch m_watch;
    TransferSizes m_sizes;
};

TEST_F(ClipImportTest, CopiesAllFilesOfTheClipAndNoOther) {
    const auto before = FilesBelow(m_card.Folder().Path());
    ASSERT_TRUE(Import()) << Import().error;
    const auto arrived = Arrived();
    EXPECT_EQ(arrived.size(), kFilesOfAClip);
    for (const auto& [name, content] : arrived) {
        EXPECT_EQ(content, Card(name)) << name;
    }
    EXPECT_EQ(m_watch.last, m_sizes.total);
    EXPECT_EQ(m_sizes.files, kFilesOfAClip);
    EXPECT_EQ(m_sizes.written, m_sizes.total);
    EXPECT_EQ(m_sizes.byPart[0], 300'001U);
    EXPECT_EQ(m_sizes.byPart[1], 40'000U);
    EXPECT_EQ(FilesBelow(m_card.Folder().Path()), before);
}

TEST_F(ClipImportTest, AgainWritesNothingAndPartsAreCompleted) {
    ASSERT_TRUE(Import());
    m_watch = {};
    ASSERT_TRUE(Import());
    EXPECT_EQ(m_sizes.written, 0U);
    std::filesystem::remove(m_to.Path("new/place/CONTENTS/CLIP/0001AB.XML"));
    m_watch = {};
    ASSERT_TRUE(Import());
    EXPECT_EQ(m_sizes.written, m_sizes.byPart[static_cast<std::size_t>(ClipPart::Metadata)]);
    EXPECT_EQ(Arrived().size(), kFilesOfAClip);
}

TEST_F(ClipImportTest, OtherContentIsNeverOverwritten) {
    for (const std::string& other : {Essence(300'001, 9), std::string("short"), std::string()}) {
        // Also where it is spelled in other letters.
        const std::string path = m_to.Write("new/place/CONTENTS/Video/0001ab.mxf", other);
        m_watch = {};
        const Outcome outcome = Import();
        EXPECT_FALSE(outcome);
        EXPECT_THAT(outcome.error, HasSubstr("0001ab.mxf is there already with other content"));
        const auto arrived = Arrived();
        ASSERT_EQ(arrived.size(), 1U);
        EXPECT_EQ(arrived.begin()->second, other);
    }
}

TEST_F(ClipImportTest, CancelAtAnyPointLeavesNothing) {
    constexpr std::uint64_t kStops[] = {0, 1, 100'000, 300'100, 330'000};
    for (const std::uint64_t stop : kStops) {
        m_watch = {};
        m_watch.stopAt = stop;
        EXPECT_FALSE(Import()) << stop;
        EXPECT_TRUE(Arrived().empty()) << stop;
    }
    m_watch = {};
    m_watch.mayFinish = false;
    EXPECT_EQ(Import().error, "Cancelled.");
    EXPECT_TRUE(Arrived().empty());
}

struct FaultCase {
    const char* what;
    test::Fault fault;
};

TEST_F(ClipImportTest, FaultsAtAnyPointLeaveNothingUnderAFinalName) {
    const FaultCase cases[] = {
        {"disk full at once", {IoError::NoSpace, Operation::WriteAt, "", 0}},
        {"disk full later", {IoError::NoSpace, Operation::WriteAt, "", 30}},
        {"disk full at metadata", {IoError::NoSpace, Operation::WriteAt, ".XML"}},
        {"no room for a name", {IoError::NoSpace, Operation::Create, "PROXY"}},
        {"flush fails", {IoError::Device, Operation::Flush, "VIDEO"}},
        {"read back fails", {IoError::Device, Operation::ReadAt, "AUDIO", 2}},
        {"source vanishes", {IoError::NotFound, Operation::Open, "VOICE"}},
        {"source goes bad", {IoError::Device, Operation::ReadBlock, "VIDEO", 7}},
        {"read-only target", {IoError::ReadOnly, Operation::Create, ""}},
        {"folder unreadable", {IoError::Device, Operation::List, "AUDIO"}},
        {"naming fails at once", {IoError::ReadOnly, Operation::Commit, "VIDEO"}},
        {"naming fails at the end", {IoError::Exists, Operation::Commit, ".XML"}},
    };
    for (const FaultCase& each : cases) {
        m_watch = {};
        {
            test::FaultyFileSystem files;
            const platform::ScopedFileSystem use(files);
            files.Fail(each.fault);
            const Outcome outcome = Import();
            EXPECT_FALSE(outcome) << each.what;
            EXPECT_THAT(outcome.error, HasSubstr("made to fail")) << each.what;
        }
        EXPECT_TRUE(Arrived().empty()) << each.what;
    }
    m_watch = {};
    EXPECT_TRUE(Import());
}

/// A medium that gives back other bytes than were written.
TEST_F(ClipImportTest, WhatTheMediumGivesBackIsCompared) {
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    bool spoilt = false;
    files.SetHook([&](Operation operation, const std::string& path) {
        if (operation != Operation::ReadAt || spoilt || path.find("VIDEO") == path.npos) {
            return;
        }
        for (const auto& entry :
             std::filesystem::directory_iterator(m_to.Path("new/place/CONTENTS/VIDEO"))) {
            std::fstream file(entry.path(), std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(250'000);
            file.put('!');
            spoilt = true;
        }
    });
    const Outcome outcome = Import();
    EXPECT_TRUE(spoilt);
    EXPECT_THAT(outcome.error, HasSubstr("is not what was written"));
    EXPECT_TRUE(Arrived().empty());
}

TEST_F(ClipImportTest, ASourceThatGrowsOrShrinksFails) {
    for (const std::size_t size : {std::size_t{300'002}, std::size_t{1000}, std::size_t{0}}) {
        AddWholeClip(m_card, "0001AB");
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        files.SetHook([&](Operation operation, const std::string& path) {
            if (operation == Operation::Open && path.ends_with("VIDEO/0001AB.MXF")) {
                std::filesystem::resize_file(path, size);
            }
        });
        m_watch = {};
        EXPECT_THAT(Import().error, HasSubstr("changed while it was being read"));
        EXPECT_TRUE(Arrived().empty());
    }
}

TEST_F(ClipImportTest, TakesAwayWhatAKilledWorkerHasLeft) {
    ASSERT_TRUE(Import());
    const std::string left =
        m_to.Write("new/place/CONTENTS/AUDIO/.nqp2-0123456789abcdef.part", "half");
    std::unique_ptr<platform::FileWriter> living;
    ASSERT_TRUE(platform::Files().Create(m_to.Path("new/place/CONTENTS/AUDIO/later.MXF"), living));
    m_watch = {};
    ASSERT_TRUE(Import());
    EXPECT_FALSE(std::filesystem::exists(left));
    EXPECT_EQ(Arrived().size(), kFilesOfAClip + 1) << "a living writer's file stays";
    living.reset();
    EXPECT_EQ(Arrived().size(), kFilesOfAClip);
}

TEST_F(ClipImportTest, HostileNamesAndRootsLeadNowhere) {
    const wchar_t* const names[] = {L"",           L".",       L"..",       L"../CLIP/0001AB",
                                    L"..\\0001AB", L"0001AB/", L"E:0001AB", L".0001AB",
                                    L"0001AB\n",   L"*",       L"0001A?"};
    for (const wchar_t* name : names) {
        EXPECT_FALSE(Import(name)) << CString(name).GetLength();
    }
    EXPECT_FALSE(Import(CString(L'A', 300)));
    EXPECT_FALSE(Import(CString(L"0001AB\0x", 8)));
    const wchar_t* const roots[] = {L"",      L"relative", L"/tmp/../etc", L"/tmp/..", L"Q:",
                                    L"\\\\x", L":"};
    for (const wchar_t* root : roots) {
        EXPECT_FALSE(ImportClip({m_card.Root(), L"0001AB", root}, kDefaultBlock, m_watch, m_sizes))
            << CString(root).GetLength();
        EXPECT_FALSE(ImportClip({root, L"0001AB", InterfaceRoot(m_to.Path())}, kDefaultBlock,
                                m_watch, m_sizes));
    }
    EXPECT_TRUE(FilesBelow(m_to.Path()).empty());
}

TEST_F(ClipImportTest, TooLittleSpaceIsToldBeforeAnythingIsWritten) {
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.SetFreeSpace(340'000);
    EXPECT_THAT(Import().error, HasSubstr("too little space"));
    EXPECT_EQ(files.Calls(Operation::MakeFolder), 0U);
    EXPECT_EQ(files.Calls(Operation::Create), 0U);
}

} // namespace
} // namespace nqp2::worker
