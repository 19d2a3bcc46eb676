// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/clips/card_test.h"
#include "tests/clips/clip_show.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <tuple>

namespace nqp2::clips {
namespace {

using testing::ElementsAre;

/// Real and independently written metadata that lies beside the sources, not in them.
class SharedSamplesTest : public CardTest {
protected:
    void SetUp() override {
        const char* const named = std::getenv("NQP2_SHARED_SAMPLES");
        m_samples = named != nullptr ? named : NQP2_DEFAULT_SHARED_SAMPLES;
        m_samples /= "p2";
        if (!std::filesystem::is_directory(m_samples)) {
            GTEST_SKIP() << "no samples at " << m_samples << "; set NQP2_SHARED_SAMPLES";
        }
    }
    void AddFragment(const std::string& name) const {
        const std::filesystem::path path = m_samples / "fragments" / name;
        std::ifstream file(path, std::ios::binary);
        ASSERT_TRUE(file) << path;
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        m_card.AddFile("CLIP/" + path.stem().string() + ".XML", bytes);
    }
    /// The one clip of a sample card, read by both readers.
    std::pair<ClipShow::Shown, ClipShow::Shown> ReadCard(const std::string& card,
                                                         const wchar_t* name) {
        const CString root = InterfaceRoot((m_samples / card).string());
        const CString contents = root + L"\\CONTENTS\\";
        CArray<_tag_P2Clip> clips;
        _tag_P2Clip named;
        EXPECT_EQ(m_parser.LoadClipEx(root, clips, 1, m_report), 0);
        EXPECT_EQ(m_parser.LoadClipInfo(root, name, named), 0);
        EXPECT_EQ(clips.GetSize(), 1);
        EXPECT_TRUE(m_report.skipped.IsEmpty());
        const _tag_P2Clip scanned = clips.IsEmpty() ? _tag_P2Clip() : clips[0];
        return {ClipShow(named, contents).Fields(), ClipShow(scanned, contents).Fields()};
    }

    std::filesystem::path m_samples;
};

TEST_F(SharedSamplesTest, BothReadersReadCardsOfOtherWriters) {
    auto [named, scanned] = ReadCard("card-dv25pal", L"0001YQ");
    EXPECT_EQ(named["GlobalClipGuid"], "798ae7c6-a09e-4b6f-a5a1-1f6e2d08e5c0");
    EXPECT_EQ(named["CodecName"] + named["FrameRate"] + named["AspectRatio"], "DV25_42050i4:3");
    EXPECT_EQ(named["VideoDataSize"] + " " + named["AudioDataSize"], "1440000 38400");
    EXPECT_EQ(named["AudioPath"], "AUDIO\\0001YQ00.MXF AUDIO\\0001YQ01.MXF - - - - - - ");
    EXPECT_EQ(named["IconPath"], "ICON\\0001YQ.BMP");
    named["StartTimecode"] = "900000"; // 10:00:00:00
    named["AudioPath"] = "AUDIO\\0001YQ00.MXF - - - - - - - ";
    named["EssenceMask"] = "3";
    EXPECT_EQ(scanned, named);
    std::tie(named, scanned) = ReadCard("card-dv50ntsc", L"00015M");
    EXPECT_EQ(named["EssenceMask"] + " " + scanned["EssenceMask"], "31 15");
    EXPECT_EQ(scanned["DropFrame"] + " " + scanned["StartTimecode"], "0 900000"); // at 30
}

TEST_F(SharedSamplesTest, AForeignNamespaceIsReadAndAForeignRootIsRemarked) {
    AddFragment("eva1_wrong_namespace.XML");
    AddFragment("../neighbour/DC-S5_ClipMain.xml");
    EXPECT_THAT(ScannedNames(),
                testing::UnorderedElementsAre("eva1_wrong_namespace", "DC-S5_ClipMain"));
    EXPECT_THAT(Remarks(),
                ElementsAre(Remark("CLIP\\DC-S5_ClipMain.XML", SkipReason::NoClipContent)));
}

} // namespace
} // namespace nqp2::clips
