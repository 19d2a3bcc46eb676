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

const std::string kEvent = "TrackList/ClipTrack/EventList/Event/";
const std::string kSource = kEvent + "Source/";

TEST_F(EdlReaderTest, TextsBecomeTheseValues) {
    using Values = std::vector<double>;
    using Show = Values (*)(const tag_P2EDL& edl);
    const Show unit = [](const tag_P2EDL& edl) -> Values {
        return {double(edl.EditUnit.Numerator), double(edl.EditUnit.Denominator)};
    };
    const Show class50 = [](const tag_P2EDL& edl) -> Values { return {double(edl.Class50)}; };
    const Show out = [](const tag_P2EDL& edl) -> Values {
        return {double(edl.Events[0].SourceOut)};
    };
    const Show audioOut = [](const tag_P2EDL& edl) -> Values {
        return {double(edl.Events[0].AudioOutOffset)};
    };
    const Show channels = [](const tag_P2EDL& edl) -> Values {
        return {std::begin(edl.Events[0].Channels), std::end(edl.Events[0].Channels)};
    };
    const Show levels = [](const tag_P2EDL& edl) -> Values {
        return {std::begin(edl.Events[0].AudioLevels), std::end(edl.Events[0].AudioLevels)};
    };
    const auto coded = [](const char* codec, const char* codecClass) -> test::ClipValues {
        return {{"Codec", codec}, {"Codec@Class", codecClass}};
    };
    const auto source = [](const char* offset, const char* duration) -> test::ClipValues {
        return {{kSource + "Offset", offset}, {kEvent + "Duration", duration}};
    };
    const std::tuple<test::ClipValues, Show, Values> rows[] = {
        {{{"EditUnit", "25"}}, unit, {1, 25}},
        {{{"EditUnit", " 2 / 3x"}}, unit, {2, 3}},
        {{{"EditUnit", "99999999999/99999999999"}}, unit, {INT32_MAX, INT32_MAX}},
        {{{"EditUnit", "0/25"}}, unit, {}}, // no edit list
        {{{"EditUnit", "1/0"}}, unit, {}},
        {coded("AVC-I_1080/50i", "50"), class50, {1}},
        {coded("AVC-I_720/59.94p", "50"), class50, {1}},
        {coded("AVC-I_1080/59.94i", "50"), class50, {0}},
        {coded("avc-i_1080/50i", "50"), class50, {0}},
        {coded("AVC-I_1080/50i", "100"), class50, {0}},
        {source("2147483647", "1"), out, {INT32_MAX}},
        {source("2147483647", "2147483647"), out, {INT32_MAX}},
        {source("-2147483648", "-2147483648"), out, {INT32_MIN}},
        {{{kEvent + "AudioOutOffset", "0"}}, audioOut, {0}},
        {{{kEvent + "AudioLevel", "0.5 -1e1 x 2 9"}}, levels, {0.5, -10, 0, 2}},
        {{{kSource + "Channel", ""}}, channels, {0, 1, 2, 3}},
        {{{kSource + "Channel", "4 3 2 1 0 9"}}, channels, {4, 3, 2, 1}},
    };
    for (const auto& [values, show, shown] : rows) {
        AddEdl("P001.XML", values);
        const CArray<tag_P2EDL> edls = Load();
        EXPECT_EQ(edls.IsEmpty() ? Values() : show(edls[0]), shown) << values[0].value;
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

TEST_F(EdlReaderTest, BothFoldersOfACardAreReadAndWhatIsLeftOutIsTold) {
    for (const char* const name : {"P001.XML", "p002.xml", "P007.XML~", "P008.txt", ".XML"}) {
        AddEdl(name);
    }
    AddFile("P003.XML", "");
    AddFile("P005.XML", "<!DOCTYPE P2Main [<!ENTITY a \"b\">]>" + EdlXml({}));
    AddFile("P006.XML", EdlXml({}, "urn:other"));
    AddFile("._P001.XML", "mac");
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
    m_parser.Release();
    EXPECT_EQ(m_parser.LoadEdl(m_card.Root(), edls), 1) << "no document";
    std::filesystem::remove_all(m_card.Folder().Path("EDITLIST"));
    m_parser.Init();
    EXPECT_EQ(m_parser.LoadEdl(m_card.Root(), edls), 1) << "no folder";
    m_card.Folder().Write("EDITLIST", "a file");
    EXPECT_EQ(m_parser.LoadEdl(m_card.Root(), edls), 1);
}

TEST_F(EdlReaderTest, PicturesAndDatesCostNoSearchForEachList) {
    constexpr std::uint64_t kLists = 40;
    for (std::uint64_t i = 0; i < kLists; ++i) {
        m_card.Folder().Write("editlist/P" + std::to_string(100 + i) + ".XML", EdlXml({}));
    }
    m_card.Folder().Write("editlist/p100/Icon.bmp");
    m_card.Folder().Write("editlist/P101", "no folder");
    test::FaultyFileSystem counter;
    const platform::ScopedFileSystem inPlace(counter);
    for (const tag_P2EDL& edl : Load()) {
        EXPECT_EQ(edl.IconPath.IsEmpty(), edl.Name != L"P100");
    }
    EXPECT_LT(counter.Calls(test::Operation::List), kLists / 2);
    EXPECT_LT(counter.Calls(), 3 * kLists) << "a date and a reading for each";
    std::filesystem::remove_all(m_card.Folder().Path("editlist"));
    platform::FileInfo info;
    ASSERT_TRUE(platform::DiskFiles().Stat(AddEdl(".XML"), info));
    EXPECT_EQ(LoadOnly().Date, media::FileDateText(info.created));
    m_card.Folder().Write("EDITLIST/icon.bmp"); // a list without name shares its folder
    EXPECT_EQ(LoadOnly().IconPath, m_card.Root() + L"\\EDITLIST\\\\ICON.BMP");
}

} // namespace
} // namespace nqp2::edl
