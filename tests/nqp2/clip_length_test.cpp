// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_table.h"

#include <gtest/gtest.h>

namespace nqp2::tool {
namespace {

TEST(ClipLength, CountsFramesOfTheNominalRate) {
    const std::tuple<const wchar_t*, std::int32_t, const char*, double> rows[] = {
        {L"50i", 25 * 3661 + 24, "1:01:01:24", 3661.96},
        {L"25P", 25, "0:00:01:00", 1.0},
        {L"59.94i", 29, "0:00:00:29", 0.967633}, // 30 frames: the name counts fields
        {L"29.97p", 30000, "0:16:40:00", 1001.0},
        {L"23.98p", 24000, "0:16:40:00", 1001.0},
        {L"59.94p", 60000, "0:16:40:00", 1001.0},
        {L"50p", 99, "0:00:01:49", 1.98},
        {L"60i", 30, "0:00:01:00", 1.0},
        {L"17p", 40, "40 frames", 0.0}, // no rate that is known
        {L"50i", -3, "-3 frames", 0.0},
        {L"25p", 2147483647, "23860:55:45:22", 85899345.88},
    };
    for (const auto& [rate, frames, text, seconds] : rows) {
        _tag_P2Clip clip;
        clip.FrameRate = rate;
        clip.Duration = frames;
        EXPECT_EQ(LengthText(clip), text);
        EXPECT_NEAR(RunningSeconds(clip), seconds, 0.0001) << text;
    }
}

TEST(SecondsText, RoundsToSeconds) {
    EXPECT_EQ(SecondsText(0.0), "0:00:00");
    EXPECT_EQ(SecondsText(3599.6), "1:00:00");
    EXPECT_EQ(SecondsText(360000.0), "100:00:00");
}

} // namespace
} // namespace nqp2::tool
