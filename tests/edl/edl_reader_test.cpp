// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/dates.h"
#include "platform/file_system.h"
#include "tests/edl/edl_test.h"
#include "tests/support/faulty_file_system.h"

#include <map>
#include <sys/stat.h>

namespace nqp2::edl {
namespace {

using testing::ElementsAre;

using EdlReaderTest = EdlTest;

TEST_F(EdlReaderTest, EveryValueIsRead) {
    AddFile("P001AB.XML",
            "<P2Main xmlns=\"urn:x:EditMetadata:v2.0\"><EditContent><Duration>90</Duration>"
            "<EditUnit>1001/30000</EditUnit><StartTimecode>01:00:01:02</StartTimecode>"
            "<FrameRate>59.94i</FrameRate><Codec Class=\"50\">AVC-I_1080/50i</Codec>"
            "<Thumbnail><FrameOffset>12</FrameOffset></Thumbnail><TrackList><ClipTrack><EventList>"
            "<Event><Offset>5</Offset><Duration>50</Duration><Source><P2SerialNo.>ABC1234"
            "</P2SerialNo.><ClipName>0001AA</ClipName><GlobalClipID>1f</GlobalClipID>"
            "<Offset>100</Offset><Channel>3  2</Channel></Source><AudioInOffset>7</AudioInOffset>"
            "<AudioOutOffset>0</AudioOutOffset><AudioLevel>0.5 -1e1 x 2 9</AudioLevel>"
            "<Note> a note </Note></Event><Event><Offset>55</Offset></Event>"
            "</EventList></ClipTrack></TrackList></EditContent></P2Main>");
    m_card.Folder().Write("EDITLIST/P001AB/icon.bmp");
    const tag_P2EDL edl = LoadOnly();
    EXPECT_EQ(edl.LeadingText, L"");
    EXPECT_EQ(edl.Name, L"P001AB");
    EXPECT_EQ(edl.Duration, 90);
    EXPECT_EQ(edl.EditUnit.Numerator, 1001);
    EXPECT_EQ(edl.EditUnit.Denominator, 30000);
    EXPECT_EQ(edl.StartTimecode, 3601 * 29 + 2) << "29 frames a second by integer division";
    EXPECT_EQ(edl.FrameRate, L"59.94i");
    EXPECT_EQ(edl.Codec, L"AVC-I_1080/50i");
    EXPECT_EQ(edl.Class50, 1);
    EXPECT_EQ(edl.ThumbnailFrame, 12);
    EXPECT_EQ(edl.IconPath, m_card.Root() + L"\\EDITLIST\\P001AB\\ICON.BMP");
    EXPECT_EQ(edl.ExtTrack.First, 0);
    EXPECT_EQ(edl.ExtTrack.Second, 1);
    ASSERT_EQ(edl.Events.GetSize(), 2);
    const tag_P2EDLClipTrackEvent& event = edl.Events[0];
    EXPECT_EQ(event.Offset, 5);
    EXPECT_EQ(event.Duration, 50);
    EXPECT_EQ(event.P2SerialNo, L"ABC1234");
    EXPECT_EQ(event.ClipName, L"0001AA");
    EXPECT_EQ(event.GlobalClipID, L"1f");
    EXPECT_EQ(event.GlobalClipGuid, (GUID{0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0x1f}}));
    EXPECT_EQ(event.SourceOffset, 100);
    EXPECT_EQ(event.SourceIn, 100);
    EXPECT_EQ(event.SourceOut, 149);
    EXPECT_EQ(event.AudioInOffset, 7);
    EXPECT_EQ(event.AudioOutOffset, 0);
    EXPECT_THAT(event.Channels, ElementsAre(3, 2, 2, 3));
    EXPECT_THAT(event.AudioLevels, ElementsAre(0.5, -10.0, 0.0, 2.0));
    EXPECT_EQ(event.Note, L" a note ");
    EXPECT_EQ(event.Clip.ClipName, _tag_P2Clip().ClipName) << "the source record stays fresh";
    EXPECT_EQ(edl.Events[1].Offset, 55);
    EXPECT_EQ(edl.Events[1].SourceOut, -1);
    EXPECT_EQ(edl.Events[1].AudioOutOffset, -1);
}

TEST_F(EdlReaderTest, WordsAreSplitAtBlanksAndFourAreTaken) {
    const struct {
        const char* text;
        std::vector<int> channels;
        std::vector<double> levels;
    } rows[] = {
        {"", {0, 1, 2, 3}, {1, 1, 1, 1}},
        {"  7", {7, 1, 2, 3}, {7, 1, 1, 1}},
        {"4 3 2 1 0 9", {4, 3, 2, 1}, {4, 3, 2, 1}},
        {"1\t2 3", {1, 3, 2, 3}, {1, 3, 1, 1}},
        {"1,5 2", {1, 2, 2, 3}, {1, 2, 1, 1}},
    };
    for (const auto& row : rows) {
        AddEdl("P001.XML", {{"TrackList/ClipTrack/EventList/Event/Source/Channel", row.text},
                            {"TrackList/ClipTrack/EventList/Event/AudioLevel", row.text}});
        const tag_P2EDLClipTrackEvent event = LoadOnly().Events[0];
        EXPECT_THAT(event.Channels, testing::ElementsAreArray(row.channels)) << row.text;
        EXPECT_THAT(event.AudioLevels, testing::ElementsAreArray(row.levels)) << row.text;
    }
}

TEST_F(EdlReaderTest, EditUnitsThatCannotBeDropTheFile) {
    constexpr std::tuple<const char*, bool, std::int32_t, std::int32_t> kRows[] = {
        {"1/50", true, 1, 50},
        {"25", true, 1, 25},
        {" 2 / 3x", true, 2, 3},
        {"1/25/0", true, 1, 25},
        {"0/25", false, 0, 0},
        {"1/0", false, 0, 0},
        {"99999999999/99999999999", true, INT32_MAX, INT32_MAX},
    };
    for (const auto& [text, read, numerator, denominator] : kRows) {
        AddEdl("P001.XML", {{"EditUnit", text}});
        const CArray<tag_P2EDL> edls = Load();
        ASSERT_EQ(edls.GetSize(), read ? 1 : 0) << text;
        if (read) {
            EXPECT_EQ(edls[0].EditUnit.Numerator, numerator) << text;
            EXPECT_EQ(edls[0].EditUnit.Denominator, denominator) << text;
        }
    }
}

TEST_F(EdlReaderTest, Class50IsForFourCodecsOnly) {
    constexpr std::tuple<const char*, const char*, int> kRows[] = {
        {"AVC-I_1080/50i", "50", 1},    {"AVC-I_1080/25p", "50", 1},
        {"AVC-I_720/50p", "50", 1},     {"AVC-I_720/59.94p", "50", 1},
        {"AVC-I_1080/59.94i", "50", 0}, {"AVC-I_720/23.98p", "50", 0},
        {"avc-i_1080/50i", "50", 0},    {"AVC-I_1080/50i ", "50", 0},
        {"AVC-I_1080/50i", "100", 0},   {"AVC-I_1080/50i", "", 0},
        {"DV25_411", "50", 0},
    };
    for (const auto& [codec, codecClass, flag] : kRows) {
        AddEdl("P001.XML", {{"Codec", codec}, {"Codec@Class", codecClass}});
        EXPECT_EQ(LoadOnly().Class50, flag) << codec << codecClass;
    }
}

TEST_F(EdlReaderTest, TheSchemaDecidesWhetherAndWhereEventsAreRead) {
    // Attributes of P2Main, duration of the first event (-1: no edit list).
    constexpr std::pair<const char*, int> kRows[] = {
        {"xmlns=\"urn:P2:EditMetadata:v2.0\"", 1},   {"xmlns=\"urn:P2:EditMetadata:v3.0\"", 2},
        {"xmlns=\"urn:P2:EditMetadata:V3.0\"", 2},   {"xmlns=\"EditMetadata\"", 1},
        {"xmlns=\"urn:P2:EditMetadata:v3.0x\"", 1},  {"xmlns=\"urn:P2:ClipMetadata:v3.0\"", -1},
        {"xmlns=\"urn:P2:editmetadata:v2.0\"", -1},  {"", -1},
        {"schema=\"urn:P2:EditMetadata:v2.0\"", -1}, {"xmlns:p=\"urn:P2:EditMetadata:v2.0\"", -1},
    };
    for (const auto& [root, duration] : kRows) {
        AddFile("P001.XML", std::string("<P2Main ") + root +
                                "><EditContent><TrackList>"
                                "<ClipTrack><EventList><Event><Duration>1</Duration></Event>"
                                "</EventList></ClipTrack>"
                                "<VideoTrack><EventList><Event><Duration>2</Duration></Event>"
                                "</EventList></VideoTrack></TrackList></EditContent></P2Main>");
        const CArray<tag_P2EDL> edls = Load();
        EXPECT_EQ(edls.IsEmpty() ? -1 : edls[0].Events[0].Duration, duration) << root;
    }
}

TEST_F(EdlReaderTest, SourceOutStaysWithin32Bits) {
    constexpr std::tuple<const char*, const char*, std::int32_t> kRows[] = {
        {"2147483647", "2147483647", INT32_MAX},
        {"-2147483648", "-2147483648", INT32_MIN},
        {"2147483647", "1", INT32_MAX},
        {"-2147483648", "0", INT32_MIN},
    };
    for (const auto& [offset, duration, out] : kRows) {
        AddEdl("P001.XML", {{"TrackList/ClipTrack/EventList/Event/Source/Offset", offset},
                            {"TrackList/ClipTrack/EventList/Event/Duration", duration}});
        EXPECT_EQ(LoadOnly().Events[0].SourceOut, out) << offset;
    }
}

TEST_F(EdlReaderTest, BothFoldersOfACardAreReadAndWhatIsLeftOutIsTold) {
    AddEdl("P001.XML");
    AddEdl("p002.xml");
    AddFile("P003.XML", "");
    AddFile("P005.XML", "<!DOCTYPE P2Main [<!ENTITY a \"b\">]>" + EdlXml({}));
    AddFile("P006.XML", EdlXml({}, "urn:other"));
    AddFile("._P001.XML", "mac");
    AddEdl("P007.XML~");
    AddEdl("P008.txt");
    AddEdl(".XML");
    m_card.Folder().MakeFolder("EDITLIST/P009.XML");
    m_card.Folder().Write("CONTENTS/EDITLIST/P010.XML",
                          EdlXml({{"Codec", std::string(300'000, 'x')}}));
    ASSERT_EQ(mkfifo(m_card.Folder().Path("CONTENTS/EDITLIST/P011.XML").c_str(), 0600), 0);
    CArray<tag_P2EDL> edls;
    EXPECT_EQ(m_parser.LoadCardEdls(m_card.Root(), edls, m_report), 0);
    std::set<CString> names;
    for (const tag_P2EDL& edl : edls) {
        names.insert(edl.Name);
    }
    EXPECT_THAT(names, ElementsAre(L"", L"P001", L"P010", L"p002"));
    std::map<CString, SkipReason> losses;
    for (const SkippedFile& file : m_report.skipped) {
        losses[file.path.Mid(file.path.ReverseFind(L'\\') + 1)] = file.reason;
    }
    EXPECT_EQ(losses, (std::map<CString, SkipReason>{{L"P003.XML", SkipReason::NotWellFormed},
                                                     {L"P005.XML", SkipReason::DocumentType},
                                                     {L"P006.XML", SkipReason::NoEditList},
                                                     {L"._P001.XML", SkipReason::Companion},
                                                     {L"P011.XML", SkipReason::Unreadable}}));
    EXPECT_EQ(m_parser.LoadEdl(m_card.Root(), edls), 0);
    EXPECT_EQ(edls.GetSize(), 4 + 3) << "appended, of the folder in the root alone";
    EXPECT_FALSE(edls[0].Identity == edls[4].Identity) << "fresh for each record";
}

TEST_F(EdlReaderTest, PicturesAreFoundWithoutASearchForEachList) {
    constexpr std::uint64_t kLists = 40;
    for (std::uint64_t i = 0; i < kLists; ++i) {
        m_card.Folder().Write("editlist/P" + std::to_string(100 + i) + ".XML", EdlXml({}));
    }
    m_card.Folder().Write("editlist/p100/Icon.bmp");
    m_card.Folder().Write("editlist/P101", "no folder");
    test::FaultyFileSystem counter;
    const platform::ScopedFileSystem inPlace(counter);
    int pictures = 0;
    for (const tag_P2EDL& edl : Load()) {
        pictures += edl.IconPath.IsEmpty() ? 0 : 1;
        EXPECT_EQ(edl.IconPath.IsEmpty(), edl.Name != L"P100");
    }
    EXPECT_EQ(pictures, 1);
    EXPECT_LT(counter.Calls(test::Operation::List), kLists / 2);
    EXPECT_LT(counter.Calls(), 3 * kLists) << "a date and a reading for each";
}

TEST_F(EdlReaderTest, AListWithoutNameHasItsPictureInTheFolderItself) {
    AddEdl(".XML");
    EXPECT_EQ(LoadOnly().IconPath, L"");
    m_card.Folder().Write("EDITLIST/icon.bmp");
    EXPECT_EQ(LoadOnly().IconPath, m_card.Root() + L"\\EDITLIST\\\\ICON.BMP");
}

TEST_F(EdlReaderTest, RecordsComeInTheFoldersOrderEachWithItsOwnContent) {
    for (int i = 1; i <= 6; ++i) { // pipes, which are not opened, stand in between
        AddEdl("P00" + std::to_string(i) + ".XML", {{"Duration", std::to_string(i)}});
        const std::string pipe = "EDITLIST/P10" + std::to_string(i) + ".XML";
        ASSERT_EQ(mkfifo(m_card.Folder().Path(pipe).c_str(), 0600), 0);
    }
    std::vector<std::pair<CString, std::int32_t>> expected;
    std::vector<std::pair<CString, std::int32_t>> read;
    for (const auto& entry :
         std::filesystem::directory_iterator(m_card.Folder().Path("EDITLIST"))) {
        if (entry.is_regular_file()) {
            const std::string title = entry.path().stem().string();
            expected.emplace_back(platform::TextFromUtf8(title), title.back() - '0');
        }
    }
    for (const tag_P2EDL& edl : Load()) {
        read.emplace_back(edl.Name, edl.Duration);
    }
    EXPECT_EQ(read, expected);
}

TEST_F(EdlReaderTest, CardsWithoutFolderOrParsersWithoutDocumentAreTold) {
    CArray<tag_P2EDL> edls;
    EXPECT_EQ(m_parser.LoadEdl(m_card.Root(), edls), 1);
    m_card.Folder().Write("EDITLIST", "a file");
    EXPECT_EQ(m_parser.LoadEdl(m_card.Root(), edls), 1);
    std::filesystem::remove(m_card.Folder().Path("EDITLIST"));
    m_card.Folder().MakeFolder("editlist");
    EXPECT_EQ(m_parser.LoadEdl(m_card.Root(), edls), 0) << "any letter case";
    m_parser.Release();
    EXPECT_EQ(m_parser.LoadEdl(m_card.Root(), edls), 1);
    EXPECT_TRUE(edls.IsEmpty());
}

TEST_F(EdlReaderTest, TheDateIsTheFilesLocalTimeOrUnknow) {
    const std::string path = AddEdl("P001.XML");
    platform::FileInfo info;
    ASSERT_TRUE(platform::DiskFiles().Stat(path, info));
    EXPECT_EQ(LoadOnly().Date, media::FileDateText(info.created));
    test::FaultyFileSystem faulty;
    faulty.Fail({.operation = test::Operation::Stat, .pathPart = "P001.XML"});
    const platform::ScopedFileSystem inPlace(faulty);
    const tag_P2EDL edl = LoadOnly();
    EXPECT_EQ(edl.Date, L"Unknow");
    ASSERT_EQ(edl.Events.GetSize(), 1) << "missing elements leave defaults and one event";
    EXPECT_EQ(edl.Events[0].SourceOut, -1);
    EXPECT_EQ(edl.Events[0].GlobalClipGuid, GUID());
}

} // namespace
} // namespace nqp2::edl
