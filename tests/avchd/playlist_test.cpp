// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/limits.h"
#include "avchd/playlist.h"
#include "tests/avchd/avchd_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nqp2::avchd {
namespace {

using test::ItemSpec;
using test::MarkSpec;
using test::PlaylistSpec;

std::optional<Playlist> Decode(const PlaylistSpec& spec) {
    return DecodePlaylist(test::BytesOf(test::PlaylistBytes(spec)));
}

TEST(PlaylistTest, ReadsItemsWithTheirFirstVideoStream) {
    for (const char* const version : {"0100", "0200", "0240", "0300"}) {
        PlaylistSpec spec;
        spec.version = version;
        spec.items = {ItemSpec{"00012"}, ItemSpec{"99999", 100, 100 + 900, 1, 5, 6, 3}};
        const auto playlist = Decode(spec);
        ASSERT_TRUE(playlist) << version;
        ASSERT_EQ(playlist->items.size(), 2U);
        EXPECT_EQ(playlist->items[0].Name(), "00012");
        EXPECT_EQ(playlist->FramesOf(playlist->items[0]), 10);
        EXPECT_EQ(playlist->items[1].Name(), "99999");
        EXPECT_EQ(playlist->items[1].video.rateCode, 6) << "behind a table of angles";
        EXPECT_EQ(playlist->FramesOf(playlist->items[1]), 1);
    }
}

TEST(PlaylistTest, ShotsRuleTheirItemAndWhatContinuesIt) {
    PlaylistSpec spec;
    spec.items = {ItemSpec{"00000"}, ItemSpec{"00001"}, ItemSpec{"00002"}, ItemSpec{"00003"}};
    spec.items[1].connection = 6;
    spec.items[2].connection = 6;
    spec.marks = {MarkSpec{0, 38700, kPulldown22, test::kDate, "\x10\x02\x03\x04"},
                  MarkSpec{0, 40000}, MarkSpec{3, 7, 0, test::Zeros(7)},
                  MarkSpec{2, 0, 0, test::kDate, test::kNoTimecode, false}, // a link
                  MarkSpec{60000}};
    spec.shotIds = {test::ClipIdBytes(), test::ClipIdBytes(), test::Zeros(32)};
    const auto playlist = Decode(spec);
    ASSERT_TRUE(playlist);
    const auto shotOf = [&](std::size_t item) { return playlist->items[item].shot; };
    EXPECT_EQ(shotOf(0), 0);
    EXPECT_EQ(shotOf(1), 0);
    EXPECT_EQ(shotOf(2), 0);
    EXPECT_EQ(shotOf(3), 1);
    ASSERT_EQ(playlist->shots.size(), 2U) << "the first of each item";
    EXPECT_FALSE(playlist->items[0].continues);
    EXPECT_TRUE(playlist->items[2].continues);
    EXPECT_TRUE(playlist->Is25p(playlist->items[2]));
    EXPECT_FALSE(playlist->Is25p(playlist->items[3]));
    const Shot& first = playlist->shots[0];
    EXPECT_EQ(first.time, 38700U);
    EXPECT_EQ(first.timecode.value().timecode.frames, 10);
    EXPECT_TRUE(first.date);
    EXPECT_EQ(first.clipId.value().back(), 16);
    EXPECT_FALSE(playlist->shots[1].date);
    EXPECT_FALSE(playlist->shots[1].clipId) << "all zero";
}

TEST(PlaylistTest, AFirstItemContinuesNothing) {
    PlaylistSpec spec;
    spec.items[0].connection = 6;
    EXPECT_FALSE(Decode(spec)->items[0].continues);
}

TEST(PlaylistTest, RefusesWhatCouldLeadAstray) {
    const auto refused = [](auto change) {
        PlaylistSpec spec;
        change(spec);
        return !Decode(spec);
    };
    EXPECT_TRUE(refused([](PlaylistSpec& spec) { spec.version = "0400"; }));
    for (const char* const name : {"../..", "0000A", "0 000", "0000\xB2"}) {
        EXPECT_TRUE(refused([&](PlaylistSpec& spec) { spec.items[0].name = name; })) << name;
    }
    EXPECT_TRUE(refused([](PlaylistSpec& spec) { spec.items.resize(kMaxPlayItems + 1); }));
    EXPECT_FALSE(refused([](PlaylistSpec& spec) { spec.items.resize(kMaxPlayItems); }));

    std::string codec = test::PlaylistBytes({});
    codec.replace(codec.find("M2TS"), 4, "M3TS");
    EXPECT_FALSE(DecodePlaylist(test::BytesOf(codec)));
}

TEST(PlaylistTest, ADamagedStreamTableLeavesItsItemWithoutRate) {
    const std::string good = test::PlaylistBytes({});
    const std::size_t table = good.find("M2TS") + 4 + 2 + 1 + 8 + 12;
    for (const char* const length : {"\xFF\xFF", "\x00\x10"}) {
        std::string damaged = good;
        damaged.replace(table, 2, length, 2);
        const auto playlist = DecodePlaylist(test::BytesOf(damaged));
        ASSERT_TRUE(playlist);
        EXPECT_EQ(playlist->items[0].video.rateCode, 0);
        EXPECT_EQ(playlist->FramesOf(playlist->items[0]), 0);
    }
}

TEST(PlaylistTest, DamagedMarksAndExtensionsAreLeftOut) {
    PlaylistSpec spec;
    spec.marks = {MarkSpec(), MarkSpec()};
    const std::string good = test::PlaylistBytes(spec);
    for (const std::size_t address : {12U, 16U}) {
        std::string damaged = good;
        damaged.replace(address, 4, "\xFF\xFF\xFF\xFE");
        const auto playlist = DecodePlaylist(test::BytesOf(damaged));
        ASSERT_TRUE(playlist);
        EXPECT_EQ(playlist->items.size(), 1U);
        EXPECT_EQ(playlist->shots.size(), address == 12U ? 0U : 1U);
        EXPECT_EQ(playlist->shots.empty() || !playlist->shots[0].date, true);
    }
}

} // namespace
} // namespace nqp2::avchd
