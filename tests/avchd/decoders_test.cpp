// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_information.h"
#include "avchd/limits.h"
#include "avchd/playlist.h"
#include "avchd/recorder_data.h"
#include "avchd/stream_head.h"
#include "avchd/video_format.h"
#include "tests/avchd/avchd_bytes.h"
#include "tests/support/print_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <tuple>
#include <vector>

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
    EXPECT_EQ(std::tie(date->year, date->month, date->day, date->hour, date->minute, date->second),
              std::tuple(2011, 1, 28, 13, 45, 7));
    const std::string impossible[] = {std::string("\x20\x11\x02\x29\x13\x45\x07"), // no leap year
                                      std::string("\x20\x11\x13\x01\x13\x45\x07"), // month 13
                                      std::string("\x20\x1A\x01\x28\x13\x45\x07"), // no decimal
                                      std::string("\x20\x11\x01\x28\x24\x00\x00", 7), // hour 24
                                      test::Zeros(7),
                                      test::kDate.substr(1)};
    for (const std::string& bytes : impossible) {
        EXPECT_FALSE(DecodeDate(test::BytesOf(bytes))) << testing::PrintToString(bytes);
    }
    EXPECT_TRUE(DecodeDate(test::BytesOf("\x20\x12\x02\x29\x23\x59\x59"))) << "leap year";
}

TEST(RecordedMomentTest, TimecodesComeFramesFirst) {
    const auto drop = DecodeTimecode(test::BytesOf("\x50\x03\x02\x01"));
    ASSERT_TRUE(drop);
    EXPECT_TRUE(drop->dropFrame);
    const media::Timecode& shown = drop->timecode;
    EXPECT_EQ(std::tie(shown.hours, shown.minutes, shown.seconds, shown.frames),
              std::tuple(1, 2, 3, 10));
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
    EXPECT_EQ(
        std::tuple(clip->video.pid, clip->video.format, clip->video.rateCode, clip->video.aspect),
        std::tuple(0x1011, 5, 7, 3));
    EXPECT_EQ(clip->audioChannels, 6 + 2 + 1) << "an unknown presentation counts nothing";
    EXPECT_EQ(clip->clipId.value().front(), 6);
    EXPECT_TRUE(clip->timecode.value().dropFrame);
}

