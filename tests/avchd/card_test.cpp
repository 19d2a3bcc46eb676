// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/card.h"
#include "avchd/limits.h"
#include "avchd/video_format.h"
#include "NQP2ParserU/DebugOutput.h"
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
#include <tuple>
#include <utime.h>

namespace nqp2::avchd {
namespace {

using test::ClipSpec;
using test::FaultyFileSystem;
using test::Operation;
using test::PlaylistSpec;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const std::string kClips = "AVCHD/BDMV/CLIPINF/";
const std::string kStreams = "AVCHD/BDMV/STREAM/";
const std::string kPlaylists = "AVCHD/BDMV/PLAYLIST/";

using Texts = std::vector<std::string>;

std::string Utf8(const CString& text) {
    return platform::Utf8FromText(text.View());
}

/// When a record begins: frames, drop frame and date.
std::string Start(const _tag_P2Clip& clip) {
    return std::to_string(clip.StartTimecode) + (clip.DropFrame != 0 ? " drop " : " ") +
           Utf8(clip.StartDate);
}

class AvchdCardTest : public testing::Test {
protected:
    void Add(const std::string& name, const std::string& bytes = {}) const {
        const std::string path = m_folder.Write(name, bytes);
        const utimbuf times = {1'300'000'000, 1'300'000'000}; // 2011-03-13
        ASSERT_EQ(utime(path.c_str(), &times), 0);
    }
    void AddClip(const std::string& name, const ClipSpec& spec = {}) const {
        Add(kClips + name + ".CPI", test::ClipBytes(spec));
    }
    void AddStream(const std::string& name, const std::string& bytes) const {
        Add(kStreams + name + ".MTS", bytes);
    }
    void AddPlaylist(const std::string& name, const PlaylistSpec& spec) const {
        Add(kPlaylists + name + ".MPL", test::PlaylistBytes(spec));
    }
    /// One clip in 1080 lines, one in 720.
    void AddTwoClips() const {
        ClipSpec spec;
        spec.clipId = test::ClipIdBytes();
        AddClip("00001", spec);
        AddClip("00002", {.format = 5, .rate = 6});
    }

    /// Scans and returns the names; what the worker is asked for is answered by m_worker.
    Texts Scan(bool expected = true) {
        m_clips.RemoveAll();
        m_report = {};
        EXPECT_EQ(ScanClips(Root(), m_worker, m_clips, m_report), expected);
        Texts names;
        for (const _tag_P2Clip& clip : m_clips) {
            names.push_back(Utf8(clip.ClipName));
        }
        return names;
    }
    _tag_P2Clip ScanOne() {
        EXPECT_EQ(Scan().size(), 1U);
        return m_clips.IsEmpty() ? _tag_P2Clip() : m_clips[0];
    }
    [[nodiscard]] Texts Omitted() const {
        Texts paths;
        for (const SkippedFile& file : m_report.skipped) {
            paths.push_back(Relative(file.path));
        }
        return paths;
    }
    tag_P2EDL ReadOne(const PlaylistSpec& spec) {
        AddPlaylist("00000", spec);
        tag_P2EDL edl;
        EXPECT_EQ(m_parser.GetAVCHDMPLMetadata(Root(), L"00000", edl), 1);
        return edl;
    }
    Texts LoadedLists() {
        CArray<tag_P2EDL> edls;
        EXPECT_EQ(m_parser.LoadAVCHDEdl(Root(), edls), 0);
        Texts names;
        for (const tag_P2EDL& edl : edls) {
            names.push_back(Utf8(edl.Name));
            EXPECT_EQ(edl.Date.GetLength(), 19);
            EXPECT_NE(edl.Identity, GUID());
        }
        return names;
    }
    [[nodiscard]] CString Root() const { return InterfaceRoot(m_folder.Path()); }
    [[nodiscard]] std::string Relative(const CString& path) const {
        return Utf8(path.Mid(Root().GetLength() + 1));
    }

