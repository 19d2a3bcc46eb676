// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/card.h"
#include "avchd/limits.h"
#include "avchd/video_format.h"
#include "NQP2ParserU/DebugOutput.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/PathText.h"
#include "platform/unicode.h"
#include "tests/avchd/avchd_bytes.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <utime.h>

namespace nqp2::avchd {
namespace {

using test::ClipSpec;
using test::FaultyFileSystem;
using test::Operation;
using test::SetSpec;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr std::time_t kFileTime = 1'300'000'000;

/// A card in a folder of its own, read with and without the parser class.
class ClipScanTest : public testing::Test {
protected:
    void Add(const std::string& name, const std::string& bytes = {}) {
        const std::string path = m_folder.Write(name, bytes);
        const utimbuf times = {kFileTime, kFileTime};
        ASSERT_EQ(utime(path.c_str(), &times), 0);
    }
    void AddClip(const std::string& name, const ClipSpec& spec = {}) {
        Add("AVCHD/BDMV/CLIPINF/" + name + ".CPI", test::ClipBytes(spec));
    }
    void AddStream(const std::string& name, const std::string& bytes) {
        Add("AVCHD/BDMV/STREAM/" + name + ".MTS", bytes);
    }
    void AddPlaylist(const std::string& name, const test::PlaylistSpec& spec) {
        Add("AVCHD/BDMV/PLAYLIST/" + name + ".MPL", test::PlaylistBytes(spec));
    }

    /// Scans and returns the names; what the worker is asked for is answered by m_worker.
    std::vector<std::string> Scan(bool expected = true) {
        m_clips.RemoveAll();
        m_omitted.clear();
        ScanReport report;
        EXPECT_EQ(ScanClips(
                      Root(),
                      [this](const CString& path, NQP2BaseClipInfo& info) {
                          return m_worker(path, info);
                      },
                      m_clips, report),
                  expected);
        for (const SkippedFile& file : report.skipped) {
            m_omitted.push_back(Relative(file.path));
        }
        std::vector<std::string> names;
        for (const _tag_P2Clip& clip : m_clips) {
            names.push_back(platform::Utf8FromText(clip.ClipName.View()));
        }
        return names;
    }
    _tag_P2Clip ScanOne() {
        EXPECT_EQ(Scan().size(), 1U);
        return m_clips.IsEmpty() ? _tag_P2Clip() : m_clips[0];
    }
    [[nodiscard]] CString Root() const { return InterfaceRoot(m_folder.Path()); }
    [[nodiscard]] std::string Relative(const CString& path) const {
        return platform::Utf8FromText(path.Mid(Root().GetLength() + 1).View());
    }

