// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

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

namespace nqp2::avchd {
namespace {

using test::ItemSpec;
using test::PlaylistSpec;
using testing::ElementsAre;

class PlaylistReaderTest : public testing::Test {
protected:
    void SetUp() override { AddClips("AVCHD/BDMV/"); }
    void AddClips(const std::string& folder) const {
        test::ClipSpec wide;
        wide.clipId = test::ClipIdBytes();
        test::ClipSpec small;
        small.format = 5;
        small.rate = 6;
        m_folder.Write(folder + "CLIPINF/00001.CPI", test::ClipBytes(wide));
        m_folder.Write(folder + "CLIPINF/00002.CPI", test::ClipBytes(small));
    }
    void Add(const std::string& path, const PlaylistSpec& spec) const {
        m_folder.Write(path, test::PlaylistBytes(spec));
    }
    tag_P2EDL ReadOne(const PlaylistSpec& spec) {
        Add("AVCHD/BDMV/PLAYLIST/00000.MPL", spec);
        tag_P2EDL edl;
        EXPECT_EQ(m_parser.GetAVCHDMPLMetadata(Root(), L"00000", edl), 1);
        return edl;
    }
    std::vector<std::string> LoadedNames(__int64 expected = 0) {
        CArray<tag_P2EDL> edls;
        EXPECT_EQ(m_parser.LoadAVCHDEdl(Root(), edls), expected);
        std::vector<std::string> names;
        for (const tag_P2EDL& edl : edls) {
            names.push_back(platform::Utf8FromText(edl.Name.View()));
            EXPECT_EQ(edl.Date.GetLength(), 19);
            EXPECT_NE(edl.Identity, GUID());
        }
        return names;
    }
    [[nodiscard]] CString Root() const { return InterfaceRoot(m_folder.Path()); }

