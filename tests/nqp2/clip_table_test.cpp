// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_table.h"

#include <gtest/gtest.h>

namespace nqp2::tool {
namespace {

TEST(ClipTable, ShowsLengthsInFramesOfTheNominalRateAndRunningTimes) {
    const std::tuple<const wchar_t*, std::int32_t, const char*, const char*> rows[] = {
        {L"50i", 25 * 3661 + 24, "1:01:01:24", "1:01:02"},
        {L"59.94i", 29, "0:00:00:29", "0:00:01"}, // 30 frames: the name counts fields
        {L"29.97p", 30000, "0:16:40:00", "0:16:41"},
        {L"23.98p", 24000, "0:16:40:00", "0:16:41"},
        {L"59.94p", 60000, "0:16:40:00", "0:16:41"},
        {L"50p", 99, "0:00:01:49", "0:00:02"},
        {L"60i", 30, "0:00:01:00", "0:00:01"},
        {L"17p", 40, "40 frames", "0:00:00"}, // no rate that is known
        {L"50i", -3, "-3 frames", "0:00:00"},
        {L"25P", 2147483647, "23860:55:45:22", "23860:55:46"},
    };
    for (const auto& [rate, frames, text, seconds] : rows) {
        _tag_P2Clip clip;
        clip.FrameRate = rate;
        clip.Duration = frames;
        EXPECT_EQ(LengthText(clip), text);
        EXPECT_EQ(SecondsText(RunningSeconds(clip)), seconds) << text;
    }
}

} // namespace
} // namespace nqp2::tool
