// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_information.h"
#include "avchd/playlist.h"
#include "parser/NQP2Parser.h"
#include "platform/PathText.h"
#include "platform/TextBytes.h"
#include "tests/avchd/avchd_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

namespace nqp2::avchd {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

/// Real, authored and generated files that lie beside the sources, not in them.
class SharedSamplesTest : public testing::Test {
protected:
    void SetUp() override {
        const char* const named = std::getenv("NQP2_SHARED_SAMPLES");
        m_samples = named != nullptr ? named : NQP2_DEFAULT_SHARED_SAMPLES;
        m_samples /= "avchd";
        if (!fs::is_directory(m_samples)) {
            GTEST_SKIP() << "no samples at " << m_samples << "; set NQP2_SHARED_SAMPLES";
        }
    }
    [[nodiscard]] std::string Read(const fs::path& name) const {
        std::ifstream file(m_samples / name, std::ios::binary);
        EXPECT_TRUE(file) << name;
        return {std::istreambuf_iterator<char>(file), {}};
    }
    [[nodiscard]] std::optional<Playlist> Decode(const fs::path& name) const {
        return DecodePlaylist(test::BytesOf(Read(name)));
    }

    fs::path m_samples;
};

std::string Digits(const Playlist& playlist) {
    std::string names;
    for (const PlayItem& item : playlist.items) {
        names += std::string(item.Name()) + ' ' + std::to_string(playlist.FramesOf(item)) + ' ';
    }
    return names;
}

void CheckItems(const Playlist& playlist, const json& expected) {
    std::int32_t total = 0;
    ASSERT_EQ(playlist.items.size(), expected["items"].size());
    for (std::size_t i = 0; i < playlist.items.size(); ++i) {
        const PlayItem& item = playlist.items[i];
        const json& wanted = expected["items"][i];
        EXPECT_EQ(item.Name(), wanted["clip"]);
        EXPECT_EQ(item.in, wanted["in"]);
        EXPECT_EQ(item.out, wanted["out"]);
        EXPECT_EQ(item.video.rateCode, wanted["rate_code"]);
        EXPECT_EQ(playlist.Is25p(item), wanted["is_25p"]);
        EXPECT_EQ(playlist.FramesOf(item), wanted["frames_at_edit_rate"]);
        total = AddFrames(total, playlist.FramesOf(item));
    }
    EXPECT_EQ(total, expected["total_frames"]);
}

void CheckClip(const _tag_P2Clip& clip, const json& wanted, const fs::path& bdmv) {
    EXPECT_EQ(clip.Duration, wanted["frames_at_edit_rate"]);
    EXPECT_EQ(clip.ActivePixel, wanted["width"]);
    EXPECT_EQ(clip.ActiveLine, wanted["height"]);
    EXPECT_EQ(BytesFromText(clip.AspectRatio), wanted["aspect"]);
    EXPECT_EQ(clip.DropFrame == 1, wanted["drop_frame"]);
    EXPECT_EQ(BytesFromText(clip.GlobalClipID), wanted["global_clip_id"]);
    EXPECT_EQ(PosixPath(clip.VideoPath), bdmv / std::string(wanted["stream_file"]));
    const bool recorded = wanted["maker_id"] != 0;
    if (recorded) {
        EXPECT_EQ(BytesFromText(clip.StartDate), wanted["start_date"]);
        std::string digits = wanted["start_timecode"];
        const int seconds =
            (std::stoi(digits.substr(0, 2)) * 60 + std::stoi(digits.substr(3, 2))) * 60 +
            std::stoi(digits.substr(6, 2));
        const int minutes = seconds / 60;
        const int dropped = wanted["drop_frame"] ? 2 * (minutes - minutes / 10) : 0;
        EXPECT_EQ(clip.StartTimecode, seconds * 30 + std::stoi(digits.substr(9)) - dropped);
    }
}

TEST_F(SharedSamplesTest, GeneratedCardsGiveWhatWasPutIn) {
    for (const char* const name : {"generated/spanned", "generated/bd"}) {
        const json expected = json::parse(Read(fs::path(name) / "expected.json"));
        const fs::path bdmv = m_samples / name / std::string(expected["bdmv"]);
        CNQP2Parser parser;
        CArray<_tag_P2Clip> clips;
        ASSERT_EQ(parser.LoadAVCHDClip(InterfaceRoot((m_samples / name).string()), clips), 0);
        std::map<std::string, const _tag_P2Clip*> byName;
        for (const _tag_P2Clip& clip : clips) {
            byName[BytesFromText(clip.ClipName)] = &clip;
        }
        ASSERT_EQ(byName.size(), expected["clips"].size());
        for (const json& wanted : expected["clips"]) {
            SCOPED_TRACE(std::string(name) + ' ' + std::string(wanted["name"]));
            const auto found = byName.find(wanted["name"]);
            ASSERT_NE(found, byName.end());
            CheckClip(*found->second, wanted, bdmv);
        }
        for (const json& wanted : expected["playlists"]) {
            SCOPED_TRACE(std::string(name) + ' ' + std::string(wanted["file"]));
            const auto playlist = Decode(bdmv / std::string(wanted["file"]));
            ASSERT_TRUE(playlist);
            CheckItems(*playlist, wanted);
        }
    }
}

TEST_F(SharedSamplesTest, ARealCamerasSplitRecording) {
    const auto playlist = Decode("camera_4items.MPL");
    ASSERT_TRUE(playlist);
    // The frames that the items' ticks say at 30000/1001.
    EXPECT_EQ(Digits(*playlist), "00010 28305 00011 28290 00012 6750 00013 135 ");
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
        const auto playlist = Decode(fs::path("mpls-cases") / (std::string(name) + ".mpls"));
        ASSERT_TRUE(playlist) << name;
        ASSERT_FALSE(playlist->items.empty());
        for (const PlayItem& item : playlist->items) {
            EXPECT_NE(RateOf(item.video.rateCode, false), nullptr) << name;
        }
    }
    EXPECT_TRUE(Decode("authored-disc/00000.mpls"));
    EXPECT_TRUE(DecodeClipInformation(test::BytesOf(Read("authored-disc/00000.clpi"))));
}

TEST_F(SharedSamplesTest, DamagedFilesAreRefused) {
    const auto sound = Decode("generated/malformed/mpl-good.MPL");
    ASSERT_TRUE(sound);
    EXPECT_TRUE(sound->shots[0].clipId && sound->shots[1].clipId);
    for (const char* const name : {"address-wraps", "name-path", "short-header"}) {
        EXPECT_FALSE(Decode("generated/malformed/mpl-" + std::string(name) + ".MPL")) << name;
    }
    EXPECT_FALSE(
        DecodeClipInformation(test::BytesOf(Read("generated/malformed/cpi-no-video.CPI"))));
}

} // namespace
} // namespace nqp2::avchd
