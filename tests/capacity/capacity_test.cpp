// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQP2Parser.h"
#include "tests/support/card_builder.h"
#include "tests/support/faulty_file_system.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <tuple>

namespace nqp2::capacity {
namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

class CapacityTest : public testing::Test {
protected:
    __int64 Space(int type, int wideAudio, int standard, __int64 frames) {
        return m_parser.CountSpaceFromFrames(static_cast<eCodeType>(type), wideAudio,
                                             static_cast<eP2_VIDEO_STANDARD>(standard), frames);
    }
    __int64 Frames(int type, int wideAudio, int standard, __int64 space) {
        return m_parser.CountFramesFromSpace(static_cast<eCodeType>(type), wideAudio,
                                             static_cast<eP2_VIDEO_STANDARD>(standard), space);
    }
    /// Both questions, which have one answer.
    int Fits(__int64 frames, int wideAudio = 0) {
        const int fits = m_parser.GetDiscFree(m_card.Root(), CT_DV25_50I, wideAudio, VS_5994I,
                                              frames, m_free, m_maxFrames);
        EXPECT_EQ(m_parser.GetDiscFree(m_card.Root(), CT_DV25_50I, wideAudio, VS_5994I, frames),
                  fits);
        return fits;
    }

    test::CardBuilder m_card;
    test::FaultyFileSystem m_disk;
    platform::ScopedFileSystem m_inPlace{m_disk};
    CNQP2Parser m_parser;
    __int64 m_free = -7;
    __int64 m_maxFrames = -7;
};

TEST_F(CapacityTest, EachFamilyHasItsFrameSizesAndOverhead) {
    constexpr __int64 kRows[][4] = {
        // type, bytes of a frame, at 50i, overhead
        {24, 120000, 144000, 5308864}, {13, 240000, 288000, 5308864}, {34, 480000, 576000, 5308864},
        {5, 480000, 576000, 5309476},  {7, 240000, 288000, 5309476},  {3, 0, 0, 5308864},
        {51, 0, 0, 5308864},           {-1, 0, 0, 5308864},
    };
    for (const auto& [number, frame60, frame50, overhead] : kRows) {
        const int type = static_cast<int>(number);
        for (const int standard : {0, 1, 6, 77, -1}) {
            const __int64 frame = standard == 1 ? frame50 : frame60;
            EXPECT_EQ(Space(type, 0, standard, 1), overhead + frame + 15360) << type;
            EXPECT_EQ(Space(type, 1, standard, 100), overhead + 100 * (frame + 23040)) << type;
            EXPECT_EQ(Space(type, -1, standard, -1), overhead - (frame + 23040)) << type;
        }
    }
}

TEST_F(CapacityTest, FramesAreCountedBackTowardZeroAndNumbersSaturate) {
    // Space and frames; below the overhead they are zero or negative.
    constexpr std::pair<__int64, __int64> kRows[] = {{0, -39},
                                                     {5308864 - 135359, 0},
                                                     {5308864 - 135360, -1},
                                                     {5444223, 0},
                                                     {5444224, 1},
                                                     {kLeast, kLeast / 135360},
                                                     {kMost, (kMost - 5308864) / 135360}};
    for (const auto& [space, frames] : kRows) {
        EXPECT_EQ(Frames(0, 0, 0, space), frames) << space;
    }
    EXPECT_EQ(Space(0, 0, 0, kMost), kMost);
    EXPECT_EQ(Space(0, 0, 0, kLeast), kLeast + 5308864);
    EXPECT_EQ(Space(0, 0, 0, kMost / 135360), kMost) << "the overhead no longer fits";
}

TEST_F(CapacityTest, AFileReachesItsLimitAtTheFirstFrameBeyond) {
    constexpr __int64 kRows[][5] = {// type, wide audio, standard, frames, size
                                    {0, 1, 0, 35425, 5072500864},
                                    {5, 0, 1, 7380, 4369546276},
                                    {58, 1, 1, 0, 0}};
    for (const auto& [type, wide, standard, frames, expected] : kRows) {
        __int64 size = -1;
        EXPECT_EQ(m_parser.GetMaxFrameBy4GBSize(static_cast<eCodeType>(type), wide != 0,
                                                static_cast<eP2_VIDEO_STANDARD>(standard), size),
                  frames);
        EXPECT_EQ(size, expected);
    }
}

TEST_F(CapacityTest, ARecordingFitsUpToTheLastByteAndFramesAreOf16BitAudio) {
    const auto need = static_cast<std::uint64_t>(Space(0, 1, 0, 1000));
    constexpr auto kAll = std::numeric_limits<std::uint64_t>::max();
    const std::tuple<std::uint64_t, __int64, int> rows[] = {
        {need, 1000, 1}, {need - 1, 1000, 0}, {kAll, kMost, 0}, {1, kLeast, 1}};
    for (const auto& [disk, frames, fits] : rows) {
        m_disk.SetFreeSpace(disk);
        EXPECT_EQ(Fits(frames, 1), fits) << disk;
        EXPECT_EQ(m_free, static_cast<__int64>(std::min<std::uint64_t>(disk, kMost)));
        EXPECT_EQ(m_maxFrames, Frames(0, 0, 0, m_free));
    }
}

TEST_F(CapacityTest, WithoutAnAnswerThereIsNoSpaceAndWithoutContentsNoQuestion) {
    const CString none = InterfaceRoot(m_card.Folder().MakeFolder("none"));
    EXPECT_EQ(m_parser.GetDiscFree(none, CT_DV25_50I, 0, VS_5994I, 1, m_free, m_maxFrames), 0);
    EXPECT_EQ(m_free, -7);
    EXPECT_EQ(m_maxFrames, -7);
    m_disk.Fail({.operation = test::Operation::FreeSpace});
    EXPECT_EQ(Fits(1), 0);
    EXPECT_EQ(m_free, 0);
}

} // namespace
} // namespace nqp2::capacity
