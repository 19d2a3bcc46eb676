// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/stream_head.h"
#include "tests/avchd/avchd_bytes.h"

#include <gtest/gtest.h>

namespace nqp2::avchd {
namespace {

using test::SetSpec;

constexpr std::uint16_t kPid = 0x1011;

StreamHead Decode(const std::string& stream, std::uint16_t pid = kPid) {
    return DecodeStreamHead(test::BytesOf(stream), pid);
}

struct RasterCase {
    SetSpec set;
    std::int32_t pixels;
    std::int32_t lines;
    std::uint32_t shapeWidth;
    std::uint32_t shapeHeight;
};

TEST(StreamHeadTest, ReadsTheRasterOfParameterSets) {
    const RasterCase cases[] = {
        {{}, 1920, 1080, 1, 1},
        {{77, 90, 34, true, 2, 14}, 1440, 1080, 4, 3},
        {{100, 80, 45, false, 0, 255}, 1280, 720, 4, 3},
        {{100, 120, 68, false, 4, 17}, 1920, 1080, 0, 0},
        {{100, 120, 34, true, 2, 1, 2, true}, 1920, 1080, 1, 1},
    };
    for (const RasterCase& each : cases) {
        const StreamHead head = Decode(test::StreamBytes(each.set));
        ASSERT_TRUE(head.parameters);
        EXPECT_TRUE(head.complete);
        EXPECT_EQ(head.parameters->pixels, each.pixels);
        EXPECT_EQ(head.parameters->lines, each.lines);
        EXPECT_EQ(head.parameters->bitDepth, 8 + static_cast<int>(each.set.extraDepth));
        EXPECT_EQ(head.parameters->shapeWidth, each.shapeWidth);
        EXPECT_EQ(head.parameters->shapeHeight, each.shapeHeight);
        EXPECT_FALSE(head.date);
    }
}

TEST(StreamHeadTest, RefusesImpossibleParameterSets) {
    SetSpec all = {};
    all.cutBottom = 1088 / 4; // nothing would be left
    EXPECT_FALSE(Decode(test::StreamBytes(all)).parameters);
    SetSpec huge = {};
    huge.across = 100'000;
    EXPECT_FALSE(Decode(test::StreamBytes(huge)).parameters);
    huge.across = 0xFFFFFFFF;
    EXPECT_FALSE(Decode(test::StreamBytes(huge)).parameters);
    SetSpec deep = {};
    deep.extraDepth = 7;
    EXPECT_FALSE(Decode(test::StreamBytes(deep)).parameters);
    EXPECT_FALSE(DecodeSequenceParameters(test::BytesOf(test::Zeros(64)))) << "endless number";
}

TEST(StreamHeadTest, ReadsDateAndTimecodePacks) {
    // The timecode's zeros need a byte against start codes; it must not be taken for data.
    std::string packs = test::DatePacks(std::string("\x40\x00\x00\x03\x10", 5));
    packs[2] = static_cast<char>(packs[2] - 1);
    const StreamHead head = Decode(test::StreamBytes({}, packs));
    ASSERT_TRUE(head.timecode);
    EXPECT_TRUE(head.timecode->dropFrame);
    EXPECT_EQ(head.timecode->timecode.hours, 10);
    ASSERT_TRUE(head.date);
    EXPECT_EQ(head.date->day, 28);
    EXPECT_TRUE(head.parameters);
}

TEST(StreamHeadTest, PassesOverPacketsThatAreNotItsOwn) {
    const std::string good = test::StreamBytes({});
    EXPECT_FALSE(Decode(good, 0x1012).parameters);
    std::string foreign = good.substr(0, 192);
    foreign[4] = '\x48'; // no sync
    EXPECT_TRUE(Decode(foreign + good).parameters);
    foreign[4] = '\x47';
    foreign[7] = '\xD0'; // scrambled
    EXPECT_TRUE(Decode(foreign + good).parameters);
    foreign[7] = '\x30';
    foreign[8] = '\xFF'; // an adaptation field longer than the packet
    EXPECT_TRUE(Decode(foreign + good).parameters);
    EXPECT_FALSE(Decode(good.substr(0, 190)).complete) << "not one packet";
    EXPECT_FALSE(Decode(test::Zeros(1 << 20)).parameters);
}

TEST(StreamHeadTest, IsNotCompleteBeforeThePictureBegins) {
    const std::string good = test::StreamBytes({}, test::DatePacks("\x10\x01\x02\x03"));
    EXPECT_FALSE(Decode(test::Packets(test::Unit("\x67" + test::ParameterSet({})))).complete);
    EXPECT_TRUE(Decode(good.substr(0, 2 * 192)).complete);
}

} // namespace
} // namespace nqp2::avchd
