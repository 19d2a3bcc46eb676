// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_information.h"
#include "tests/avchd/avchd_bytes.h"

#include <gtest/gtest.h>

namespace nqp2::avchd {
namespace {

using test::ClipSpec;

std::optional<ClipInformation> Decode(const ClipSpec& spec) {
    return DecodeClipInformation(test::BytesOf(test::ClipBytes(spec)));
}

TEST(ClipInformationTest, ReadsStreamsAndExtension) {
    ClipSpec spec;
    spec.format = 5;
    spec.rate = 7;
    spec.audio = {6, 3, 1, 9};
    spec.clipId = test::ClipIdBytes();
    spec.timecode = "\x50\x03\x02\x01";
    const auto clip = Decode(spec);
    ASSERT_TRUE(clip);
    EXPECT_EQ(clip->video.pid, 0x1011);
    EXPECT_EQ(clip->video.format, 5);
    EXPECT_EQ(clip->video.rateCode, 7);
    EXPECT_EQ(clip->video.aspect, 3);
    EXPECT_EQ(clip->audioChannels, 6 + 2 + 1) << "an unknown presentation counts nothing";
    EXPECT_EQ(clip->clipId.value().front(), 6);
    EXPECT_TRUE(clip->timecode.value().dropFrame);
}

TEST(ClipInformationTest, SumsItsStretchesEachRoundedByItself) {
    ClipSpec spec;
    spec.rate = 4;
    spec.stretches = {{0, 1501}, {10, 10}, {20, 5}, {0, 1501}, {0, 1501}};
    EXPECT_EQ(Decode(spec)->Frames(*RateOf(4, false)), 3);
}

TEST(ClipInformationTest, RefusesAClipWithoutTimeOrPicture) {
    ClipSpec spec;
    spec.stretches.clear();
    EXPECT_FALSE(Decode(spec));
    spec = ClipSpec();
    spec.coding = 0x81;
    EXPECT_FALSE(Decode(spec)) << "sound alone";
    const std::string good = test::ClipBytes(ClipSpec());
    for (const std::size_t address : {8U, 12U}) {
        std::string damaged = good;
        damaged.replace(address, 4, "\xFF\xFF\xFF\xFE");
        EXPECT_FALSE(DecodeClipInformation(test::BytesOf(damaged)));
        damaged.replace(address, 4, test::Be(39, 4));
        EXPECT_FALSE(DecodeClipInformation(test::BytesOf(damaged))) << "within the head";
    }
}

} // namespace
} // namespace nqp2::avchd
