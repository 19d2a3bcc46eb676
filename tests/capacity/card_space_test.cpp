// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "capacity/card_space.h"

#include "parser/NQP2Parser.h"
#include "tests/support/card_builder.h"
#include "tests/support/faulty_file_system.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

namespace nqp2::capacity {
namespace {

/// A disk with as much free space as a test says.
class SizedFileSystem final : public platform::FileSystem {
public:
    std::uint64_t freeBytes = 0;
    std::vector<std::string> asked; ///< paths whose free space was asked for

    platform::IoStatus FreeSpace(const std::string& path, std::uint64_t& bytes) override {
        asked.push_back(path);
        bytes = freeBytes;
        return {};
    }
    platform::IoStatus Stat(const std::string& path, platform::FileInfo& info) override {
        return platform::DiskFiles().Stat(path, info);
    }
    platform::IoStatus List(const std::string& folder,
                            std::vector<platform::FolderEntry>& entries) override {
        return platform::DiskFiles().List(folder, entries);
    }
    platform::IoStatus Open(const std::string&, std::unique_ptr<platform::FileReader>&) override {
        return Refused();
    }
    platform::IoStatus Read(const std::string&, std::uint64_t, std::string&) override {
        return Refused();
    }
    platform::IoStatus WriteWhole(const std::string&, std::string_view) override {
        return Refused();
    }
    platform::IoStatus RemoveFile(const std::string&) override { return Refused(); }
    platform::IoStatus MoveToFree(const std::string&, const std::string&) override {
        return Refused();
    }
    platform::IoStatus MakeFolder(const std::string&) override { return Refused(); }
    platform::IoStatus Create(const std::string&, std::unique_ptr<platform::FileWriter>&) override {
        return Refused();
    }
    platform::IoStatus RemoveAbandoned(const std::string&) override { return Refused(); }

private:
    static platform::IoStatus Refused() { return {platform::IoError::Other, "not for this test"}; }
};

class CardSpaceTest : public testing::Test {
protected:
    int Fits(__int64 frames, int wideAudio = 0, eCodeType type = CT_DV25_50I) {
        const int fits = m_parser.GetDiscFree(m_card.Root(), type, wideAudio, VS_5994I, frames);
        m_free = m_maxFrames = -7;
        EXPECT_EQ(m_parser.GetDiscFree(m_card.Root(), type, wideAudio, VS_5994I, frames, m_free,
                                       m_maxFrames),
                  fits);
        return fits;
    }

    test::CardBuilder m_card;
    SizedFileSystem m_disk;
    platform::ScopedFileSystem m_inPlace{m_disk};
    CNQP2Parser m_parser;
    __int64 m_free = 0;
    __int64 m_maxFrames = 0;
};

TEST_F(CardSpaceTest, ARecordingFitsUpToTheLastByte) {
    const __int64 need = m_parser.CountSpaceFromFrames(CT_DV25_50I, 1, VS_5994I, 1000);
    for (const int missing : {0, 1}) {
        m_disk.freeBytes = static_cast<std::uint64_t>(need - missing);
        EXPECT_EQ(Fits(1000, 1), 1 - missing);
        EXPECT_EQ(m_free, need - missing);
    }
}

TEST_F(CardSpaceTest, FramesThatFitAreCountedWith16BitAudioWhateverTheFlag) {
    m_disk.freeBytes = 5308864 + 1000 * 135360;
    EXPECT_EQ(Fits(1000, 0), 1);
    EXPECT_EQ(m_maxFrames, 1000);
    EXPECT_EQ(Fits(1000, 1), 0) << "the need honours the flag";
    EXPECT_EQ(m_maxFrames, 1000);
}

TEST_F(CardSpaceTest, HugeMediaAndRecordingsDoNotOverflow) {
    constexpr __int64 kMost = std::numeric_limits<__int64>::max();
    m_disk.freeBytes = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(Fits(kMost), 0) << "need and space are both cut off at the largest number";
    EXPECT_EQ(m_free, kMost);
    EXPECT_EQ(m_maxFrames, (kMost - 5308864) / 135360);
    m_disk.freeBytes = 1;
    EXPECT_EQ(Fits(std::numeric_limits<__int64>::min()), 1);
}

TEST_F(CardSpaceTest, WithoutContentsFolderNothingIsAskedOrTold) {
    m_disk.freeBytes = 1ULL << 50U;
    std::filesystem::remove_all(m_card.Folder().Path("CONTENTS"));
    m_card.Folder().Write("CONTENTS", "a file");
    EXPECT_EQ(Fits(1), 0);
    EXPECT_EQ(m_free, -7);
    EXPECT_EQ(m_maxFrames, -7);
    EXPECT_TRUE(m_disk.asked.empty());
}

TEST_F(CardSpaceTest, EveryFormOfARootAsksTheSameFolder) {
    m_disk.freeBytes = 1ULL << 50U;
    const CString root = m_card.Root();
    m_card.Folder().MakeFolder("No Name/contents");
    const std::string other = m_card.Folder().Path("NO NAME"); // asked under its own name
    const std::pair<CString, const char*> rows[] = {{root, ""},
                                                    {root.Left(root.GetLength() - 1), ""},
                                                    {root + L"\\", ""},
                                                    {InterfaceRoot(other), "No Name"}};
    for (const auto& [form, folder] : rows) {
        EXPECT_EQ(m_parser.GetDiscFree(form, CT_DV25_50I, 0, VS_5994I, 1), 1);
        EXPECT_TRUE(std::filesystem::equivalent(m_disk.asked.back(), m_card.Folder().Path(folder)));
    }
}

TEST_F(CardSpaceTest, AFailedQuestionCountsAsNoSpace) {
    test::FaultyFileSystem faulty(m_disk);
    m_disk.freeBytes = 1ULL << 50U;
    faulty.Fail({.operation = test::Operation::FreeSpace});
    const platform::ScopedFileSystem inPlace(faulty);
    EXPECT_EQ(Fits(1), 0);
    EXPECT_EQ(m_free, 0);
    EXPECT_EQ(m_maxFrames, -39);
}

} // namespace
} // namespace nqp2::capacity
