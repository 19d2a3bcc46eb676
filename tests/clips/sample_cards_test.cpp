// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/clips/card_test.h"
#include "tests/clips/clip_show.h"

#include <cstdlib>
#include <filesystem>

namespace nqp2::clips {
namespace {

namespace fs = std::filesystem;

/// Real and independently written metadata that lies beside the sources, not in them.
class SharedSamplesTest : public CardTest {
protected:
    SharedSamplesTest() {
        const char* const named = std::getenv("NQP2_SHARED_SAMPLES");
        m_samples = fs::path(named != nullptr ? named : NQP2_DEFAULT_SHARED_SAMPLES) / "p2";
    }
    fs::path m_samples;
};

TEST_F(SharedSamplesTest, MetadataOfOtherWritersIsReadByBothReaders) {
    if (!fs::is_directory(m_samples)) {
        GTEST_SKIP() << "no samples at " << m_samples << "; set NQP2_SHARED_SAMPLES";
    }
    struct Row {
        const char* card;
        const wchar_t* name;
        const char* fields;
        const char* named;
        const char* scanned;
    };
    const Row rows[] = {
        {"card-dv25pal", L"0001YQ", "GlobalClipGuid CodecName FrameRate AspectRatio VideoDataSize",
         "798ae7c6-a09e-4b6f-a5a1-1f6e2d08e5c0|DV25_420|50i|4:3|1440000",
         "798ae7c6-a09e-4b6f-a5a1-1f6e2d08e5c0|DV25_420|50i|4:3|1440000"},
        {"card-dv25pal", L"0001YQ", "AudioDataSize IconPath AudioPath StartTimecode",
         "38400|ICON\\0001YQ.BMP|AUDIO\\0001YQ00.MXF AUDIO\\0001YQ01.MXF - - - - - - |",
         "38400|ICON\\0001YQ.BMP|AUDIO\\0001YQ00.MXF - - - - - - - |900000"}, // 10:00:00:00
        {"card-dv50ntsc", L"00015M", "EssenceMask DropFrame StartTimecode", "31||", "15|0|900000"},
    };
    for (const auto& [card, name, fields, shown, scanned] : rows) {
        const CString root = InterfaceRoot((m_samples / card).string());
        CArray<_tag_P2Clip> clips;
        _tag_P2Clip named;
        EXPECT_EQ(m_parser.LoadClipEx(root, clips, 1, m_report), 0);
        EXPECT_EQ(m_parser.LoadClipInfo(root, name, named), 0);
        ASSERT_EQ(clips.GetSize() - m_report.skipped.GetSize(), 1);
        EXPECT_EQ(ClipShow(named, root + L"\\CONTENTS\\").Joined(fields), shown);
        EXPECT_EQ(ClipShow(clips[0], root + L"\\CONTENTS\\").Joined(fields), scanned);
    }
}

} // namespace
} // namespace nqp2::clips