TEST(ClipInformationTest, SumsItsStretchesEachRoundedByItself) {
    ClipSpec spec;
    spec.rate = 4;
    spec.stretches = {{0, 1501}, {10, 10}, {UINT32_MAX - 1000, 500}, {0, 1501}};
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
        const PlayItem& second = playlist->items[1];
        EXPECT_EQ(playlist->items[0].Name(), "00012");
        EXPECT_EQ(playlist->FramesOf(playlist->items[0]), 10);
        EXPECT_EQ(second.Name(), "99999");
        EXPECT_EQ(second.video.rateCode, 6) << "behind a table of angles";
        EXPECT_EQ(playlist->FramesOf(second), 1);
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
    for (std::size_t item = 0; item < 4; ++item) {
        EXPECT_EQ(playlist->items[item].shot, item < 3 ? 0 : 1) << item;
    }
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
    std::string inHead = good; // an address within the head, of what would be a table of one mark
    inHead.replace(12, 4, test::Be(20, 4));
    inHead.replace(20, 20, test::Be(16, 4) + test::Be(1, 2) + test::Be(1, 2) + test::Zeros(12));
    EXPECT_TRUE(DecodePlaylist(test::BytesOf(inHead))->shots.empty());
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

TEST(StreamHeadTest, ReadsTheRasterOfParameterSets) {
    const std::tuple<SetSpec, std::int32_t, std::int32_t, std::uint32_t, std::uint32_t> cases[] = {
        {{}, 1920, 1080, 1, 1},
        {{77, 90, 34, true, 2, 14}, 1440, 1080, 4, 3},
        {{100, 80, 45, false, 0, 255}, 1280, 720, 4, 3},
        {{100, 120, 68, false, 4, 17}, 1920, 1080, 0, 0},
        {{100, 120, 34, true, 2, 1, 2, true}, 1920, 1080, 1, 1},
        {{.order = 1}, 1920, 1080, 1, 1},
        {{.order = 2}, 1920, 1080, 1, 1},
    };
    for (const auto& [set, pixels, lines, shapeWidth, shapeHeight] : cases) {
        const StreamHead head = Decode(test::StreamBytes(set));
        ASSERT_TRUE(head.parameters);
        EXPECT_TRUE(head.complete);
        EXPECT_EQ(head.parameters->pixels, pixels);
        EXPECT_EQ(head.parameters->lines, lines);
        EXPECT_EQ(head.parameters->bitDepth, 8 + static_cast<int>(set.extraDepth));
        EXPECT_EQ(head.parameters->shapeWidth, shapeWidth);
        EXPECT_EQ(head.parameters->shapeHeight, shapeHeight);
        EXPECT_FALSE(head.date);
    }
}

TEST(StreamHeadTest, RefusesImpossibleParameterSets) {
    const SetSpec impossible[] = {
        {.cutBottom = 1088 / 4}, // nothing would be left
        {.across = 100'000},
        {.across = 0xFFFFFFFF},
        {.extraDepth = 7},
    };
    for (const SetSpec& set : impossible) {
        EXPECT_FALSE(Decode(test::StreamBytes(set)).parameters) << &set - impossible;
    }
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
    // Without sync, scrambled, with an adaptation field longer than the packet.
    for (const char* const head :
         {"\x48\x50\x11\x10\x01", "\x47\x50\x11\xD0\x01", "\x47\x50\x11\x30\xFF"}) {
        std::string foreign = good.substr(0, 192);
        foreign[4] = head[0];
        foreign[7] = head[3];
        foreign[8] = head[4];
        EXPECT_TRUE(Decode(foreign + good).parameters);
    }
    EXPECT_FALSE(Decode(good.substr(0, 190)).complete) << "not one packet";
    EXPECT_FALSE(Decode(test::Zeros(1 << 20)).parameters);
}

TEST(StreamHeadTest, IsNotCompleteBeforeThePictureBegins) {
    const std::string good = test::StreamBytes({}, test::DatePacks("\x10\x01\x02\x03"));
    EXPECT_FALSE(Decode(test::Packets(test::Unit("\x67" + test::ParameterSet({})))).complete);
    EXPECT_TRUE(Decode(good.substr(0, 2 * 192)).complete);
}

/// Every beginning of sound bytes, in memory of its own so that a read beyond it is noticed: no
/// result without the first `needed` bytes. What any result must be, the fuzz targets check.
void ExpectSafeCuts(const std::string& sound, std::size_t needed,
                    const std::function<bool(Bytes)>& decode) {
    for (std::size_t size = 0; size <= sound.size(); ++size) {
        const std::vector<std::uint8_t> copy(sound.begin(),
                                             sound.begin() + static_cast<std::ptrdiff_t>(size));
        const bool decoded = decode(copy);
        EXPECT_TRUE(!decoded || size >= needed) << "cut at " << size;
        EXPECT_TRUE(decoded || size < sound.size());
    }
}

TEST(DamagedFilesTest, CutOffAtEveryByte) {
    PlaylistSpec playlist;
    playlist.items = {ItemSpec(), ItemSpec{"00001", 0, 900, 6, 5, 6, 2}};
    PlaylistSpec bare = playlist;
    bare.hasExtension = false;
    playlist.marks = {MarkSpec(), MarkSpec{1}};
    playlist.shotIds = {test::ClipIdBytes(), test::ClipIdBytes()};
    ExpectSafeCuts(test::PlaylistBytes(playlist), test::PlaylistBytes(bare).size() - 6,
                   [](Bytes bytes) { return DecodePlaylist(bytes).has_value(); });
    ClipSpec clip;
    clip.clipId = test::ClipIdBytes();
    ExpectSafeCuts(test::ClipBytes(clip), test::ClipBytes(ClipSpec()).size(),
                   [](Bytes bytes) { return DecodeClipInformation(bytes).has_value(); });
    ExpectSafeCuts(test::StreamBytes({.scaled = true}, test::DatePacks("\x10\x01\x02\x03")), 192,
                   [](Bytes bytes) { return DecodeStreamHead(bytes, kPid).complete; });
}

/// Real and authored files that lie beside the sources, not in them.
class SharedSamplesTest : public testing::Test {
protected:
    void SetUp() override {
        const char* const named = std::getenv("NQP2_SHARED_SAMPLES");
        m_samples = named != nullptr ? named : NQP2_DEFAULT_SHARED_SAMPLES;
        m_samples /= "avchd";
        if (!std::filesystem::is_directory(m_samples)) {
            GTEST_SKIP() << "no samples at " << m_samples << "; set NQP2_SHARED_SAMPLES";
        }
    }
    [[nodiscard]] std::string Read(const std::filesystem::path& name) const {
        std::ifstream file(m_samples / name, std::ios::binary);
        EXPECT_TRUE(file) << name;
        return {std::istreambuf_iterator<char>(file), {}};
    }
    [[nodiscard]] std::optional<Playlist> Decode(const std::filesystem::path& name) const {
        return DecodePlaylist(test::BytesOf(Read(name)));
    }

    std::filesystem::path m_samples;
};

TEST_F(SharedSamplesTest, ARealCamerasSplitRecording) {
    const auto playlist = Decode("camera_4items.MPL");
    ASSERT_TRUE(playlist);
    std::string items;
    for (const PlayItem& item : playlist->items) {
        items += std::string(item.Name()) + ' ' + std::to_string(playlist->FramesOf(item)) + ' ';
    }
    // The frames that the items' ticks say at 30000/1001.
    EXPECT_EQ(items, "00010 28305 00011 28290 00012 6750 00013 135 ");
    EXPECT_EQ(playlist->shots.size(), 2U);
    const Shot& first = playlist->shots[static_cast<std::size_t>(playlist->items[2].shot)];
    EXPECT_EQ(first.item, 0U);
    ASSERT_TRUE(first.date && first.timecode);
    EXPECT_EQ(first.date->year, 2021);
    EXPECT_EQ(first.date->minute, 39);
    EXPECT_EQ(first.timecode->timecode.hours, 17);
    EXPECT_EQ(playlist->items[3].shot, 1);
}

TEST_F(SharedSamplesTest, AuthoredFiles) {
    EXPECT_FALSE(Decode("mpls-cases/00001_Invalid.mpls"));
    for (const char* const name : {"00001_LinkPoint", "00002_MultiAngle2", "00003_Padding_Zero"}) {
        const auto playlist =
            Decode(std::filesystem::path("mpls-cases") / (std::string(name) + ".mpls"));
        ASSERT_TRUE(playlist) << name;
        ASSERT_FALSE(playlist->items.empty());
        for (const PlayItem& item : playlist->items) {
            EXPECT_NE(RateOf(item.video.rateCode, false), nullptr) << name;
        }
    }
    EXPECT_TRUE(Decode("authored-disc/00000.mpls"));
    EXPECT_TRUE(DecodeClipInformation(test::BytesOf(Read("authored-disc/00000.clpi"))));
}

} // namespace
} // namespace nqp2::avchd