    test::TempFolder m_folder;
    CArray<_tag_P2Clip> m_clips;
    std::vector<std::string> m_omitted;
    std::function<int(const CString&, NQP2BaseClipInfo&)> m_worker =
        [](const CString&, NQP2BaseClipInfo&) { return 0; };
};

TEST_F(ClipScanTest, FillsTheRecordFromAllFilesOfTheClip) {
    ClipSpec spec;
    spec.clipId = test::ClipIdBytes();
    AddClip("00012", spec);
    AddStream("00012", test::StreamBytes(SetSpec{100, 90, 34, true, 2, 14},
                                         test::DatePacks("\x10\x03\x02\x01")));
    test::PlaylistSpec playlist;
    playlist.items[0].name = "00012";
    playlist.marks = {test::MarkSpec{0, 38700, kPulldown22}};
    AddPlaylist("00000", playlist);

    const _tag_P2Clip clip = ScanOne();
    EXPECT_EQ(clip.SourceKind, 1);
    EXPECT_EQ(clip.ClipName, L"00012");
    EXPECT_EQ(clip.CodecName, L"AVCHD_1440_1080_25p");
    EXPECT_EQ(CodeTypeFromCodec(clip.CodecName, clip.FrameRate, 0, L""), CT_AVCHD_1440_1080_25P);
    EXPECT_EQ(clip.FrameRate, L"25p");
    EXPECT_EQ(clip.AspectRatio, L"16:9");
    EXPECT_EQ(clip.ActivePixel, 1440);
    EXPECT_EQ(clip.ActiveLine, 1080);
    EXPECT_EQ(clip.BitDepth, 8);
    EXPECT_EQ(clip.Duration, 10);
    EXPECT_EQ(clip.StartTimecode, ((1 * 60 + 2) * 60 + 3) * 25 + 10) << "from the stream";
    EXPECT_EQ(clip.DropFrame, 0);
    EXPECT_EQ(clip.StartDate, L"2011-01-28T13:45:07") << "from the playlist";
    EXPECT_EQ(clip.GlobalClipID,
              L"060A2B340000000000000000000000000102030405060708090A0B0C0D0E0F10");
    EXPECT_NE(clip.GlobalClipGuid, GUID());
    EXPECT_EQ(Relative(clip.VideoPath), "AVCHD\\BDMV\\STREAM\\00012.MTS");
    EXPECT_EQ(clip.AudioPath[1], clip.VideoPath);
    EXPECT_EQ(clip.EssenceMask, 0b111U);
}

TEST_F(ClipScanTest, AClipThatContinuesAShotHasItsPulldownButNotItsMoment) {
    AddClip("00001");
    AddClip("00002");
    test::PlaylistSpec playlist;
    playlist.items = {test::ItemSpec{"00001"}, test::ItemSpec{"00002"}};
    playlist.items[1].connection = 6;
    playlist.marks = {test::MarkSpec{0, 38700, kPulldown22}};
    AddPlaylist("00000", playlist);
    Scan();
    for (const _tag_P2Clip& clip : m_clips) {
        EXPECT_EQ(clip.CodecName, L"AVCHD_1920_1080_25p");
        EXPECT_EQ(clip.StartDate == L"2011-01-28T13:45:07", clip.ClipName == L"00001");
    }
}

TEST_F(ClipScanTest, RecordingsThatTheCameraSplitAreTakes) {
    for (const char* const name : {"00001", "00002", "00003", "00005", "00008"}) {
        AddClip(name);
    }
    const auto add = [this](const char* playlist, const std::vector<std::string>& names) {
        test::PlaylistSpec spec;
        spec.items.clear();
        for (const std::string& name : names) {
            spec.items.push_back({name.substr(1)});
            spec.items.back().connection = name[0] == '+' ? 6 : 1;
        }
        AddPlaylist(playlist, spec);
    };
    add("00000", {"+00001", "+00002", "-00003", "-00004", "+00005", "+00006", "-00008", "+00008"});
    add("00001", {"-00001", "+00002", "+00001", "-00009", "+00010", "-00002", "+00007"});
    CNQP2Parser parser;
    ScanReport report;
    parser.LoadAVCHDClip(Root(), m_clips, report);
    const auto told = [](const Take& take) {
        std::string text = take.complete ? "" : "incomplete ";
        for (const CString& name : take.segments) {
            text += platform::Utf8FromText(name.View());
        }
        for (const MissingSegment& segment : take.missing) {
            text += '!' + platform::Utf8FromText(segment.clipName.View());
        }
        return text;
    };
    ASSERT_EQ(report.takes.GetSize(), 2) << "neither clips that are gone nor circles";
    std::vector<std::string> takes = {told(report.takes[0]), told(report.takes[1])};
    EXPECT_THAT(
        takes, UnorderedElementsAre("incomplete 0000100002!00007", "incomplete 00005!00004!00006"));
}

TEST_F(ClipScanTest, AClockThatStartsAnewAndDoubledFramesAreCountedRight) {
    // Rate code, bytes of the timecode; drop frame, start, frames of the wrapping clip.
    constexpr std::tuple<unsigned, const char*, int, int, int> kCases[] = {
        {3, "\x10\x01\x01\x01", 0, 3661 * 25 + 10, 49},
        {6, "\x10\x01\x01\x01", 0, 3661 * 50 + 20, 98},
        {7, "\x10\x01\x01\x01", 0, 3661 * 60 + 20, 117},
        {7, "\x42\x01\x01\x01", 1, 3661 * 60 + 4 - 4 * (61 - 6), 117},
        {2, "\x10\x01\x01\x01", 0, 3661 * 24 + 10, 47},
    };
    for (const auto& [rate, timecode, drop, start, frames] : kCases) {
        ClipSpec spec;
        spec.stretches = {{4294895265, 16169}};
        spec.format = 5;
        spec.rate = rate;
        Add("BDMV/CLIPINF/00001.clpi", test::ClipBytes(spec));
        test::PlaylistSpec playlist;
        playlist.items = {{"00001", 4294895265, 16169, 1, 5, rate}, {"00001", 1000, 16169}};
        playlist.marks = {{1, 1000, 0, test::Zeros(7)}, {0, 4294895265, 0, test::kDate, timecode}};
        Add("BDMV/PLAYLIST/00000.mpls", test::PlaylistBytes(playlist));
        const _tag_P2Clip clip = ScanOne();
        EXPECT_EQ(clip.Duration, frames);
        EXPECT_EQ(clip.StartTimecode, start) << rate;
        EXPECT_EQ(clip.DropFrame, drop);
        EXPECT_EQ(clip.StartDate, L"2011-01-28T13:45:07") << "the earlier mark, though larger";
    }
}

TEST_F(ClipScanTest, TakesMomentsFromTheClipThenThePlaylistThenTheStreamThenTheFile) {
    const auto scanned = [this](const char* clipTimecode, std::uint32_t markTime, bool inStream) {
        ClipSpec spec;
        spec.rate = 4;
        spec.clipId = test::ClipIdBytes();
        spec.timecode = clipTimecode;
        AddClip("00000", spec);
        AddStream("00000", test::StreamBytes({}, inStream ? test::DatePacks("\x44\x01\x01\x01")
                                                          : std::string()));
        test::PlaylistSpec playlist;
        playlist.marks = {
            test::MarkSpec{0, markTime, 0, "\x20\x24\x05\x10\x08\x01\x02", "\x03\x01\x01\x01"}};
        AddPlaylist("00000", playlist);
        return ScanOne();
    };
    constexpr std::int32_t kOne = ((1 * 60 + 1) * 60 + 1) * 30;
    constexpr std::int32_t kDropped = 2 * (61 - 6);
    const char* const none = test::kNoTimecode.c_str();
    _tag_P2Clip clip = scanned("\x02\x01\x01\x01", 38700, true);
    EXPECT_EQ(clip.StartTimecode, kOne + 2);
    EXPECT_EQ(clip.StartDate, L"2024-05-10T08:01:02");
    EXPECT_NEAR(clip.ShootStartTime.GetDays(), 45422.334, 0.001);
    clip = scanned(none, 38700, true);
    EXPECT_EQ(clip.StartTimecode, kOne + 3);
    EXPECT_EQ(clip.DropFrame, 0);
    clip = scanned(none, 40000, true);
    EXPECT_EQ(clip.StartTimecode, kOne - kDropped + 4) << "a mark further on tells nothing";
    EXPECT_EQ(clip.DropFrame, 1);
    EXPECT_EQ(clip.StartDate, L"2011-01-28T13:45:07");
    clip = scanned(none, 40000, false);
    EXPECT_EQ(clip.StartTimecode, 0);
    EXPECT_EQ(clip.DropFrame, 1) << "the record's default where the rate can drop numbers";
    EXPECT_THAT(platform::Utf8FromText(clip.StartDate.View()), testing::HasSubstr("2011-03-13T"));
    EXPECT_EQ(clip.ShootStartTime.GetStatus(), COleDateTime::valid);
}

TEST_F(ClipScanTest, RootsThatAreNoCard) {
    Add("CONTENTS/CLIP/0001AA.XML");
    m_folder.MakeFolder("PANA_GRP/003");
    m_folder.MakeFolder("BDMV/PLAYLIST");
    EXPECT_THAT(Scan(false), IsEmpty());
    EXPECT_EQ(CNQP2Parser().LoadAVCHDClip(L"", m_clips), 1);
    m_folder.MakeFolder("SONY");
    EXPECT_THAT(Scan(), IsEmpty()) << "a folder alone is enough to scan nothing";
}

TEST_F(ClipScanTest, AvchdWinsOverTheDiscFolderEvenWhenEmpty) {
    Add("BDMV/CLIPINF/00001.CPI", test::ClipBytes({}));
    EXPECT_THAT(Scan(), ElementsAre("00001"));
    m_folder.MakeFolder("AVCHD/BDMV");
    EXPECT_THAT(Scan(), ElementsAre("00001"));
    m_folder.MakeFolder("AVCHD/BDMV/CLIPINF");
    EXPECT_THAT(Scan(), IsEmpty());
}

TEST_F(ClipScanTest, StagesDecideTheOrder) {
    Add("bdmv/clipinf/00003.CLPI", test::ClipBytes({}));
    Add("bdmv/clipinf/00004.cpi", test::ClipBytes({}));
    Add("bdmv/Stream/00003.M2TS");
    Add("PANA_GRP/001RBQAM/P1.MOV");
    Add("PANA_GRP/001YDJAM/NEVER.MOV");
    Add("SONY/DVF/100DVF/D1.avi");
    Add("SONY/DVF/100DVF/D1.MOV");
    m_worker = [](const CString&, NQP2BaseClipInfo&) { return 1; };
    EXPECT_THAT(Scan(), ElementsAre("00004", "D1", "P1", "00003"));
    EXPECT_EQ(Relative(m_clips[3].VideoPath), "BDMV\\STREAM\\00003.m2ts") << "letter case aside";
    std::filesystem::remove_all(m_folder.Path("PANA_GRP/001RBQAM"));
    EXPECT_THAT(Scan(), ElementsAre("00004", "D1", "NEVER", "00003"));
}

TEST_F(ClipScanTest, CameraFilesKeepTheirFilesTimeAndTakeTheRestFromTheWorker) {
    Add("SONY/DVF/100DVF/DV01.AVI");
    CString asked;
    m_worker = [&](const CString& path, NQP2BaseClipInfo& info) {
        asked = path;
        EXPECT_EQ(info.clipText1, L"DV01");
        EXPECT_THAT(platform::Utf8FromText(info.clipText2.View()), testing::StartsWith("2011-03"));
        info.clipText2 = L"1999-01-01T00:00:00";
        info.codec = L"dvsd";
        info.text1 = L"50i";
        info.value2 = 0x500000003;
        info.value3 = -1;
        info.value4 = 576 << 16 | 720;
        info.clipText3 = L"Ferry";
        for (int i = 0; i < 9; ++i) {
            info.texts.Add(i == 1 ? L"" : L"sound");
        }
        return 1;
    };
    const _tag_P2Clip clip = ScanOne();
    EXPECT_EQ(Relative(asked), "SONY\\DVF\\100DVF\\DV01.AVI");
    EXPECT_EQ(clip.StartDate, L"1999-01-01T00:00:00");
    EXPECT_NEAR(clip.ShootStartTime.GetDays(), 40615.3, 1.0);
    EXPECT_EQ(clip.CodecName, L"DV25_420");
    EXPECT_EQ(clip.Duration, 3);
    EXPECT_EQ(clip.StartTimecode, -1);
    EXPECT_EQ(clip.ActivePixel, 720);
    EXPECT_EQ(clip.ActiveLine, 576);
    EXPECT_EQ(clip.UserClipName, L"Ferry");
    EXPECT_EQ(clip.DropFrame, 0);
    EXPECT_EQ(clip.VideoPath, asked);
    EXPECT_EQ(clip.EssenceMask, 0b111111011U);
    EXPECT_EQ(clip.SourceKind, 1);
    for (const int refused : {0, -1}) {
        m_worker = [refused](const CString&, NQP2BaseClipInfo&) { return refused; };
        EXPECT_THAT(Scan(), IsEmpty());
        EXPECT_THAT(m_omitted, ElementsAre("SONY\\DVF\\100DVF\\DV01.AVI"));
    }
}

TEST_F(ClipScanTest, WhatCannotBeReadIsLeftOutAndItsSiblingsAreRead) {
    AddClip("00001");
    m_folder.MakeFolder("AVCHD/BDMV/CLIPINF/00000.CPI");
    Add("AVCHD/BDMV/CLIPINF/00002.CPI", test::ClipBytes({}).substr(0, 100));
    Add("AVCHD/BDMV/CLIPINF/00003.CPI");
    AddClip("00004");
    AddClip("00005");
    std::filesystem::resize_file(m_folder.Path("AVCHD/BDMV/CLIPINF/00005.CPI"), 1 << 20);
    AddClip("00006");
    std::filesystem::resize_file(m_folder.Path("AVCHD/BDMV/CLIPINF/00006.CPI"),
                                 kMaxClipInformationFile + 1);
    AddClip("a\\b");
    std::filesystem::create_symlink("/dev/zero", m_folder.Path("AVCHD/BDMV/CLIPINF/00007.CPI"));
    EXPECT_THAT(Scan(), UnorderedElementsAre("00001", "00004", "00005"));
    EXPECT_THAT(m_omitted, UnorderedElementsAre(
                               "AVCHD\\BDMV\\CLIPINF\\00002.CPI", "AVCHD\\BDMV\\CLIPINF\\00003.CPI",
                               "AVCHD\\BDMV\\CLIPINF\\00006.CPI", "AVCHD\\BDMV\\CLIPINF\\00007.CPI",
                               "AVCHD\\BDMV\\CLIPINF\\"))
        << "the last for the name with a backslash";
}

TEST_F(ClipScanTest, AFolderThatCannotBeListedIsNamedAndAFileWithoutStatusIsRead) {
    AddClip("00000");
    FaultyFileSystem files;
    const platform::ScopedFileSystem inUse(files);
    files.Fail({.operation = Operation::Stat, .pathPart = "00000.CPI"});
    const _tag_P2Clip clip = ScanOne();
    EXPECT_EQ(clip.StartDate, L"Unknow");
    EXPECT_EQ(clip.ShootStartTime.GetStatus(), COleDateTime::invalid);
    Add("SONY/DVF/100DVF/DV01.AVI");
    files.Fail(
        {.error = platform::IoError::Denied, .operation = Operation::List, .pathPart = "CLIPINF"});
    EXPECT_THAT(Scan(), IsEmpty());
    EXPECT_THAT(m_omitted, ElementsAre("AVCHD\\BDMV\\CLIPINF\\", "SONY\\DVF\\100DVF\\DV01.AVI"));
}

TEST_F(ClipScanTest, StreamsAreReadOnlyAsFarAsNeeded) {
    AddClip("00000");
    AddStream("00000", test::StreamBytes({}));
    std::filesystem::resize_file(m_folder.Path("AVCHD/BDMV/STREAM/00000.MTS"),
                                 std::uint64_t{8} << 30U);
    FaultyFileSystem files;
    const platform::ScopedFileSystem inUse(files);
    EXPECT_EQ(ScanOne().ActiveLine, 1080);
    EXPECT_EQ(files.Calls(Operation::ReadBlock), 1U) << "32 KB";

    AddStream("00000", "");
    std::filesystem::resize_file(m_folder.Path("AVCHD/BDMV/STREAM/00000.MTS"),
                                 std::uint64_t{8} << 30U);
    const _tag_P2Clip clip = ScanOne();
    EXPECT_EQ(clip.ActivePixel, 1920) << "as the clip information says";
    EXPECT_EQ(clip.CodecName, L"AVCHD_1920_1080_50i");
    EXPECT_EQ(files.Calls(Operation::ReadBlock), 1U + 3U) << "2 MB in all";

    const std::string late = test::Zeros(192 * 1000) + test::StreamBytes({100, 90});
    AddStream("00000", late);
    EXPECT_EQ(ScanOne().ActivePixel, 1440) << "behind the first step";
}

TEST_F(ClipScanTest, PlaylistsAreReadOncePerScan) {
    for (const char* const name : {"00000", "00001", "00002"}) {
        AddClip(name);
    }
    AddStream("00001", test::StreamBytes({}));
    AddPlaylist("00000", {});
    AddPlaylist("00001", {});
    Add("AVCHD/BDMV/PLAYLIST/00002.MPL", "no playlist");
    FaultyFileSystem files;
    std::vector<std::string> listed;
    files.SetHook([&](Operation operation, const std::string& path) {
        if (operation == Operation::List && path.find("BDMV") != std::string::npos) {
            listed.push_back(
                std::filesystem::path(path + "/.").lexically_normal().parent_path().filename());
        }
    });
    const platform::ScopedFileSystem inUse(files);
    EXPECT_EQ(Scan().size(), 3U);
    EXPECT_EQ(files.Calls(Operation::Read), 3U + 3U);
    files.SetHook([](Operation operation, const std::string& path) {
        if (operation == Operation::Read && path.ends_with("00000.MPL")) {
            throw std::bad_alloc();
        }
    });
    EXPECT_EQ(Scan().size(), 3U);
    EXPECT_EQ(m_clips[0].StartDate.GetLength(), 19);
    EXPECT_THAT(listed, ElementsAre("CLIPINF", "STREAM", "PLAYLIST"));
}

TEST_F(ClipScanTest, ReadingAheadOnASlowMediumChangesNothing) {
    for (int i = 0; i < 30; ++i) {
        const std::string name = "000" + std::to_string(10 + i);
        AddClip(name);
        if (i % 3 != 0) { // every third clip has no stream
            AddStream(name, test::StreamBytes({100, i % 2 == 0 ? 90U : 120U}));
        }
    }
    const auto rasters = [this] {
        std::map<std::string, int> pixels;
        for (const std::string& name : Scan()) {
            pixels[name] = m_clips[static_cast<std::int64_t>(pixels.size())].ActivePixel;
        }
        return pixels;
    };
    const auto expected = rasters();
    FaultyFileSystem slow;
    slow.SetDelay(std::chrono::microseconds(300));
    const platform::ScopedFileSystem inUse(slow);
    EXPECT_EQ(rasters(), expected);
    EXPECT_EQ(expected.size(), 30U);
}

TEST_F(ClipScanTest, TheParserReadsWithoutInit) {
    AddClip("00001");
    Add("AVCHD/BDMV/CLIPINF/00002.clpi", test::ClipBytes({}));
    Add("AVCHD/BDMV/STREAM/00002.m2ts");
    Add("PANA_GRP/001YDJAM/P1.MOV");
    Add("AVCHD/BDMV/CLIPINF/._00001.CPI");
    CNQP2Parser parser;
    ScanReport report;
    std::vector<std::string> lines;
    SetDebugOutput([&](const CString& text) {
        const std::string line = platform::Utf8FromText(text.View());
        lines.push_back(line.substr(0, line.find_last_of(' ')));
    });
    EXPECT_EQ(parser.LoadAVCHDClip(Root(), m_clips, report), 0);
    SetDebugOutput({});
    EXPECT_THAT(lines,
                ElementsAre("\n===Call NQGetAVCHDCPIMetaData Cost",
                            "\n===Call NQGetAVCHDCPIMetaData Cost", "\n===Call LoadAllClip Cost"));
    EXPECT_EQ(parser.LoadAVCHDClip(Root(), m_clips), 0) << "appended";
    EXPECT_EQ(m_clips.GetSize(), 4);
    ASSERT_EQ(report.skipped.GetSize(), 2);
    EXPECT_EQ(report.skipped[0].reason, SkipReason::Companion);
    EXPECT_EQ(report.skipped[1].reason, SkipReason::NotDescribed);
    EXPECT_EQ(parser.LoadAVCHDClip(L"", m_clips), 1);
    EXPECT_EQ(parser.LoadAVCHDClip(L"/none", m_clips), 1);

    _tag_P2Clip clip;
    EXPECT_EQ(parser.GetAVCHDCPIMetadata(Root(), L"00001", clip), 1);
    EXPECT_EQ(clip.VideoPath, L"");
    EXPECT_EQ(clip.EssenceMask, 0U);
    EXPECT_EQ(parser.GetAVCHDClpiDataInfo(Root(), L"00002", clip), 1);
    EXPECT_EQ(Relative(clip.VideoPath), "AVCHD\\BDMV\\STREAM\\00002.m2ts");
    for (const wchar_t* const name : {L"00002", L"", L"..\\CLIPINF\\00001", L"00009"}) {
        EXPECT_EQ(parser.GetAVCHDCPIMetadata(Root(), name, clip), 0);
    }
    EXPECT_EQ(parser.GetAVCHDClpiDataInfo(L"", L"00002", clip), 0);
    EXPECT_EQ(clip.ClipName, L"00002") << "untouched by failures";
}

} // namespace
} // namespace nqp2::avchd
