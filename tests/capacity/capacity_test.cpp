// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "capacity/card_space.h"
#include "capacity/recording_cost.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "tests/support/card_builder.h"
#include "tests/support/faulty_file_system.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

namespace nqp2::capacity {
namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

struct Recording {
    int type;
    int wideAudio = 0;
    int standard = 0;
};

/// The operations of the parser, by plain numbers.
class RecordingCostTest : public testing::Test {
protected:
    __int64 Space(Recording row, __int64 frames) {
        return m_parser.CountSpaceFromFrames(static_cast<eCodeType>(row.type), row.wideAudio,
                                             static_cast<eP2_VIDEO_STANDARD>(row.standard), frames);
    }
    __int64 Frames(Recording row, __int64 space) {
        return m_parser.CountFramesFromSpace(static_cast<eCodeType>(row.type), row.wideAudio,
                                             static_cast<eP2_VIDEO_STANDARD>(row.standard), space);
    }
    __int64 Limit(Recording row, __int64& size) {
        return m_parser.GetMaxFrameBy4GBSize(static_cast<eCodeType>(row.type), row.wideAudio,
                                             static_cast<eP2_VIDEO_STANDARD>(row.standard), size);
    }

    CNQP2Parser m_parser; // never initialised: pure arithmetic
};

TEST_F(RecordingCostTest, EachFamilyHasItsFrameSizesAndOverhead) {
    constexpr struct {
        int type;
        __int64 frame;
        __int64 frame50i;
        __int64 overhead;
    } kRows[] = {
        {24, 120000, 144000, 5308864}, {13, 240000, 288000, 5308864}, {34, 480000, 576000, 5308864},
        {5, 480000, 576000, 5309476},  {7, 240000, 288000, 5309476},  {3, 0, 0, 5308864},
        {51, 0, 0, 5308864},           {-1, 0, 0, 5308864},           {9999, 0, 0, 5308864},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.type);
        for (const int standard : {0, 1, 2, 6, 77, -1}) {
            const __int64 frame = standard == 1 ? row.frame50i : row.frame;
            EXPECT_EQ(Space({row.type, 0, standard}, 0), row.overhead);
            EXPECT_EQ(Space({row.type, 0, standard}, 1), row.overhead + frame + 15360);
            EXPECT_EQ(Space({row.type, 1, standard}, 100), row.overhead + 100 * (frame + 23040));
            EXPECT_EQ(Space({row.type, -1, standard}, -1), row.overhead - (frame + 23040));
        }
    }
}

TEST_F(RecordingCostTest, FramesAreCountedBackFromTheSpace) {
    constexpr std::tuple<Recording, __int64, __int64> kRows[] = {
        {Recording{0}, 0, -39}, // truncated toward zero, not clamped
        {Recording{0}, 5308864, 0},
        {Recording{0}, 5308864 - 135359, 0},
        {Recording{0}, 5308864 - 135360, -1},
        {Recording{0}, 5444223, 0},
        {Recording{0}, 5444224, 1},
        {Recording{0, 1}, 5308864 + 143040, 1},
        {Recording{51}, 5308864 + 15360 * 7, 7}, // audio alone
        {Recording{5, 0, 1}, 5309476 + 591360LL * 1'000'000, 1'000'000},
    };
    for (const auto& [recording, space, frames] : kRows) {
        EXPECT_EQ(Frames(recording, space), frames) << space;
    }
}

TEST_F(RecordingCostTest, AFileReachesItsLimitAtTheFirstFrameBeyond) {
    constexpr std::tuple<Recording, __int64, __int64> kRows[] = {
        {Recording{0, 0, 0}, 35425, 4800436864},
        {Recording{0, 1, 0}, 35425, 5072500864},
        {Recording{5, 0, 1}, 7380, 4369546276},
        {Recording{3}, 0, 0},
        {Recording{58, 1, 1}, 0, 0},
    };
    for (const auto& [recording, frames, expected] : kRows) {
        __int64 size = -1;
        EXPECT_EQ(Limit(recording, size), frames) << expected;
        EXPECT_EQ(size, expected);
    }
}

TEST_F(RecordingCostTest, NumbersNearTheirEndSaturate) {
    EXPECT_EQ(Space({0}, kMost), kMost);
    EXPECT_EQ(Space({0}, kLeast), kLeast + 5308864);
    EXPECT_EQ(Space({0}, kMost / 135360), kMost) << "the overhead no longer fits";
    EXPECT_EQ(Space({0}, kMost / 135360 - 40), (kMost / 135360 - 40) * 135360 + 5308864);
    EXPECT_EQ(Space({0}, kLeast / 135360), kLeast / 135360 * 135360 + 5308864);
    EXPECT_EQ(Frames({0}, kMost), (kMost - 5308864) / 135360);
    EXPECT_EQ(Frames({0}, kLeast), kLeast / 135360);
}

