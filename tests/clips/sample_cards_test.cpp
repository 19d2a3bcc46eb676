// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/clips/card_test.h"
#include "tests/clips/clip_show.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

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

TEST_F(SharedSamplesTest, Dv25CardOf50Hz) {
    const std::string id = "060a2b340101010501010f2013000000798ae7c6a09e4b6fa5a11f6e2d08e5c0";
    ClipShow::Shown expected = {
        {"ClipName", "0001YQ"},
        {"UserClipName", id},
        {"GlobalClipID", id},
        {"GlobalClipGuid", "798ae7c6-a09e-4b6f-a5a1-1f6e2d08e5c0"},
        {"ClipIdDigit", "0"},
        {"CodecName", "DV25_420"},
        {"FrameRate", "50i"},
        {"AspectRatio", "4:3"},
        {"Duration", "10"},
        {"VideoStartByteOffset", "32768"},
        {"VideoDataSize", "1440000"},
        {"AudioStartByteOffset", "32768"},
        {"AudioDataSize", "38400"},
        {"AudioBitsPerSample", "16"},
        {"ProxyExt", ".MP4"},
        {"ProxyAudioChannels", "-1"},
        {"VideoPath", "VIDEO\\0001YQ.MXF"},
        {"IconPath", "ICON\\0001YQ.BMP"},
        {"XmlPath", "CLIP\\0001YQ.XML"},
        {"AudioPath", "AUDIO\\0001YQ00.MXF AUDIO\\0001YQ01.MXF - - - - - - "},
        {"EssenceMask", "7"},
    };
    const auto [named, scanned] = ReadCard("card-dv25pal", L"0001YQ");
    EXPECT_EQ(named, expected);
    expected["StartTimecode"] = "900000"; // 10:00:00:00
    expected["AudioPath"] = "AUDIO\\0001YQ00.MXF - - - - - - - ";
    expected["EssenceMask"] = "3";
    EXPECT_EQ(scanned, expected);
}

TEST_F(SharedSamplesTest, Dv50CardOf5994Hz) {
    auto [named, scanned] = ReadCard("card-dv50ntsc", L"00015M");
    EXPECT_EQ(named["EssenceMask"], "31");
    EXPECT_EQ(scanned["EssenceMask"], "15");
    EXPECT_EQ(scanned["DropFrame"], "0");
    EXPECT_EQ(scanned["StartTimecode"], "900000"); // 08:20:00:00 at 30

    DiskFormat format;
    const CString root = InterfaceRoot((m_samples / "card-dv50ntsc").string());
    EXPECT_EQ(m_parser.GetDiskFormat(root, format), 0);
    EXPECT_EQ(format.codeType, CT_DV50_50I) << "the codec alone decides";
    EXPECT_EQ(format.standard, VS_5994I);
    EXPECT_EQ(format.editUnit, L"1001/30000");
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
