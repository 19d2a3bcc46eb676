// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/display_text.h"
#include "tools/nqp2/progress_bar.h"

#include <gtest/gtest.h>

namespace nqp2::tool {
namespace {

TEST(ProgressBar, TellsShareRateAndTimeLeft) {
    const struct {
        Progress progress;
        int width;
        const char* text;
    } cases[] = {
        {{"A", 0, 1000, 0}, 20, "A [          ]   0 %"},
        {{"A", 512, 1024, 1}, 40, "A [=====     ]  50 %  512 KiB/s  0:01 left"},
        {{"A", 10240, 1024000, 1}, 60, "A [                       ]   1 %  10.0 MiB/s  1:39 left"},
        {{"A", 1024, 1024 * 7300, 1}, 50, "A [          ]   0 %  1.0 MiB/s  2:01:39 left"},
        {{"A", 100, 1000, 0.4}, 20, "A [=         ]  10 %"},
        {{"A", 0, 0, 5}, 20, "A [==========] 100 %"},
        {{"A", 9, 5, 0}, 20, "A [==========] 100 %"},
    };
    for (const auto& each : cases) {
        const std::string text = BarText(each.progress, DisplayWidth(each.text));
        EXPECT_EQ(text, each.text);
    }
}

TEST(ProgressBar, StaysWithinTheWidth) {
    for (int width = 1; width < 120; ++width) {
        EXPECT_LE(DisplayWidth(BarText({"長い名前", 5000, 90000, 3}, width)), width);
    }
    EXPECT_EQ(BarText({"0001AB", 1, 2, 0}, 14), "0001AB  50 %") << "no room for a bar";
}

} // namespace
} // namespace nqp2::tool
