// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/CStringArray.h"

#include "tests/support/print_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testing::ElementsAre;

CArray<int> Numbers(int count) {
    CArray<int> numbers;
    for (int i = 0; i < count; ++i) {
        numbers.Add(i);
    }
    return numbers;
}

TEST(CArrayTest, AddsAndCounts) {
    CStringArray names;
    EXPECT_TRUE(names.IsEmpty());
    EXPECT_EQ(names.GetUpperBound(), -1);
    EXPECT_EQ(names.Add(L"a"), 0);
    EXPECT_EQ(names.Add(L"b"), 1);
    EXPECT_EQ(names.GetSize(), 2);
    EXPECT_EQ(names[1], L"b");
}

TEST(CArrayTest, IndicesOutOfRangeThrow) {
    CArray<int> numbers = Numbers(2);
    for (const std::int64_t index : {std::int64_t{-1}, std::int64_t{2}, INT64_MIN, INT64_MAX}) {
        EXPECT_THROW(numbers[index] = 1, std::out_of_range);
        EXPECT_THROW(numbers.SetAt(index, 1), std::out_of_range);
    }
    EXPECT_THROW(numbers.InsertAt(-1, 5), std::out_of_range);
    EXPECT_THROW(numbers.SetSize(-1), std::length_error);
    EXPECT_THAT(numbers, ElementsAre(0, 1));
}

TEST(CArrayTest, TakesItsOwnElements) {
    CStringArray names;
    names.Add(L"a name that is long enough");
    for (int i = 0; i < 20; ++i) {
        names.Add(names[0]);
    }
    names.InsertAt(40, names[0]);
    EXPECT_EQ(names[40], names[0]);
    EXPECT_EQ(names[39], L"") << "growing fills with empty elements";

    CArray<int> numbers = Numbers(3);
    EXPECT_EQ(numbers.Append(numbers), 3);
    EXPECT_THAT(numbers, ElementsAre(0, 1, 2, 0, 1, 2));
}

TEST(CArrayTest, InsertsAndRemovesWithinBounds) {
    CArray<int> numbers = Numbers(4);
    numbers.InsertAt(1, 9, 2);
    EXPECT_THAT(numbers, ElementsAre(0, 9, 9, 1, 2, 3));
    numbers.RemoveAt(1, 2);
    numbers.RemoveAt(3, INT64_MAX);
    EXPECT_THAT(numbers, ElementsAre(0, 1, 2));
    numbers.RemoveAt(-1);
    numbers.RemoveAt(3);
    numbers.RemoveAt(0, 0);
    numbers.RemoveAt(0, -1);
    EXPECT_THAT(numbers, ElementsAre(0, 1, 2));
}

TEST(CArrayTest, CopiesAreIndependent) {
    const CArray<int> original = Numbers(2);
    CArray<int> copy;
    copy.Copy(original);
    copy[0] = 7;
    EXPECT_THAT(original, ElementsAre(0, 1));
    EXPECT_THAT(copy, ElementsAre(7, 1));
}

} // namespace
