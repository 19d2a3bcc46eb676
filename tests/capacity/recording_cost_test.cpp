// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "capacity/recording_cost.h"

#include "parser/NQP2Parser.h"

#include <gtest/gtest.h>

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
    constexpr struct {
        Recording recording;
        __int64 space;
        __int64 frames;
    } kRows[] = {
        {{0}, 0, -39}, // truncated toward zero, not clamped
        {{0}, 5308864, 0},
        {{0}, 5308864 - 135359, 0},
        {{0}, 5308864 - 135360, -1},
        {{0}, 5444223, 0},
        {{0}, 5444224, 1},
        {{0, 1}, 5308864 + 143040, 1},
        {{51}, 5308864 + 15360 * 7, 7}, // audio alone
        {{5, 0, 1}, 5309476 + 591360LL * 1'000'000, 1'000'000},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(Frames(row.recording, row.space), row.frames) << "row " << &row - kRows;
    }
}

TEST_F(RecordingCostTest, AFileReachesItsLimitAtTheFirstFrameBeyond) {
    constexpr struct {
        Recording recording;
        __int64 frames;
        __int64 size;
    } kRows[] = {
        {{0, 0, 0}, 35425, 4800436864},
        {{0, 1, 0}, 35425, 5072500864},
        {{5, 0, 1}, 7380, 4369546276},
        {{3}, 0, 0},
        {{58, 1, 1}, 0, 0},
    };
    for (const auto& row : kRows) {
        __int64 size = -1;
        EXPECT_EQ(Limit(row.recording, size), row.frames) << "row " << &row - kRows;
        EXPECT_EQ(size, row.size) << "row " << &row - kRows;
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

} // namespace
} // namespace nqp2::capacity