    test::TempFolder m_folder;
    CNQP2Parser m_parser;
};

TEST_F(PlaylistReaderTest, EveryItemIsAnEventAtTheStartOfTheTimeline) {
    PlaylistSpec spec;
    spec.items = {ItemSpec{"00001", 0, 300 * 1800}, ItemSpec{"00002", 0, 450, 1, 5, 6},
                  ItemSpec{"00001", 0, 1800}};
    spec.marks = {test::MarkSpec{1}};
    spec.shotIds = {test::ClipIdBytes()};
    const tag_P2EDL edl = ReadOne(spec);
    EXPECT_EQ(edl.Duration, 300 + 1 + 1) << "half a frame is one, each at its own rate";
    EXPECT_EQ(edl.EditUnit.Numerator, 1);
    EXPECT_EQ(edl.EditUnit.Denominator, 25);
    EXPECT_EQ(edl.FrameRate, L"50i");
    EXPECT_EQ(edl.Codec, L"AVCHD_1920_1080_50i") << "the last item decides";
    ASSERT_EQ(edl.Events.GetSize(), 3);
    for (const tag_P2EDLClipTrackEvent& event : edl.Events) {
        EXPECT_EQ(event.Offset, 0);
        EXPECT_EQ(event.SourceOffset, 0);
        EXPECT_EQ(event.SourceIn, 0);
        EXPECT_EQ(event.SourceOut, event.Duration) << "the first frame behind it";
        EXPECT_EQ(event.Clip.ClipName, event.ClipName);
        EXPECT_EQ(event.GlobalClipID.Right(4), L"0F10") << "of the clip, else of the mark";
        EXPECT_NE(event.GlobalClipGuid, GUID());
    }
    EXPECT_EQ(edl.Events[0].Duration, 300);
    EXPECT_EQ(edl.Events[1].Clip.CodecName, L"AVCHD_1280_720_50p");
}

TEST_F(PlaylistReaderTest, TheFirstItemDecidesTheRate) {
    // Format, rate, pulldown; numerator and denominator of the edit unit, text of the rate.
    constexpr std::tuple<unsigned, unsigned, unsigned, int, int, const wchar_t*> kCases[] = {
        {4, 3, 1, 1, 25, L"25p"},
        {5, 6, 1, 1, 25, L"25p"},
        {6, 1, 0, 1001, 24000, L"23.98p"},
        {6, 2, 0, 1, 24, L"24p"},
        {4, 3, 0, 1, 25, L"50i"},
        {4, 4, 0, 1001, 30000, L"29.97p"},
        {5, 7, 0, 1001, 60000, L"59.94p"},
        {5, 6, 0, 1, 50, L"50p"},
        {4, 5, 0, 1, 25, L""},
        {4, 8, 1, 1, 25, L""},
    };
    for (const auto& [format, rate, pulldown, numerator, denominator, text] : kCases) {
        PlaylistSpec spec;
        spec.items = {ItemSpec{"00009", 0, 45000, 1, format, rate}, ItemSpec{"00001"}};
        spec.marks = {test::MarkSpec{0, 0, pulldown}};
        const tag_P2EDL edl = ReadOne(spec);
        EXPECT_EQ(edl.EditUnit.Numerator, numerator) << rate;
        EXPECT_EQ(edl.EditUnit.Denominator, denominator);
        EXPECT_EQ(edl.FrameRate, text);
        EXPECT_EQ(edl.Events.GetSize(), 1) << "a clip that is not there leaves its item out";
        EXPECT_GE(edl.Duration, 10) << "but not its frames";
    }
}

TEST_F(PlaylistReaderTest, PlaylistsThatAreNone) {
    PlaylistSpec empty;
    empty.items.clear();
    Add("AVCHD/BDMV/PLAYLIST/00000.MPL", empty);
    m_folder.Write("AVCHD/BDMV/PLAYLIST/00001.MPL", "MPLS0100");
    m_folder.MakeFolder("AVCHD/BDMV/PLAYLIST/00002.MPL");
    Add("AVCHD/BDMV/PLAYLIST/00003.mpls", {});
    Add("AVCHD/BDMV/PLAYLIST/00004.mpl", {});
    EXPECT_THAT(LoadedNames(), ElementsAre("00004"));
    tag_P2EDL edl;
    edl.Name = L"kept";
    for (const wchar_t* const name :
         {L"00000", L"00001", L"00002", L"00003", L"00005", L"", L"..\\PLAYLIST\\00004"}) {
        EXPECT_EQ(m_parser.GetAVCHDMPLMetadata(Root(), name, edl), 0);
    }
    EXPECT_EQ(m_parser.GetAVCHDMPLMetadata(L"", L"00004", edl), 0);
    EXPECT_EQ(m_parser.GetAVCHDMPLMetadata(Root(), L"00004", edl), 1);
    EXPECT_EQ(edl.Name, L"kept");
}

TEST_F(PlaylistReaderTest, AllOfACardListsDiscsTooAndTellsWhatIsLeftOut) {
    test::ClipSpec disc;
    disc.format = 6;
    m_folder.Write("AVCHD/BDMV/CLIPINF/00002.clpi", test::ClipBytes(disc));
    PlaylistSpec spec;
    spec.items = {ItemSpec{"00002", 4294895265, 16169}};
    Add("AVCHD/BDMV/PLAYLIST/00000.mpls", spec);
    Add("AVCHD/BDMV/PLAYLIST/00001.MPL", spec);
    Add("AVCHD/BDMV/PLAYLIST/00002.MPL", spec);
    m_folder.Write("AVCHD/BDMV/PLAYLIST/00003.mpls", "MPLS0100");
    m_folder.Write("AVCHD/BDMV/PLAYLIST/._00003.mpls", "Mac");
    m_folder.MakeFolder("AVCHD/BDMV/PLAYLIST/00004.mpls");
    spec.items.clear();
    Add("AVCHD/BDMV/PLAYLIST/00005.mpls", spec);
    test::FaultyFileSystem files;
    files.SetHook([](test::Operation operation, const std::string& path) {
        if (operation == test::Operation::Read && path.ends_with("00001.MPL")) {
            throw std::bad_alloc();
        }
    });
    const platform::ScopedFileSystem inUse(files);
    CArray<tag_P2EDL> edls;
    ScanReport report;
    EXPECT_EQ(m_parser.LoadCardPlaylists(Root(), edls, report), 0);
    ASSERT_EQ(edls.GetSize(), 2);
    EXPECT_EQ(edls[0].Name, L"00002");
    EXPECT_EQ(edls[0].Codec, L"AVCHD_1280_720_50p");
    EXPECT_EQ(edls[1].Name, L"00000");
    EXPECT_EQ(edls[1].Codec, L"AVCHD_1920_1080_25p") << "of the clip of the same kind";
    EXPECT_EQ(edls[1].Duration, 49);
    std::vector<std::pair<CString, SkipReason>> skipped;
    for (const SkippedFile& file : report.skipped) {
        skipped.emplace_back(file.path.Mid(file.path.ReverseFind(L'\\') + 1), file.reason);
    }
    EXPECT_THAT(skipped, testing::UnorderedElementsAre(
                             std::pair(CString(L"00001.MPL"), SkipReason::TooLarge),
                             std::pair(CString(L"00003.mpls"), SkipReason::Undecodable),
                             std::pair(CString(L"._00003.mpls"), SkipReason::Companion)));
    EXPECT_EQ(m_parser.LoadCardPlaylists(L"", edls, report), 1);
    EXPECT_THAT(LoadedNames(), ElementsAre("00002")) << "no discs, and the one that throws alone";
}

TEST_F(PlaylistReaderTest, NamesInOtherCaseAndMissingClipsCostNoSearchOfTheirOwn) {
    m_folder.Write("AVCHD/BDMV/CLIPINF/00003.cpi", test::ClipBytes({}));
    m_folder.MakeFolder("AVCHD/BDMV/PLAYLIST");
    const auto listings = [this] {
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem inUse(files);
        LoadedNames();
        return files.Calls(test::Operation::List);
    };
    const auto none = listings();
    PlaylistSpec spec;
    spec.items = {ItemSpec{"00003"}, ItemSpec{"00004"}, ItemSpec{"00005"}, ItemSpec{"00006"}};
    for (const char* const name : {"00000.mpl", "00001.mpl", "00002.Mpl", "00003.MPL"}) {
        Add("AVCHD/BDMV/PLAYLIST/" + std::string(name), spec);
    }
    EXPECT_EQ(LoadedNames().size(), 4U);
    EXPECT_LE(listings(), none + 5) << "three folders and one of them for its marks";
}

TEST_F(PlaylistReaderTest, TheAvchdFolderIsAskedFirst) {
    LoadedNames(1);
    PlaylistSpec spec;
    spec.items[0].name = "00001";
    Add("BDMV/PLAYLIST/00007.MPL", spec);
    EXPECT_THAT(LoadedNames(), testing::IsEmpty())
        << "found in one folder, read from the other: kept";
    Add("AVCHD/BDMV/PLAYLIST/00008.MPL", spec);
    EXPECT_THAT(LoadedNames(), ElementsAre("00008"));
    std::filesystem::remove_all(m_folder.Path("AVCHD"));
    AddClips("BDMV/");
    EXPECT_THAT(LoadedNames(), ElementsAre("00007"));
}

} // namespace
} // namespace nqp2::avchd
