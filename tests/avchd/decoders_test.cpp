// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_information.h"
#include "avchd/limits.h"
#include "avchd/playlist.h"
#include "avchd/recorder_data.h"
#include "avchd/stream_head.h"
#include "avchd/video_format.h"
#include "media/dates.h"
#include "tests/avchd/avchd_bytes.h"
#include "tests/support/print_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <tuple>
#include <vector>

namespace nqp2::avchd {
namespace {

using test::MarkSpec;
using test::PlaylistSpec;
using test::SetSpec;

TEST(RecorderDataTest, DatesAreBinaryCodedAndPossible) {
    const std::tuple<std::string, CString> cases[] = {
        {test::kDate, L"2011-01-28T13:45:07"},
        {"\x20\x12\x02\x29\x23\x59\x59", L"2012-02-29T23:59:59"},
        {"\x20\x11\x02\x29\x13\x45\x07", L""},                 // no leap year
        {"\x20\x1A\x01\x28\x13\x45\x07", L""},                 // no decimal
        {std::string("\x20\x11\x01\x28\x24\x00\x00", 7), L""}, // hour 24
        {test::Zeros(7), L""},
        {test::kDate.substr(1), L""}};
    for (const auto& [bytes, text] : cases) {
        const auto date = DecodeDate(test::BytesOf(bytes));
        EXPECT_EQ(date ? media::DateText(*date) : CString(), text);
    }
}

TEST(RecorderDataTest, TimecodesComeFramesFirstWithFlagsInTheUpperBits) {
    const std::tuple<std::string, const char*> cases[] = {{"\x50\x03\x02\x01", "01:02:03;10"},
                                                          {"\xA9\xD9\xD9\xE3", "23:59:59:29"},
                                                          {"\xFF\xFF\xFF\xFF", ""},
                                                          {"\x30\x01\x01\x01", ""},
                                                          {"\x01\x60\x01\x01", ""},
                                                          {"\x01\x01\x01\x24", ""},
                                                          {"\x01\x01\x01", ""}};
    for (const auto& [bytes, text] : cases) {
        const auto recorded = DecodeTimecode(test::BytesOf(bytes));
        char shown[32] = "";
        if (recorded) {
            const media::Timecode& code = recorded->timecode;
            std::snprintf(shown, sizeof shown, "%02d:%02d:%02d%c%02d", code.hours, code.minutes,
                          code.seconds, recorded->dropFrame ? ';' : ':', code.frames);
        }
        EXPECT_STREQ(shown, text);
    }
}

TEST(VideoFormatTest, FramesAreRoundedNeverCutOff) {
    constexpr std::uint32_t kLast = std::numeric_limits<std::uint32_t>::max();
    constexpr std::tuple<std::uint32_t, std::uint32_t, int, std::int32_t> kCases[] = {
        {38700, 59244300, 3, 32892}, // a real camera's item
        {0, 1501, 4, 1},             // half a tick short of a frame
        {0, 750, 7, 1},              // a frame of 750.75 ticks
        {0, 749, 4, 0},              // less than half a frame
        {0, 1876, 1, 1},             // 1876.875 ticks
        {0, 1875, 2, 1},
        {0, 900, 6, 1},
        {0, kLast, 7, 5720902}, // 26 hours
        {5, 5, 7, 0},
        {4294895265, 16169, 3, 49}, // the clock starts anew
    };
    for (const auto& [in, out, rateCode, frames] : kCases) {
        const FrameRate* rate = RateOf(static_cast<std::uint8_t>(rateCode), false);
        ASSERT_NE(rate, nullptr);
        EXPECT_EQ(FramesBetween(in, out, *rate), frames) << in << ' ' << out;
    }
    EXPECT_EQ(AddFrames(std::numeric_limits<std::int32_t>::max(), 1),
              std::numeric_limits<std::int32_t>::max());
}

TEST(VideoFormatTest, TellsTwentyFiveProgressiveFromFiftyInterlaced) {
    constexpr std::tuple<unsigned, unsigned, unsigned, bool> kCases[] = {
        {4, 3, 0, false}, {4, 3, 2, false}, {4, 3, 1, true},  {2, 3, 1, true},  {2, 3, 0, false},
        {6, 3, 0, true},  {5, 3, 2, true},  {7, 3, 0, true},  {3, 3, 0, true},  {5, 6, 1, true},
        {6, 6, 1, true},  {6, 6, 0, false}, {5, 6, 2, false}, {7, 6, 1, false}, {4, 6, 1, false},
        {4, 4, 1, false}, {0, 3, 1, false}, {9, 3, 1, false},
    };
    for (const auto& [format, rate, pulldown, is25p] : kCases) {
        VideoStream video;
        video.format = static_cast<std::uint8_t>(format);
        video.rateCode = static_cast<std::uint8_t>(rate);
        EXPECT_EQ(Is25p(video, static_cast<std::uint8_t>(pulldown)), is25p)
            << format << ' ' << rate << ' ' << pulldown;
    }
}

TEST(VideoFormatTest, EveryRasterHasAFormatText) {
    const std::tuple<Raster, bool, std::uint8_t, const wchar_t*> cases[] = {
        {{1920, 1080}, true, 3, L"AVCHD_1920_1080_50i"},
        {{1440, 1080}, true, 4, L"AVCHD_1440_1080_50i"},
        {{1440, 1080}, false, 3, L"AVCHD_1440_1080_25p"},
        {{1920, 1080}, false, 7, L"AVCHD_1920_1080_25p"},
        {{1280, 720}, false, 7, L"AVCHD_1280_720_50p"},
        {{1280, 720}, false, 4, L"AVCHD_1280_720_25p"},
        {{1280, 720}, false, 5, L"AVCHD_1280_720_25p"},
        {{3840, 2160}, false, 3, L"AVCHD_1920_1080_25p"},
        {{720, 576}, true, 3, L"AVCHD_1440_1080_50i"}};
    for (const auto& [raster, interlaced, rate, text] : cases) {
        EXPECT_EQ(CString(FormatText(raster, interlaced, RateOf(rate, false))), text);
    }
}

TEST(ClipInformationTest, RoundsEachStretchAndRefusesAClipWithoutTimeOrPicture) {
    const auto decode = [](const std::string& bytes) {
        return DecodeClipInformation(test::BytesOf(bytes));
    };
    const auto clip = decode(
        test::ClipBytes({.stretches = {{0, 1501}, {10, 10}, {UINT32_MAX - 1000, 500}, {0, 1501}},
                         .audio = {6, 3, 1, 9}}));
    EXPECT_EQ(clip.value().Frames(*RateOf(4, false)), 3);
    EXPECT_EQ(clip->audioChannels, 6 + 2 + 1) << "an unknown presentation counts nothing";
    EXPECT_FALSE(decode(test::ClipBytes({.stretches = {}})));
    EXPECT_FALSE(decode(test::ClipBytes({.coding = 0x81}))) << "sound alone";
    for (const std::uint32_t beyond : {0xFFFFFFFEU, 39U}) { // the latter within the head
        EXPECT_FALSE(decode(test::ClipBytes({}).replace(12, 4, test::Be(beyond, 4))));
    }
}

std::optional<Playlist> Decode(const PlaylistSpec& spec) {
    return DecodePlaylist(test::BytesOf(test::PlaylistBytes(spec)));
}

TEST(PlaylistTest, ReadsEveryVersionAndRefusesWhatCouldLeadAstray) {
    for (const char* const version : {"0100", "0200", "0240", "0300"}) {
        EXPECT_TRUE(Decode(PlaylistSpec{.version = version})) << version;
    }
    EXPECT_FALSE(Decode(PlaylistSpec{.version = "0400"}));
    for (const char* const name : {"../..", "0000A", "0 000", "0000\xB2"}) {
        EXPECT_FALSE(Decode(PlaylistSpec{.items = {{name}}})) << name;
    }
}

TEST(PlaylistTest, ShotsRuleTheirItemAndWhatContinuesIt) {
    PlaylistSpec spec = {.items = {{"00000"}, {"00001"}, {"00002"}, {"00003"}},
                         .marks = {{0, 38700, kPulldown22, test::kDate, "\x10\x02\x03\x04"},
                                   {0, 40000},
                                   {3, 7, 0, test::Zeros(7)},
                                   {2, 0, 0, test::kDate, test::kNoTimecode, false}, // a link
                                   {60000}},
                         .shotIds = {test::ClipIdBytes(), test::ClipIdBytes(), test::Zeros(32)}};
    for (const std::size_t joined : {0U, 1U, 2U}) {
        spec.items[joined].connection = 6;
    }
    const auto playlist = Decode(spec);
    ASSERT_TRUE(playlist);
    ASSERT_EQ(playlist->shots.size(), 2U) << "the first of each item";
    for (std::size_t i = 0; i < 4; ++i) {
        const PlayItem& item = playlist->items[i];
        EXPECT_EQ(std::tuple(item.shot, item.continues, playlist->Is25p(item)),
                  std::tuple(i < 3 ? 0 : 1, i == 1 || i == 2, i < 3))
            << i << ": a first item continues nothing";
    }
    const Shot& first = playlist->shots[0];
    EXPECT_EQ(first.time, 38700U);
    EXPECT_EQ(first.timecode.value().timecode.frames, 10);
    EXPECT_TRUE(first.date);
    EXPECT_EQ(first.clipId.value().back(), 16);
    EXPECT_FALSE(playlist->shots[1].date || playlist->shots[1].clipId) << "all zero";
}

TEST(PlaylistTest, DamagedMarksExtensionsAndStreamTablesAreLeftOut) {
    const std::string good = test::PlaylistBytes({.marks = {MarkSpec(), MarkSpec()}});
    const std::size_t streams = good.find("M2TS") + 4 + 2 + 1 + 8 + 12;
    // Where bytes are replaced; the shots that are left, the frames of the item.
    const std::tuple<std::size_t, std::string, std::size_t, int> cases[] = {
        {12, "\xFF\xFF\xFF\xFE", 0, 10},
        {12, test::Be(20, 4) + good.substr(16, 4) + test::Be(16, 4) + test::Be(0x10001, 4), 0,
         10}, // in the head
        {16, "\xFF\xFF\xFF\xFE", 1, 10},
        {streams, "\xFF\xFF", 1, 0},
        {streams, std::string("\0\x10", 2), 1, 0}};
    for (const auto& [place, bytes, shots, frames] : cases) {
        const std::string damaged = std::string(good).replace(place, bytes.size(), bytes);
        const auto playlist = DecodePlaylist(test::BytesOf(damaged));
        ASSERT_TRUE(playlist) << place;
        EXPECT_EQ(playlist->shots.size(), shots) << place;
        EXPECT_EQ(playlist->FramesOf(playlist->items[0]), frames) << place;
    }
}

StreamHead Decode(const std::string& stream, std::uint16_t pid = 0x1011) {
    return DecodeStreamHead(test::BytesOf(stream), pid);
}

TEST(StreamHeadTest, ReadsTheRasterOfParameterSets) {
    const std::tuple<SetSpec, int, int, int, unsigned, unsigned> cases[] = {
        {{}, 1920, 1080, 8, 1, 1},
        {{77, 90, 34, true, 2, 14}, 1440, 1080, 8, 4, 3},
        {{100, 80, 45, false, 0, 255}, 1280, 720, 8, 4, 3},
        {{100, 120, 68, false, 4, 17}, 1920, 1080, 8, 0, 0},
        {{100, 120, 34, true, 2, 1, 2, true}, 1920, 1080, 10, 1, 1},
        {{.order = 1}, 1920, 1080, 8, 1, 1},
        {{.order = 2}, 1920, 1080, 8, 1, 1}};
    for (const auto& [set, pixels, lines, depth, width, height] : cases) {
        const StreamHead head = Decode(test::StreamBytes(set));
        ASSERT_TRUE(head.parameters && head.complete);
        const SequenceParameters& told = *head.parameters;
        EXPECT_EQ(
            std::tuple(told.pixels, told.lines, told.bitDepth, told.shapeWidth, told.shapeHeight),
            std::tuple(pixels, lines, depth, width, height));
        EXPECT_FALSE(head.date);
    }
    const SetSpec impossible[] = {{.cutBottom = 1088 / 4}, {.across = 100'000}, {.extraDepth = 7}};
    for (const SetSpec& set : impossible) {
        EXPECT_FALSE(Decode(test::StreamBytes(set)).parameters) << &set - impossible;
    }
    EXPECT_FALSE(DecodeSequenceParameters(test::BytesOf(test::Zeros(64)))) << "endless number";
}

TEST(StreamHeadTest, ReadsPacksAndPassesOverForeignPackets) {
    // The timecode's zeros need a byte against start codes; it must not be taken for data.
    std::string packs = test::DatePacks(std::string("\x40\x00\x00\x03\x10", 5));
    packs[2] = static_cast<char>(packs[2] - 1);
    const std::string good = test::StreamBytes({}, packs);
    EXPECT_FALSE(Decode(good, 0x1012).parameters);
    // Sync and flags of a packet before; two are scrambled and filled beyond the packet's end.
    for (const char* const head : {"", "\x48\x10\x01", "\x47\xD0\x01", "\x47\x30\xFF"}) {
        std::string foreign = good.substr(0, *head != '\0' ? 192 : 0);
        if (!foreign.empty()) {
            foreign[4] = head[0];
            foreign.replace(7, 2, head + 1);
        }
        const StreamHead read = Decode(foreign + good);
        ASSERT_TRUE(read.timecode && read.date && read.parameters);
        EXPECT_TRUE(read.timecode->dropFrame);
        EXPECT_EQ(std::pair(read.timecode->timecode.hours, int{read.date->day}), std::pair(10, 28));
    }
    EXPECT_FALSE(Decode(test::Packets(test::Unit("\x67" + test::ParameterSet({})))).complete)
        << "before the picture begins";
}

} // namespace
} // namespace nqp2::avchd
