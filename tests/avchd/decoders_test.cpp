// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_information.h"
#include "avchd/limits.h"
#include "avchd/playlist.h"
#include "avchd/recorded_moment.h"
#include "avchd/stream_head.h"
#include "avchd/video_format.h"
#include "tests/avchd/avchd_bytes.h"
#include "tests/support/print_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace nqp2::avchd {
namespace {

using test::ClipSpec;
using test::ItemSpec;
using test::MarkSpec;
using test::PlaylistSpec;
using test::SetSpec;

TEST(RecordedMomentTest, DatesAreBinaryCodedAndPossible) {
    const auto date = DecodeDate(test::BytesOf(test::kDate));
    ASSERT_TRUE(date);
    EXPECT_EQ(date->year, 2011);
    EXPECT_EQ(date->month, 1);
    EXPECT_EQ(date->day, 28);
    EXPECT_EQ(date->hour, 13);
    EXPECT_EQ(date->minute, 45);
    EXPECT_EQ(date->second, 7);
    const std::string impossible[] = {
        std::string("\x20\x11\x02\x29\x13\x45\x07"),    // no leap year
        std::string("\x20\x11\x13\x01\x13\x45\x07"),    // month 13
        std::string("\x20\x1A\x01\x28\x13\x45\x07"),    // no decimal
        std::string("\x20\x11\x01\x28\x24\x00\x00", 7), // hour 24
        std::string("\xFF\xFF\xFF\xFF\xFF\xFF\xFF"),    test::Zeros(7), test::kDate.substr(1)};
    for (const std::string& bytes : impossible) {
        EXPECT_FALSE(DecodeDate(test::BytesOf(bytes))) << testing::PrintToString(bytes);
    }
    EXPECT_TRUE(DecodeDate(test::BytesOf("\x20\x12\x02\x29\x23\x59\x59"))) << "leap year";
}

TEST(RecordedMomentTest, TimecodesComeFramesFirst) {
    const auto drop = DecodeTimecode(test::BytesOf("\x50\x03\x02\x01"));
    ASSERT_TRUE(drop);
    EXPECT_TRUE(drop->dropFrame);
    EXPECT_EQ(drop->timecode.hours, 1);
    EXPECT_EQ(drop->timecode.minutes, 2);
    EXPECT_EQ(drop->timecode.seconds, 3);
    EXPECT_EQ(drop->timecode.frames, 10);
    const auto plain = DecodeTimecode(test::BytesOf(std::string("\xA9\xD9\xD9\xE3", 4)));
    ASSERT_TRUE(plain) << "flags in the upper bits of each byte";
    EXPECT_FALSE(plain->dropFrame);
    EXPECT_EQ(plain->timecode.hours, 23);
    EXPECT_EQ(plain->timecode.frames, 29);
    for (const char* const none : {"\xFF\xFF\xFF\xFF", "\x30\x01\x01\x01", "\x01\x60\x01\x01",
                                   "\x01\x01\x01\x24", "\x01\x01\x01"}) {
        EXPECT_FALSE(DecodeTimecode(test::BytesOf(none)));
    }
}

struct FrameCase {
    std::uint32_t in;
    std::uint32_t out;
    unsigned rateCode;
    std::int32_t frames;
    const char* why;
};

TEST(VideoFormatTest, FramesAreRoundedNeverCutOff) {
    constexpr std::uint32_t kLast = std::numeric_limits<std::uint32_t>::max();
    constexpr FrameCase kCases[] = {
        {38700, 59244300, 3, 32892, "a real camera's item"},
        {0, 1501, 4, 1, "half a tick short of a frame"},
        {0, 1502, 4, 1, "half a tick over"},
        {0, 750, 7, 1, "a frame of 750.75 ticks"},
        {0, 749, 4, 0, "less than half a frame"},
        {0, 1876, 1, 1, "1876.875 ticks"},
        {0, 1875, 2, 1, ""},
        {0, 900, 6, 1, ""},
        {0, kLast, 7, 5720902, "26 hours"},
        {kLast, 0, 3, 0, "no clock that ran over"},
        {5, 5, 3, 0, "empty"},
    };
    for (const FrameCase& each : kCases) {
        const FrameRate* rate = RateOf(static_cast<std::uint8_t>(each.rateCode), false);
        ASSERT_NE(rate, nullptr);
        EXPECT_EQ(FramesBetween(each.in, each.out, *rate), each.frames) << each.why;
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
    const std::tuple<Raster, bool, unsigned, const wchar_t*> cases[] = {
        {Raster{1920, 1080}, true, 3, L"AVCHD_1920_1080_50i"},
        {Raster{1440, 1080}, true, 4, L"AVCHD_1440_1080_50i"},
        {Raster{1440, 1080}, false, 3, L"AVCHD_1440_1080_25p"},
        {Raster{1920, 1080}, false, 7, L"AVCHD_1920_1080_25p"},
        {Raster{1280, 720}, false, 7, L"AVCHD_1280_720_50p"},
        {Raster{1280, 720}, false, 4, L"AVCHD_1280_720_25p"},
        {Raster{1280, 720}, false, 5, L"AVCHD_1280_720_25p"},
        {Raster{3840, 2160}, false, 3, L"AVCHD_1920_1080_25p"},
        {Raster{720, 576}, true, 3, L"AVCHD_1440_1080_50i"},
    };
    for (const auto& [raster, interlaced, rate, text] : cases) {
        EXPECT_EQ(
            CString(FormatText(raster, interlaced, RateOf(static_cast<std::uint8_t>(rate), false))),
            text);
    }
}

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
    spec.items[0].connection = 6;
    EXPECT_FALSE(Decode(spec)->items[0].continues) << "a first item continues nothing";
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

/// Decodes bytes and checks what it promises of any result. Returns whether there was one.
using DecodeAny = std::function<bool(Bytes)>;

bool AnyPlaylist(Bytes bytes) {
    const auto playlist = DecodePlaylist(bytes);
    if (!playlist) {
        return false;
    }
    for (const PlayItem& item : playlist->items) {
        EXPECT_EQ(item.Name().find_first_not_of("0123456789"), std::string_view::npos);
        EXPECT_LT(item.shot, static_cast<std::int32_t>(playlist->shots.size()));
        EXPECT_GE(playlist->FramesOf(item), 0);
    }
    return true;
}

bool AnyClip(Bytes bytes) {
    const auto clip = DecodeClipInformation(bytes);
    EXPECT_TRUE(!clip || (!clip->stretches.empty() && IsVideoCoding(clip->video.codingType)));
    return clip.has_value();
}

bool AnyStream(Bytes bytes) {
    const StreamHead head = DecodeStreamHead(bytes, 0x1011);
    EXPECT_TRUE(!head.parameters || (head.parameters->pixels > 0 && head.parameters->lines > 0));
    return head.complete;
}

struct DamageCase {
    const char* name;
    DecodeAny decode;
    std::string sound;
    std::size_t needed; ///< bytes without which there is no result
};

std::vector<DamageCase> Cases() {
    test::PlaylistSpec playlist;
    playlist.items = {test::ItemSpec(), test::ItemSpec{"00001", 0, 900, 6, 5, 6, 2}};
    playlist.marks = {test::MarkSpec(), test::MarkSpec{1}};
    playlist.shotIds = {test::ClipIdBytes(), test::ClipIdBytes()};
    test::PlaylistSpec bare = playlist;
    bare.marks.clear();
    bare.hasExtension = false;
    test::ClipSpec clip;
    clip.clipId = test::ClipIdBytes();
    test::SetSpec set;
    set.scaled = true;
    return {
        {"playlist", AnyPlaylist, test::PlaylistBytes(playlist),
         test::PlaylistBytes(bare).size() - 6},
        {"clip information", AnyClip, test::ClipBytes(clip),
         test::ClipBytes(test::ClipSpec()).size()},
        {"stream", AnyStream, test::StreamBytes(set, test::DatePacks("\x10\x01\x02\x03")), 192}};
}

/// Bytes in memory of their own, so that a read beyond them is noticed.
bool DecodeAlone(const DamageCase& each, std::string_view bytes) {
    const std::vector<std::uint8_t> copy(bytes.begin(), bytes.end());
    return each.decode(copy);
}

TEST(DamagedFilesTest, CutOffAtEveryByte) {
    for (const DamageCase& each : Cases()) {
        EXPECT_TRUE(DecodeAlone(each, each.sound)) << each.name;
        for (std::size_t size = 0; size < each.sound.size(); ++size) {
            const bool decoded = DecodeAlone(each, std::string_view(each.sound).substr(0, size));
            EXPECT_TRUE(!decoded || size >= each.needed) << each.name << " cut at " << size;
        }
    }
}

} // namespace
} // namespace nqp2::avchd
