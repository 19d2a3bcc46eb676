// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/raw_video.h"

#include "console/console.h"
#include "tests/support/temp_folder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <vector>

namespace nqp2::tool {
namespace {

using Units = std::vector<std::string>;

Units Cut(const std::string& stream, std::size_t unitSize) {
    const test::TempFolder folder;
    std::ofstream(folder.Path("stream"), std::ios::binary) << stream;
    AccessUnits units(folder.Path("stream"), unitSize);
    Units found;
    for (std::string unit; units.Next(unit);) {
        found.push_back(unit);
    }
    return found;
}

TEST(AccessUnits, AreCutByTheirSizeOrTheirDelimitersWhereverPiecesEnd) {
    EXPECT_EQ(Cut("abcdefgh", 3), (Units{"abc", "def", "gh"}));
    EXPECT_EQ(Cut("", 3), Units());
    EXPECT_EQ(Cut("", 0), Units());
    EXPECT_EQ(Cut("small", 0), Units{"small"}) << "the worker refuses it";
    EXPECT_THROW(Cut(std::string(17U << 20U, 'x'), 0), Failure) << "no delimiter far and wide";
    const std::string zeros(3, '\0');
    const std::string delimiter = zeros + "\1\x09";
    for (std::size_t size = (1U << 20U) - 8; size < (1U << 20U) + 8; ++size) {
        const Units units = {delimiter + std::string(size, 'a'), delimiter.substr(1) + "b",
                             delimiter + "padded" + zeros + zeros, delimiter + "c"};
        EXPECT_EQ(Cut(units[0] + units[1] + units[2] + units[3], 0), units) << size;
    }
}

} // namespace
} // namespace nqp2::tool
