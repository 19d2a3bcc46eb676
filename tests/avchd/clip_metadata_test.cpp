// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/ClipMetadata.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"
#include "tests/avchd/avchd_bytes.h"
#include "tests/support/temp_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nqp2::avchd {
namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;

class AvchdMetadataTest : public testing::Test {
protected:
    void AddClip(const test::ClipSpec& spec) const {
        m_folder.Write("AVCHD/BDMV/CLIPINF/00001.CPI", test::ClipBytes(spec));
    }
    void AddPlaylist(const std::string& name, const test::PlaylistSpec& spec) const {
        m_folder.Write("AVCHD/BDMV/PLAYLIST/" + name + ".MPL", test::PlaylistBytes(spec));
    }
    MetadataStatus Read(const wchar_t* name) {
        _tag_P2Clip clip;
        clip.SourceKind = 1;
        clip.ClipName = name;
        CString problem;
        return ClipMetadataReader(m_root).Read(clip, m_metadata, problem);
    }
    Texts Memos() const {
        Texts memos;
        for (const MemoMetadata& each : m_metadata.memos) {
            memos.push_back(std::to_string(each.offset) + " " + BytesFromText(each.text));
        }
        return memos;
    }

    test::TempFolder m_folder;
    const CString m_root = InterfaceRoot(m_folder.Path());
    ClipMetadata m_metadata;
};

TEST_F(AvchdMetadataTest, ClipInformationTellsTracksAndMaker) {
    AddClip({.audio = {3, 6, 9}, .clipId = test::ClipIdBytes()});
    ASSERT_EQ(Read(L"00001"), MetadataStatus::Read);
    Texts tracks;
    for (const TrackMetadata& each : m_metadata.tracks) {
        tracks.push_back(BytesFromText(each.kind) + "|" + BytesFromText(each.codec) + "|" +
                         BytesFromText(each.language) + "|" + BytesFromText(each.format));
    }
    EXPECT_THAT(tracks,
                ElementsAre("video|H.264||1920x1080 50i", "audio|LPCM|und|2 channels, 48 kHz",
                            "audio|LPCM|und|6 channels, 48 kHz", "audio|LPCM|und|48 kHz"));
    EXPECT_EQ(BytesFromText(m_metadata.device.manufacturer + m_metadata.device.modelName),
              "Sony0x3001");
    EXPECT_EQ(Read(L"00002"), MetadataStatus::NoFile);
    m_folder.Write("AVCHD/BDMV/CLIPINF/00002.CPI", "HDMV");
    EXPECT_EQ(Read(L"00002"), MetadataStatus::Unreadable);
    EXPECT_TRUE(m_metadata.tracks.IsEmpty());
}

TEST_F(AvchdMetadataTest, MarksAreMemosAtTheFramesOfTheClipThatTheyFallIn) {
    constexpr std::uint32_t kLate = 0xFFFFFFFF - 1799; // one frame before the clock starts anew
    AddClip({.stretches = {{38700, 38700 + 9000}, {kLate, 18000}}});
    const std::uint32_t outside = 38700 + 9000;
    test::PlaylistSpec spec;
    spec.marks = {{.time = 38700, .name = "first", .zone = 0x04},
                  {.time = 38700 + 1800, .date = "\xFF" + test::Zeros(6), .name = "second"},
                  {.time = 1800, .isEntry = false, .name = "behind"},
                  {.time = outside},
                  {.item = 7, .time = 38700}};
    spec.items = {{.name = "00001"}};
    m_folder.Write("AVCHD/BDMV/PLAYLIST/00002.MPL", "MPLS");
    AddPlaylist("00000", spec);
    AddPlaylist("00001", spec);
    ASSERT_EQ(Read(L"00001"), MetadataStatus::Read);
    EXPECT_THAT(Memos(), ElementsAre("0 first", "1 second", "7 behind"));
    EXPECT_EQ(BytesFromText(m_metadata.shoot.startDate), "2011-01-28T13:45:07+02:00");
}

/// What no playlist tells is in the first picture's packs; a mark counts before them.
TEST_F(AvchdMetadataTest, StreamsTellDateZoneAndMaker) {
    const struct {
        unsigned char zone;
        bool hasMark;
        const char* date;
    } kRows[] = {{0x12, false, "2011-01-28T13:45:07+09:00"},
                 {0x2A, false, "2011-01-28T13:45:07-05:00"},
                 {0x4B, false, "2011-01-28T13:45:07+05:30"},
                 {0x1E, false, "2011-01-28T13:45:07"},
                 {0x2A, true, "2011-01-28T13:45:07+02:00"}};
    for (const auto& row : kRows) {
        AddClip({.maker = 0});
        std::string packs = test::DatePacks("\x44\x01\x01\x01");
        packs[packs.find("\x18\x12\x20") + 1] = static_cast<char>(row.zone);
        m_folder.Write("AVCHD/BDMV/STREAM/00001.MTS", test::StreamBytes({}, packs));
        test::PlaylistSpec spec;
        spec.items = {{.name = "00001"}};
        spec.marks = {{.time = row.hasMark ? 38700U : 38701U, .zone = 0x04}};
        AddPlaylist("00000", spec);
        ASSERT_EQ(Read(L"00001"), MetadataStatus::Read);
        EXPECT_EQ(BytesFromText(m_metadata.shoot.startDate), row.date);
        EXPECT_EQ(BytesFromText(m_metadata.device.manufacturer + m_metadata.device.modelName),
                  "Sony0x2001");
    }
}

TEST_F(AvchdMetadataTest, ClipInformationPromisesTheStream) {
    const struct {
        std::uint32_t packets;
        std::string stream;
        ClipFileState state;
    } kRows[] = {{2, std::string(384, 'x'), ClipFileState::Present},
                 {0, "x", ClipFileState::Present},
                 {2, std::string(383, 'x'), ClipFileState::Short},
                 {0, "", ClipFileState::Empty}};
    _tag_P2Clip clip;
    clip.SourceKind = 1;
    clip.ClipName = L"00001";
    clip.VideoPath = m_root + L"\\AVCHD\\BDMV\\STREAM\\00001.MTS";
    CArray<ClipFile> files;
    for (const auto& row : kRows) {
        AddClip({.packets = row.packets});
        m_folder.Write("AVCHD/BDMV/STREAM/00001.mts", row.stream);
        ASSERT_TRUE(ClipFileReader(m_root).Read(clip, files));
        ASSERT_EQ(files.GetSize(), 2);
        EXPECT_EQ(files[0].state, row.state);
        EXPECT_EQ(files[0].promisedSize, row.packets * 192U);
        EXPECT_EQ(IsWhole(files), row.state == ClipFileState::Present);
    }
    std::filesystem::remove_all(m_folder.Path("AVCHD/BDMV/STREAM"));
    ASSERT_TRUE(ClipFileReader(m_root).Read(clip, files));
    EXPECT_EQ(files[0].state, ClipFileState::Missing);
}

} // namespace
} // namespace nqp2::avchd
