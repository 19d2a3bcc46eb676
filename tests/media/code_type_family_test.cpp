// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/code_type_family.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

namespace nqp2::media {
namespace {

TEST(CodeTypeFamilyTest, EveryValueBelongsToOneFamilyOrToNone) {
    using enum CodeTypeFamily;
    const std::map<CodeTypeFamily, std::vector<int>> families = {
        {StandardRate, {0, 12, 23, 24}},
        {DoubleRate, {1, 13, 26, 27}},
        {HighDefinition, {2, 14, 15, 16, 29, 30, 31, 32, 33, 34}},
        {IntraHighRate, {5, 17, 18, 19, 35, 36, 37, 38, 39, 40, 41, 42}},
        {IntraLowRate, {7, 20, 21, 22, 43, 44, 45, 46, 47, 48, 49, 50}},
    };
    std::map<int, CodeTypeFamily> expected;
    for (const auto& [family, values] : families) {
        for (const int value : values) {
            expected[value] = family;
        }
    }
    for (int value = -3; value < 200; ++value) {
        const auto row = expected.find(value);
        EXPECT_EQ(FamilyOf(static_cast<eCodeType>(value)),
                  row != expected.end() ? row->second : Other)
            << value;
    }
    EXPECT_EQ(FamilyOf(static_cast<eCodeType>(INT32_MIN)), Other);
    EXPECT_EQ(FamilyOf(static_cast<eCodeType>(INT32_MAX)), Other);
}

} // namespace
} // namespace nqp2::media
