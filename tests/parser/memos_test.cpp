// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "parser/memos.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace nqp2::parser {
namespace {

/// Offsets that are kept, each with the place where it first stood.
std::vector<std::pair<int, int>> Kept(const std::vector<int>& offsets) {
    CArray<_tag_P2Memo> memos;
    for (const int offset : offsets) {
        _tag_P2Memo memo;
        memo.Offset = offset;
        memo.VoiceChannelFlag = static_cast<int>(memos.GetSize());
        memos.Add(memo);
    }
    RemoveRepeatedMemos(memos);
    std::vector<std::pair<int, int>> kept;
    for (const _tag_P2Memo& memo : memos) {
        kept.emplace_back(memo.Offset, memo.VoiceChannelFlag);
    }
    return kept;
}

TEST(Memos, TheFirstAtEachOffsetIsKeptInOrder) {
    using Result = std::vector<std::pair<int, int>>;
    EXPECT_EQ(Kept({10, 20, 10, 30, 20}), (Result{{10, 0}, {20, 1}, {30, 3}}));
    EXPECT_EQ(Kept({0, 0, 0}), (Result{{0, 0}}));
    EXPECT_EQ(Kept({3, -1, 2}), (Result{{3, 0}, {-1, 1}, {2, 2}}));
    EXPECT_EQ(Kept({}), Result());
}

} // namespace
} // namespace nqp2::parser