    test::TempFolder m_folder;
    CNQP2Parser m_parser;
    CArray<_tag_P2Clip> m_clips;
    ScanReport m_report;
    BaseClipRequest m_worker = [](const CString&, NQP2BaseClipInfo&) { return 0; };
};

TEST_F(AvchdCardTest, RecordingsThatTheCameraSplitAreTakes) {
    for (const char* const name : {"00001", "00002", "00003", "00005", "00008"}) {
        AddClip(name);
    }
    const auto add = [this](const char* playlist, const Texts& names) {
        PlaylistSpec spec = {.items = {}};
        for (const std::string& name : names) {
            spec.items.push_back({name.substr(1)});
            spec.items.back().connection = name[0] == '+' ? 6 : 1;
        }
        AddPlaylist(playlist, spec);
    };
    add("00000", {"+00001", "+00002", "-00003", "-00004", "+00005", "+00006", "-00008", "+00008"});
    add("00001", {"-00001", "+00002", "+00001", "-00009", "+00010", "-00002", "+00007"});
    Scan();
    Texts takes;
    for (const Take& take : m_report.takes) {
        takes.emplace_back(take.complete ? "" : "incomplete");
        for (const CString& name : take.segments) {
            takes.back() += ' ' + Utf8(name);
        }
        for (const MissingSegment& segment : take.missing) {
            takes.back() += " !" + Utf8(segment.clipName);
        }
    }
    EXPECT_THAT(takes, UnorderedElementsAre("incomplete 00001 00002 !00007",
                                            "incomplete 00005 !00004 !00006"))
        << "neither clips that are gone nor circles";
}

TEST_F(AvchdCardTest, AClockThatStartsAnewAndDoubledFramesAreCountedRight) {
    // Rate code, bytes of the timecode; start, frames of the wrapping clip.
    constexpr std::tuple<unsigned, const char*, const char*, int> kCases[] = {
        {3, "\x10\x01\x01\x01", "91535 ", 49},
        {7, "\x10\x01\x01\x01", "219680 ", 117},
        {2, "\x10\x01\x01\x01", "87874 ", 47},
        {7, "\x42\x01\x01\x01", "219444 drop ", 117}};
    for (const auto& [rate, timecode, start, frames] : kCases) {
        Add("BDMV/CLIPINF/00001.clpi",
            test::ClipBytes({.stretches = {{4294895265, 16169}}, .format = 5, .rate = rate}));
        Add("BDMV/PLAYLIST/00000.mpls",
            test::PlaylistBytes(
                {.items = {{"00001", 4294895265, 16169, 1, 5, rate}, {"00001", 1000, 16169}},
                 .marks = {{1, 1000, 0, test::Zeros(7)},
                           {0, 4294895265, 0, test::kDate, timecode}}}));
        const _tag_P2Clip clip = ScanOne();
        EXPECT_EQ(clip.Duration, frames) << rate;
        EXPECT_EQ(Start(clip), start + std::string("2011-01-28T13:45:07"))
            << "the earlier mark, though larger";
    }
}

TEST_F(AvchdCardTest, TakesMomentsFromTheClipThenThePlaylistThenTheStreamThenTheFile) {
    const char* const none = test::kNoTimecode.c_str();
    // Timecode of the clip, time of the mark, date and timecode in the stream; the start.
    const std::tuple<const char*, std::uint32_t, bool, const char*> cases[] = {
        {"\x02\x01\x01\x01", 38700, true, "109832 2024-05-10T08:01:02"},
        {none, 38700, true, "109833 2024-05-10T08:01:02"},
        {none, 40000, true, "109724 drop 2011-01-28T13:45:07"}, // a mark further on tells nothing
        {none, 40000, false, "0 drop 2011-03-13T"}};            // the default where it can drop
    for (const auto& [clipTimecode, markTime, inStream, start] : cases) {
        ClipSpec spec;
        spec.rate = 4;
        spec.clipId = test::ClipIdBytes();
        spec.timecode = clipTimecode;
        AddClip("00000", spec);
        AddStream("00000",
                  test::StreamBytes({}, inStream ? test::DatePacks("\x44\x01\x01\x01") : ""));
        AddPlaylist("00000", {.marks = {{0, markTime, 0, "\x20\x24\x05\x10\x08\x01\x02",
                                         "\x03\x01\x01\x01"}}});
        const _tag_P2Clip clip = ScanOne();
        EXPECT_THAT(Start(clip), testing::StartsWith(start));
        EXPECT_NEAR(clip.ShootStartTime.GetDays(), markTime == 38700 ? 45422.33 : 40590, 26);
    }
}

TEST_F(AvchdCardTest, FoldersDecideWhatIsScannedAndInWhichOrder) {
    m_folder.MakeFolder("PANA_GRP/003");
    EXPECT_THAT(Scan(false), IsEmpty());
    m_folder.MakeFolder("SONY");
    EXPECT_THAT(Scan(), IsEmpty()) << "a folder alone is enough to scan nothing";
    for (const char* const file : {"PANA_GRP/001RBQAM/P1.MOV", "PANA_GRP/001YDJAM/NEVER.MOV",
                                   "SONY/DVF/100DVF/D1.avi", "SONY/DVF/100DVF/D1.MOV"}) {
        Add(file);
    }
    for (const char* const file : {"00003.CLPI", "00004.cpi"}) {
        Add(std::string("bdmv/clipinf/") + file, test::ClipBytes({}));
    }
    Add("bdmv/Stream/00003.M2TS");
    m_worker = [this](const CString& path, NQP2BaseClipInfo& info) {
        EXPECT_EQ(Utf8(info.clipText2.Left(7)), "2011-03") << "the file's time";
        info.clipText2 = L"1999-01-01T00:00:00";
        info.texts.Add(L"sound");
        return Relative(path).ends_with("P1.MOV") ? -1 : 1;
    };
    EXPECT_THAT(Scan(), ElementsAre("00004", "D1", "00003"));
    EXPECT_THAT(Omitted(), ElementsAre("PANA_GRP\\001RBQAM\\P1.MOV"));
    EXPECT_EQ(Start(m_clips[1]), "0 1999-01-01T00:00:00");
    EXPECT_NEAR(m_clips[1].ShootStartTime.GetDays(), 40615.3, 1.0) << "the file's time";
    EXPECT_EQ(m_clips[1].EssenceMask, 0b11U);
    EXPECT_EQ(Relative(m_clips[2].VideoPath), "BDMV\\STREAM\\00003.m2ts") << "letter case aside";
    std::filesystem::remove_all(m_folder.Path("PANA_GRP/001RBQAM"));
    m_folder.MakeFolder("AVCHD/BDMV/CLIPINF");
    EXPECT_THAT(Scan(), ElementsAre("D1", "NEVER")) << "AVCHD wins even without clips";
}

TEST_F(AvchdCardTest, WhatCannotBeReadIsLeftOutAndItsSiblingsAreRead) {
    m_folder.MakeFolder(kClips + "00000.CPI");
    for (const char* const name : {"00001", "00005", "00006", "a\\b"}) {
        AddClip(name);
    }
    Add(kClips + "00002.CPI", test::ClipBytes({}).substr(0, 100));
    std::filesystem::resize_file(m_folder.Path(kClips + "00005.CPI"), 1 << 20);
    std::filesystem::resize_file(m_folder.Path(kClips + "00006.CPI"), kMaxClipInformationFile + 1);
    std::filesystem::create_symlink("/dev/zero", m_folder.Path(kClips + "00007.CPI"));
    EXPECT_THAT(Scan(), UnorderedElementsAre("00001", "00005"));
    const std::string folder = "AVCHD\\BDMV\\CLIPINF\\";
    EXPECT_THAT(Omitted(), UnorderedElementsAre(folder + "00002.CPI", folder + "00006.CPI",
                                                folder + "00007.CPI", folder))
        << "the last for the name with a backslash";
    FaultyFileSystem files;
    const platform::ScopedFileSystem inUse(files);
    files.Fail(
        {.error = platform::IoError::Denied, .operation = Operation::List, .pathPart = "CLIPINF"});
    EXPECT_THAT(Scan(), IsEmpty());
    EXPECT_THAT(Omitted(), ElementsAre(folder));
}

TEST_F(AvchdCardTest, StreamsAreReadOnlyAsFarAsNeeded) {
    AddClip("00000");
    // What the stream begins with, the line's elements, blocks that are read: 32 KB; 2 MB in all.
    const std::tuple<std::string, int, unsigned> cases[] = {
        {test::StreamBytes({100, 90}), 1440, 1},
        {"", 1920, 3}, // as the clip information says
        {test::Zeros(192 * 1000) + test::StreamBytes({100, 90}), 1440, 2}};
    for (const auto& [begin, pixels, blocks] : cases) {
        AddStream("00000", begin);
        std::filesystem::resize_file(m_folder.Path(kStreams + "00000.MTS"), 8'000'000'000);
        FaultyFileSystem files;
        const platform::ScopedFileSystem inUse(files);
        EXPECT_EQ(ScanOne().ActivePixel, pixels);
        EXPECT_EQ(files.Calls(Operation::ReadBlock), blocks);
    }
}

TEST_F(AvchdCardTest, TheParserReadsClipsWithoutInit) {
    AddClip("00001");
    Add(kClips + "00002.clpi", test::ClipBytes({}));
    Add("PANA_GRP/001YDJAM/P1.MOV");
    Add(kClips + "._00001.CPI");
    Texts lines;
    SetDebugOutput(
        [&](const CString& text) { lines.push_back(Utf8(text.Left(text.ReverseFind(L' ')))); });
    EXPECT_EQ(m_parser.LoadAVCHDClip(Root(), m_clips, m_report), 0);
    SetDebugOutput({});
    const std::string decoding = "\n===Call NQGetAVCHDCPIMetaData Cost";
    EXPECT_THAT(lines, ElementsAre(decoding, decoding, "\n===Call LoadAllClip Cost"));
    EXPECT_EQ(m_parser.LoadAVCHDClip(Root(), m_clips), 0) << "appended";
    EXPECT_EQ(m_clips.GetSize(), 4);
    ASSERT_EQ(m_report.skipped.GetSize(), 2);
    EXPECT_EQ(m_report.skipped[0].reason, SkipReason::Companion);
    EXPECT_EQ(m_report.skipped[1].reason, SkipReason::NotDescribed);
    EXPECT_EQ(m_parser.LoadAVCHDClip(L"/none", m_clips), 1);
    _tag_P2Clip clip;
    EXPECT_EQ(m_parser.GetAVCHDClpiDataInfo(Root(), L"00002", clip), 1);
    for (const wchar_t* const name : {L"00002", L"", L"..\\CLIPINF\\00001", L"00009"}) {
        EXPECT_EQ(m_parser.GetAVCHDCPIMetadata(Root(), name, clip), 0);
    }
    EXPECT_EQ(m_parser.GetAVCHDClpiDataInfo(L"", L"00002", clip), 0);
    EXPECT_EQ(clip.ClipName, L"00002") << "untouched by failures";
    EXPECT_EQ(m_parser.GetAVCHDCPIMetadata(Root(), L"00001", clip), 1);
}

TEST_F(AvchdCardTest, PlaylistsThatCannotBeReadAndThoseOfDiscs) {
    AddTwoClips();
    Add(kClips + "00002.clpi", test::ClipBytes({.format = 6}));
    const std::string sound = test::PlaylistBytes({.items = {{"00002", 4294895265, 16169}}});
    for (const char* const name : {"00000.mpls", "00001.MPL", "00002.mpl", "a\\b.mpls"}) {
        Add(kPlaylists + name, sound);
    }
    Add(kPlaylists + "00003.mpls", "MPLS0100");
    Add(kPlaylists + "._00003.mpls", "Mac");
    m_folder.MakeFolder(kPlaylists + "00004.MPL");
    AddPlaylist("00005", {.items = {}});
    FaultyFileSystem files;
    files.SetHook([](Operation operation, const std::string& path) {
        if (operation == Operation::Read && path.ends_with("00001.MPL")) {
            throw std::bad_alloc();
        }
    });
    const platform::ScopedFileSystem inUse(files);
    CArray<tag_P2EDL> edls;
    EXPECT_EQ(m_parser.LoadCardPlaylists(Root(), edls, m_report), 0);
    Texts told;
    for (const tag_P2EDL& edl : edls) {
        told.push_back(Utf8(edl.Name + L" " + edl.Codec) + ' ' + std::to_string(edl.Duration));
    }
    EXPECT_THAT(told, ElementsAre("00002 AVCHD_1280_720_50p 49", "00000 AVCHD_1920_1080_25p 49"))
        << "each of the clip of the same kind";
    told.clear();
    for (const SkippedFile& file : m_report.skipped) {
        told.push_back(Relative(file.path).substr(20) + std::to_string(int(file.reason)));
    }
    const auto because = [](const char* name, SkipReason reason) {
        return name + std::to_string(int(reason));
    };
    EXPECT_THAT(told, UnorderedElementsAre(because("._00003.mpls", SkipReason::Companion),
                                           because("00001.MPL", SkipReason::TooLarge),
                                           because("00003.mpls", SkipReason::Undecodable),
                                           because("a\\b.mpls", SkipReason::Unreadable)));
    EXPECT_THAT(LoadedLists(), ElementsAre("00002")) << "no discs, and the one that throws alone";
    tag_P2EDL edl;
    edl.Name = L"kept";
    for (const wchar_t* const name :
         {L"00000", L"00001", L"00004", L"00005", L"", L"..\\PLAYLIST\\00002"}) {
        EXPECT_EQ(m_parser.GetAVCHDMPLMetadata(Root(), name, edl), 0);
    }
    EXPECT_EQ(m_parser.GetAVCHDMPLMetadata(L"", L"00002", edl), 0);
    EXPECT_EQ(m_parser.GetAVCHDMPLMetadata(Root(), L"00002", edl), 1);
    EXPECT_EQ(edl.Name, L"kept");
}

TEST_F(AvchdCardTest, TheFirstItemDecidesTheRateOfAList) {
    AddTwoClips();
    // Format, rate, pulldown; rate and edit unit of the list.
    constexpr std::tuple<unsigned, unsigned, unsigned, const char*> kCases[] = {
        {4, 3, 1, "25p 1/25"},
        {5, 6, 1, "25p 1/25"},
        {6, 1, 0, "23.98p 1001/24000"},
        {6, 2, 0, "24p 1/24"},
        {4, 3, 0, "50i 1/25"},
        {4, 4, 0, "29.97p 1001/30000"},
        {5, 7, 0, "59.94p 1001/60000"},
        {5, 6, 0, "50p 1/50"},
        {4, 5, 0, " 1/25"},
        {4, 8, 1, " 1/25"}};
    for (const auto& [format, rate, pulldown, told] : kCases) {
        const tag_P2EDL edl = ReadOne(
            {.items = {{"00009", 0, 45000, 1, format, rate}, {rate % 2 == 0 ? "00001" : "00002"}},
             .marks = {{0, 0, pulldown}, {1}},
             .shotIds = {test::Zeros(32), test::ClipIdBytes()}});
        EXPECT_EQ(Utf8(edl.FrameRate) + ' ' + std::to_string(edl.EditUnit.Numerator) + '/' +
                      std::to_string(edl.EditUnit.Denominator),
                  told);
        ASSERT_EQ(edl.Events.GetSize(), 1) << "a clip that is not there leaves its item out";
        EXPECT_GE(edl.Duration, 10) << "but not its frames";
        EXPECT_EQ(edl.Events[0].GlobalClipID.Right(4), L"0F10") << "the clip's, else the mark's";
        CArray<tag_P2EDL> lists;
        m_report = {};
        EXPECT_EQ(m_parser.LoadCardPlaylists(Root(), lists, m_report), 0);
        ASSERT_EQ(lists[0].Events.GetSize(), 2) << "unless it is asked for";
        const tag_P2EDLClipTrackEvent& missing = lists[0].Events[0];
        EXPECT_EQ(Utf8(missing.ClipName + L' ' + missing.Clip.ClipName + missing.Clip.FrameRate),
                  "00009 " + Utf8(edl.FrameRate));
        EXPECT_EQ(missing.Duration + lists[0].Events[1].Duration, edl.Duration);
        ASSERT_EQ(m_report.skipped.GetSize(), 1);
        EXPECT_EQ(m_report.skipped[0].reason, SkipReason::MissingClip);
        EXPECT_TRUE(m_report.skipped[0].text.Right(7) == L": 00009");
    }
}

} // namespace
} // namespace nqp2::avchd
