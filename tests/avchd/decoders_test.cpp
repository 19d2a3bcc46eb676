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

TEST(RecorderDataTest, DatesAreBinaryCodedAndPossible) {
    const std::tuple<std::string, CString> cases[] = {
        {test::kDate, L"2011-01-28T13:45:07"},
        {"\x20\x12\x02\x29\x23\x59\x59", L"2012-02-29T23:59:59"},
        {"\x20\x11\x02\x29\x13\x45\x07", L""},                 // no leap year
        {"\x20\x11\x13\x01\x13\x45\x07", L""},                 // month 13
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

std::optional<ClipInformation> Decode(const ClipSpec& spec) {
    return DecodeClipInformation(test::BytesOf(test::ClipBytes(spec)));
}

TEST(ClipInformationTest, ReadsStreamsAndExtensionAndRoundsEachStretchByItself) {
    ClipSpec spec;
    spec.stretches = {{0, 1501}, {10, 10}, {UINT32_MAX - 1000, 500}, {0, 1501}};
    spec.format = 5;
    spec.rate = 7;
    spec.audio = {6, 3, 1, 9};
    spec.clipId = test::ClipIdBytes();
    spec.timecode = "\x50\x03\x02\x01";
    const auto clip = Decode(spec);
    ASSERT_TRUE(clip);
    const VideoStream& video = clip->video;
    EXPECT_EQ(std::tuple(video.pid, video.format, video.rateCode, video.aspect),
              std::tuple(0x1011, 5, 7, 3));
    EXPECT_EQ(clip->audioChannels, 6 + 2 + 1) << "an unknown presentation counts nothing";
    EXPECT_EQ(clip->clipId.value().front(), 6);
    EXPECT_TRUE(clip->timecode.value().dropFrame);
    EXPECT_EQ(clip->Frames(*RateOf(4, false)), 3);
}

TEST(ClipInformationTest, RefusesAClipWithoutTimeOrPicture) {
    EXPECT_FALSE(Decode(ClipSpec{.stretches = {}}));
    EXPECT_FALSE(Decode(ClipSpec{.coding = 0x81})) << "sound alone";
    for (const std::size_t address : {8U, 12U}) {
        for (const std::uint32_t beyond : {0xFFFFFFFEU, 39U}) { // the latter within the head
            std::string damaged = test::ClipBytes({});
            damaged.replace(address, 4, test::Be(beyond, 4));
            EXPECT_FALSE(DecodeClipInformation(test::BytesOf(damaged)));
        }
    }
}

std::optional<Playlist> Decode(const PlaylistSpec& spec) {
    return DecodePlaylist(test::BytesOf(test::PlaylistBytes(spec)));
}

TEST(PlaylistTest, ReadsItemsWithTheirFirstVideoStream) {
    for (const char* const version : {"0100", "0200", "0240", "0300"}) {
        const auto playlist = Decode(PlaylistSpec{
            .items = {{"00012"}, {"99999", 100, 100 + 900, 1, 5, 6, 3}}, .version = version});
        ASSERT_TRUE(playlist) << version;
        ASSERT_EQ(playlist->items.size(), 2U);
        EXPECT_EQ(playlist->items[0].Name(), "00012");
        EXPECT_EQ(playlist->FramesOf(playlist->items[0]), 10);
        EXPECT_EQ(playlist->FramesOf(playlist->items[1]), 1) << "behind a table of angles";
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

TEST(PlaylistTest, RefusesWhatCouldLeadAstray) {
    EXPECT_FALSE(Decode(PlaylistSpec{.version = "0400"}));
    for (const char* const name : {"../..", "0000A", "0 000", "0000\xB2"}) {
        EXPECT_FALSE(Decode(PlaylistSpec{.items = {{name}}})) << name;
    }
    for (const std::size_t more : {0U, 1U}) {
        EXPECT_EQ(Decode({.items = std::vector<ItemSpec>(kMaxPlayItems + more)}).has_value(),
                  more == 0);
    }
    std::string codec = test::PlaylistBytes({});
    codec.replace(codec.find("M2TS"), 4, "M3TS");
    EXPECT_FALSE(DecodePlaylist(test::BytesOf(codec)));
}

TEST(PlaylistTest, ADamagedStreamTableLeavesItsItemWithoutRate) {
    for (const char* const length : {"\xFF\xFF", "\x00\x10"}) {
        std::string damaged = test::PlaylistBytes({});
        damaged.replace(damaged.find("M2TS") + 4 + 2 + 1 + 8 + 12, 2, length, 2);
        const auto playlist = DecodePlaylist(test::BytesOf(damaged));
        ASSERT_TRUE(playlist);
        EXPECT_EQ(playlist->FramesOf(playlist->items[0]), 0);
    }
}

TEST(PlaylistTest, DamagedMarksAndExtensionsAreLeftOut) {
    const std::string good = test::PlaylistBytes({.marks = {MarkSpec(), MarkSpec()}});
    std::string inHead = good; // an address within the head, of what would be a table of one mark
    inHead.replace(12, 4, test::Be(20, 4));
    inHead.replace(20, 20, test::Be(16, 4) + test::Be(1, 2) + test::Be(1, 2) + test::Zeros(12));
    EXPECT_TRUE(DecodePlaylist(test::BytesOf(inHead))->shots.empty());
    for (const std::size_t address : {12U, 16U}) {
        std::string damaged = good;
        damaged.replace(address, 4, "\xFF\xFF\xFF\xFE");
        const auto playlist = DecodePlaylist(test::BytesOf(damaged));
        ASSERT_TRUE(playlist);
        EXPECT_EQ(playlist->shots.size(), address == 12U ? 0U : 1U);
        EXPECT_TRUE(playlist->shots.empty() || !playlist->shots[0].date);
    }
}

constexpr std::uint16_t kPid = 0x1011;

StreamHead Decode(const std::string& stream, std::uint16_t pid = kPid) {
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
    ASSERT_TRUE(head.timecode && head.date && head.parameters);
    EXPECT_TRUE(head.timecode->dropFrame);
    EXPECT_EQ(head.timecode->timecode.hours, 10);
    EXPECT_EQ(head.date->day, 28);
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
    EXPECT_FALSE(Decode(test::Packets(test::Unit("\x67" + test::ParameterSet({})))).complete)
        << "before the picture begins";
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
TEST(SharedSamplesTest, RealAndAuthoredFilesAreRead) {
    const char* const named = std::getenv("NQP2_SHARED_SAMPLES");
    const std::filesystem::path samples =
        std::filesystem::path(named != nullptr ? named : NQP2_DEFAULT_SHARED_SAMPLES) / "avchd";
    if (!std::filesystem::is_directory(samples)) {
        GTEST_SKIP() << "no samples at " << samples << "; set NQP2_SHARED_SAMPLES";
    }
    const auto read = [&samples](const char* name) {
        std::ifstream file(samples / name, std::ios::binary);
        EXPECT_TRUE(file) << name;
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    // The frames of each item; those of the camera are what its ticks say at 30000/1001.
    const std::tuple<const char*, const char*> cases[] = {
        {"camera_4items.MPL", "00010 28305 00011 28290 00012 6750 00013 135 "},
        {"mpls-cases/00001_LinkPoint.mpls", ""},
        {"mpls-cases/00002_MultiAngle2.mpls", ""},
        {"mpls-cases/00003_Padding_Zero.mpls", ""},
        {"authored-disc/00000.mpls", ""}};
    for (const auto& [name, frames] : cases) {
        const auto playlist = DecodePlaylist(test::BytesOf(read(name)));
        ASSERT_TRUE(playlist && !playlist->items.empty()) << name;
        std::string items;
        for (const PlayItem& item : playlist->items) {
            items +=
                std::string(item.Name()) + ' ' + std::to_string(playlist->FramesOf(item)) + ' ';
            EXPECT_NE(RateOf(item.video.rateCode, false), nullptr) << name;
        }
        EXPECT_TRUE(items == frames || *frames == '\0') << items;
    }
    const auto camera = DecodePlaylist(test::BytesOf(read("camera_4items.MPL")));
    EXPECT_EQ(camera->items[2].shot, 0);
    EXPECT_EQ(camera->items[3].shot, 1);
    EXPECT_EQ(media::DateText(camera->shots[0].date.value()).Left(4), L"2021");
    EXPECT_EQ(camera->shots[0].timecode.value().timecode.hours, 17);
    EXPECT_FALSE(DecodePlaylist(test::BytesOf(read("mpls-cases/00001_Invalid.mpls"))));
    EXPECT_TRUE(DecodeClipInformation(test::BytesOf(read("authored-disc/00000.clpi"))));
}

} // namespace
} // namespace nqp2::avchd