class CardSpaceTest : public testing::Test {
protected:
    CardSpaceTest() {
        m_disk.SetHook([this](test::Operation operation, const std::string& path) {
            if (operation == test::Operation::FreeSpace) {
                m_asked.push_back(path);
            }
        });
    }
    int Fits(__int64 frames, int wideAudio = 0, eCodeType type = CT_DV25_50I) {
        const int fits = m_parser.GetDiscFree(m_card.Root(), type, wideAudio, VS_5994I, frames);
        m_free = m_maxFrames = -7;
        EXPECT_EQ(m_parser.GetDiscFree(m_card.Root(), type, wideAudio, VS_5994I, frames, m_free,
                                       m_maxFrames),
                  fits);
        return fits;
    }

    test::CardBuilder m_card;
    test::FaultyFileSystem m_disk;
    std::vector<std::string> m_asked; ///< paths whose free space was asked for
    platform::ScopedFileSystem m_inPlace{m_disk};
    CNQP2Parser m_parser;
    __int64 m_free = 0;
    __int64 m_maxFrames = 0;
};

TEST_F(CardSpaceTest, ARecordingFitsUpToTheLastByte) {
    const __int64 need = m_parser.CountSpaceFromFrames(CT_DV25_50I, 1, VS_5994I, 1000);
    for (const int missing : {0, 1}) {
        m_disk.SetFreeSpace(static_cast<std::uint64_t>(need - missing));
        EXPECT_EQ(Fits(1000, 1), 1 - missing);
        EXPECT_EQ(m_free, need - missing);
    }
}

TEST_F(CardSpaceTest, FramesThatFitAreCountedWith16BitAudioWhateverTheFlag) {
    m_disk.SetFreeSpace(5308864 + 1000 * 135360);
    EXPECT_EQ(Fits(1000, 0), 1);
    EXPECT_EQ(m_maxFrames, 1000);
    EXPECT_EQ(Fits(1000, 1), 0) << "the need honours the flag";
    EXPECT_EQ(m_maxFrames, 1000);
}

TEST_F(CardSpaceTest, HugeMediaAndRecordingsDoNotOverflow) {
    m_disk.SetFreeSpace(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(Fits(kMost), 0) << "need and space are both cut off at the largest number";
    EXPECT_EQ(m_free, kMost);
    EXPECT_EQ(m_maxFrames, (kMost - 5308864) / 135360);
    m_disk.SetFreeSpace(1);
    EXPECT_EQ(Fits(kLeast), 1);
}

TEST_F(CardSpaceTest, WithoutContentsFolderNothingIsAskedOrTold) {
    m_disk.SetFreeSpace(1ULL << 50U);
    std::filesystem::remove_all(m_card.Folder().Path("CONTENTS"));
    m_card.Folder().Write("CONTENTS", "a file");
    EXPECT_EQ(Fits(1), 0);
    EXPECT_EQ(m_free, -7);
    EXPECT_EQ(m_maxFrames, -7);
    EXPECT_TRUE(m_asked.empty());
}

TEST_F(CardSpaceTest, EveryFormOfARootAsksTheSameFolder) {
    m_disk.SetFreeSpace(1ULL << 50U);
    const CString root = m_card.Root();
    m_card.Folder().MakeFolder("No Name/contents");
    const std::string other = m_card.Folder().Path("NO NAME"); // asked under its own name
    const std::pair<CString, const char*> rows[] = {{root, ""},
                                                    {root.Left(root.GetLength() - 1), ""},
                                                    {root + L"\\", ""},
                                                    {InterfaceRoot(other), "No Name"}};
    for (const auto& [form, folder] : rows) {
        EXPECT_EQ(m_parser.GetDiscFree(form, CT_DV25_50I, 0, VS_5994I, 1), 1);
        EXPECT_TRUE(std::filesystem::equivalent(m_asked.back(), m_card.Folder().Path(folder)));
    }
}

TEST_F(CardSpaceTest, AFailedQuestionCountsAsNoSpace) {
    m_disk.Fail({.operation = test::Operation::FreeSpace});
    EXPECT_EQ(Fits(1), 0);
    EXPECT_EQ(m_free, 0);
    EXPECT_EQ(m_maxFrames, -39);
}

} // namespace
} // namespace nqp2::capacity
