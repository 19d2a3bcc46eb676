// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/progress_bar.h"

#include "console/display_text.h"

#include <gtest/gtest.h>

namespace nqp2::tool {
namespace {

TEST(ProgressBar, TellsShareRateAndTimeLeftWithinTheWidth) {
    const std::pair<Progress, const char*> cases[] = {
        {{"A", 0, 1000, 0}, "A [          ]   0 %"},
        {{"A", 512, 1024, 1}, "A [=====     ]  50 %  512 KiB/s  0:01 left"},
        {{"A", 10240, 1024000, 1}, "A [                       ]   1 %  10.0 MiB/s  1:39 left"},
        {{"A", 1024, 1024 * 7300, 1}, "A [          ]   0 %  1.0 MiB/s  2:01:39 left"},
        {{"A", 100, 1000, 0.4}, "A [=         ]  10 %"},
        {{"A", 0, 0, 5}, "A [==========] 100 %"},
        {{"A", 9, 5, 0}, "A [==========] 100 %"},
    };
    for (const auto& [progress, text] : cases) {
        EXPECT_EQ(BarText(progress, DisplayWidth(text)), text);
    }
    for (int width = 1; width < 120; ++width) {
        EXPECT_LE(DisplayWidth(BarText({"長い名前", 5000, 90000, 3}, width)), width);
    }
    EXPECT_EQ(BarText({"0001AB", 1, 2, 0}, 14), "0001AB  50 %") << "no room for a bar";
}

} // namespace
} // namespace nqp2::tool
