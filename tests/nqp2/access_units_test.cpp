// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/raw_video.h"

#include "nqp2/console.h"
#include "tests/support/temp_folder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <vector>

namespace nqp2::tool {
namespace {

std::vector<std::string> Cut(const std::string& stream, std::size_t unitSize) {
    const test::TempFolder folder;
    std::ofstream(folder.Path("stream"), std::ios::binary) << stream;
    AccessUnits units(folder.Path("stream"), unitSize);
    std::vector<std::string> found;
    for (std::string unit; units.Next(unit);) {
        found.push_back(unit);
    }
    return found;
}

TEST(AccessUnits, AreAsLargeAsTheFormSays) {
    EXPECT_EQ(Cut("abcdefgh", 3), (std::vector<std::string>{"abc", "def", "gh"}));
    EXPECT_TRUE(Cut("", 3).empty());
    EXPECT_TRUE(Cut("", 0).empty());
}

TEST(AccessUnits, OfAvcBeginWithDelimitersWhereverPiecesEnd) {
    const std::string zeros(3, '\0');
    for (std::size_t size = (1U << 20U) - 8; size < (1U << 20U) + 8; ++size) {
        const std::vector<std::string> units = {
            zeros + "\1\x09" + std::string(size, 'a'), zeros.substr(1) + "\1\x09" + "b",
            zeros + "\1\x09" + "padded" + zeros + zeros, zeros + "\1\x09" + "c"};
        EXPECT_EQ(Cut(units[0] + units[1] + units[2] + units[3], 0), units) << size;
    }
}

TEST(AccessUnits, WithoutDelimitersAreNoStream) {
    EXPECT_EQ(Cut("small", 0), std::vector<std::string>{"small"}) << "the worker refuses it";
    EXPECT_THROW(Cut(std::string(17U << 20U, 'x'), 0), Failure);
}

} // namespace
} // namespace nqp2::tool
