// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_layout.h"
#include "tests/edl/edl_test.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/swapping_link.h"

#include <vector>

namespace nqp2::edl {
namespace {

namespace fs = std::filesystem;
using platform::IoError;
using test::FaultyFileSystem;
using test::Operation;
using testing::ElementsAre;
using testing::HasSubstr;

class EdlWriterTest : public EdlTest {
protected:
    /// The bytes of what is written under a name of the test's choice.
    std::string Written(const tag_P2EDL& edl) {
        EXPECT_EQ(Save(edl, L"written"), 0);
        return Bytes("written.xml");
    }
    __int64 Save(const tag_P2EDL& edl, const CString& name = L"") {
        return m_parser.SaveToEdl(m_card.Root(), edl, 1, name);
    }
};

TEST_F(EdlWriterTest, TheTreeIsWrittenInOrder) {
    AddClip("0001AA", {{"EditUnit", "1001/30000"}, {"EssenceList/Video/FrameRate", "59.94i"}});
    tag_P2EDL edl = OneEvent();
    edl.Duration = 135;
    edl.StartTimecode = 777;
    edl.EditUnit = {1, 50};
    edl.Codec = L"not this one";
    edl.Events[0].P2SerialNo = L"A&B<1>";
    edl.Events[0].Duration = 60;
    edl.Events[0].SourceOffset = 1799;
    edl.Events[0].Note = L"060A2B34FFFFFFFFFFFFFFFF00000000798AE7C6a09e4b6fa5a11f6e2d08e5c0";
    edl.Events.Add(Event(L"0002BB", L"12"));
    edl.Events[1].Offset = 60;
    edl.Events[1].Duration = 75;
    EXPECT_EQ(Written(edl),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\r\n"
              "<P2Main xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
              "xmlns=\"urn:schemas-Professional-Plug-in:P2:EditMetadata:v2.0\">"
              "<EditContent><Duration>135</Duration><EditUnit>1001/30000</EditUnit>"
              "<StartTimecode>00:00:00:00</StartTimecode><FrameRate>59.94i</FrameRate>"
              "<Codec>DV25_411</Codec><TrackList><ClipTrack><EventList>"
              "<Event><Offset>0</Offset><Duration>60</Duration><Source>"
              "<P2SerialNo.>A&amp;B&lt;1&gt;</P2SerialNo.><ClipName>0001AA</ClipName>"
              "<GlobalClipID>060A2B34FFFFFFFFFFFFFFFF00000000798AE7C6A09E4B6FA5A11F6E2D08E5C0"
              "</GlobalClipID><Offset>1799</Offset><InTimecode>00:00:59:29</InTimecode>"
              "<OutTimecode>00:01:01:28</OutTimecode></Source></Event>"
              "<Event><Offset>60</Offset><Duration>75</Duration><Source><P2SerialNo.></P2SerialNo.>"
              "<ClipName>0002BB</ClipName>"
              "<GlobalClipID>060A2B340101010501010D431300000000000000000000000000000000000012"
              "</GlobalClipID><Offset>0</Offset><InTimecode>00:00:00:00</InTimecode>"
              "<OutTimecode>00:00:02:14</OutTimecode></Source></Event>"
              "</EventList></ClipTrack></TrackList></EditContent></P2Main>\r\n");
}

TEST_F(EdlWriterTest, ClassAndTimecodesAreThoseOfTheReference) {
    const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
        {"AVC-I_1080/50i", "50", "25P", R"(<Codec Class="50">AVC-I_1080/50i<)"},
        {"AVC-I_1080/50i", "", "25P", R"(<Codec Class="100">AVC-I_1080/50i<)"},
        {"AVC-I_720/50p", "50", "25P", "<Codec>AVC-I_720/50p<"},
        {"avc-i_1080/50i", "50", "25P", "<InTimecode>00:00:04:00<"},
        {"DV25_411", "", "59.94p", "<InTimecode>00:00:01:40<"},
    };
    for (const auto& [codec, codecClass, rate, element] : rows) {
        AddClip("0001AA", {{"EssenceList/Video/Codec", codec},
                           {"EssenceList/Video/Codec@Class", codecClass},
                           {"EssenceList/Video/FrameRate", rate}});
        tag_P2EDL edl = OneEvent();
        edl.Events[0].SourceOffset = 100;
        EXPECT_THAT(Written(edl), HasSubstr(element));
    }
}

TEST_F(EdlWriterTest, TheReferenceIsTheFirstClipThatIsThereAndFits) {
    tag_P2EDL edl;
    for (const wchar_t* name : {L"0001AA", L"..\\CLIP\\0005AA", L"0002AA", L"0003aa", L"0004AA"}) {
        edl.Events.Add(Event(name, kClipID));
    }
    AddClip("0005AA", {{"EditUnit", "reached from outside"}});
    m_card.Folder().MakeFolder("CONTENTS/CLIP/0001AA.XML");
    AddClip("0002AA", {{"GlobalClipID", "798AE7C6A09E4B6FA5A11F6E2D08E5C1"}}); // another clip
    EXPECT_EQ(Save(edl), 1) << "none there";
    AddClip("0004AA", {{"EditUnit", "fourth"}, // its last 32 digits count
                       {"GlobalClipID", "798ae7c6a09e4b6fa5a11f6e2d08e5c0"}});
    EXPECT_THAT(Written(edl), HasSubstr("<EditUnit>fourth<"));
    AddClip("0003AA", {{"EditUnit", "third"}});
    EXPECT_THAT(Written(edl), HasSubstr("<EditUnit>third<")) << "letter case does not matter";
    AddClip("0003AA", {{"EssenceList/Video/Codec", ""}});
    EXPECT_EQ(Save(edl), 1) << "the search ended at a clip without codec";
    m_card.AddFile("CLIP/0002AA.XML", "broken");
    EXPECT_EQ(Save(edl), 1) << "a clip that does not load ends the search";
    EXPECT_THAT(FilesInFolder(), ElementsAre("written.xml"));
}

TEST_F(EdlWriterTest, NamesGainAnExtensionUnlessTheyHoldItAndLeadNowhereElse) {
    struct Row {
        const wchar_t* name;
        const wchar_t* identifier; ///< of the first event
        const char* file = "";     ///< "" for none
    };
    constexpr Row kRows[] = {
        {L"LOUD.XML", L"", "LOUD.XML.xml"},
        {L"a.xml.b", L"", "a.xml.b"},
        {L"", L"", "P001-C.XML"},
        {L"", L"060a2b34", "P001AB.XML"},
        {L"", L"0123456789", "P001.XML"},
        {L"", L"1x2", "P001X.XML"},
        {L"", L"00\u00E9-q", "P001\u00C9-.XML"},
        {L"..\\out", L""},
        {L"/tmp/out", L""},
        {L"", L"/x"},
        {L"", L"\n\n060A"},
        {L"", L"*?"},
    };
    AddClip("0001AA");
    m_card.Folder().MakeFolder("EDITLIST/P001");
    for (const auto& [name, identifier, file] : kRows) {
        tag_P2EDL edl = OneEvent();
        edl.Events.InsertAt(0, Event(L"none", L""));
        edl.Events[0].GlobalClipID = identifier;
        edl.Events[0].GlobalClipGuid = {0x12, 0x3c, 0x4d, {}}; // in place of an empty identifier
        const bool isMade = *file != '\0';
        EXPECT_EQ(Save(edl, name), isMade ? 0 : 1) << CString(name) << CString(identifier);
        std::set<std::string> files = FilesInFolder();
        EXPECT_EQ(files.erase("P001") + files.erase(file), isMade ? 2U : 1U) << file;
        EXPECT_TRUE(files.empty() && fs::is_empty(m_card.Folder().Path("EDITLIST/P001")));
        fs::remove(m_card.Folder().Path("EDITLIST/" + std::string(isMade ? file : "none")));
    }
}

TEST_F(EdlWriterTest, WithoutFlagOrNameTheNextNumberIsTakenThatNoFileHasInAnyLetters) {
    AddClip("0001AA");
    for (const char* const name : {"P001XY.XML", "P002XY.XML", "P999AB.XML", "p003ab.xml"}) {
        AddFile(name, "theirs");
    }
    m_card.Folder().MakeFolder("EDITLIST/P004AB.XML");
    EXPECT_EQ(m_parser.SaveToEdl(m_card.Root(), OneEvent(), 0, L"ignored"), 0);
    EXPECT_EQ(Bytes("p003ab.xml"), "theirs");
    EXPECT_TRUE(FilesInFolder().contains("P005AB.XML"));
}

TEST_F(EdlWriterTest, WhatCannotBeWrittenOrReadAgainLeavesTheOldFile) {
    AddClip("0001AA");
    AddFile("MINE.xml", "old");
    tag_P2EDL noXml = OneEvent();
    noXml.Events[0].P2SerialNo = L"\x01";
    tag_P2EDL wordy = OneEvent();
    wordy.Events[0].P2SerialNo = CString(std::wstring(kMaxText, L'7'));
    tag_P2EDL tooLong = OneEvent();
    tooLong.Events.SetSize(static_cast<std::int64_t>(kMaxEvents) + 1);
    for (const tag_P2EDL& edl : {tag_P2EDL(), noXml, wordy, tooLong}) {
        EXPECT_EQ(Save(edl, L"MINE"), 1);
        EXPECT_EQ(Save(edl), 1);
    }
    m_parser.Release();
    EXPECT_EQ(Save(OneEvent(), L"MINE"), 1) << "no document";
    m_parser.Init();
    fs::remove_all(m_card.Folder().Path("CONTENTS"));
    EXPECT_EQ(Save(OneEvent(), L"MINE"), 1) << "no contents";
    EXPECT_EQ(Bytes("MINE.xml"), "old");
    EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml"));
}

using Peer = parser::NQP2ParserPeer;

class EdlNameTest : public EdlTest {
protected:
    EdlNameTest() { m_card.Folder().MakeFolder("EDITLIST"); }

    /// The new name, or "full".
    std::string NewName() {
        CString name = L"full";
        const bool found = Peer::GetNewEdlName(m_parser, m_card.Root(), L"AB", name) == 0;
        EXPECT_TRUE(found || name == L"full") << name;
        return platform::Utf8FromText(name.View());
    }
};

TEST_F(EdlNameTest, TheNumberFollowsTheLargestUpTo999AndIsTheLowestGapBehindIt) {
    const std::pair<std::vector<const char*>, const char*> steps[] = {
        {{"P001AB.XML"}, "P002AB.XML"},
        {{"P007CD.XML", "P900.TXT", "P-50.XML", "PP99.XML"}, "P008AB.XML"},
        {{"x041.xml"}, "P042AB.XML"}, // whatever letter is in front
        {{"P998AB.XML"}, "P999AB.XML"},
        {{"P999AB.XML"}, "P002AB.XML"},
        {{"xP002.XML", "p003ab.XML"}, "P003AB.XML"}, // anywhere in the title; letter case counts
        {{"P99999999999.XML"}, "P003AB.XML"},
    };
    m_card.Folder().MakeFolder("EDITLIST/P800AB.XML");
    for (const auto& [added, name] : steps) {
        for (const char* const file : added) {
            AddFile(file, "");
        }
        EXPECT_EQ(NewName(), name);
    }
    const CString pattern = m_card.Root() + L"\\EDITLIST\\*.XML";
    for (const auto& [number, taken] : {std::pair(7, 1), {2, 1}, {3, 0}, {900, 0}, {800, 0}}) {
        EXPECT_EQ(Peer::CheckEdlSerialNumber(m_parser, number, pattern), taken) << number;
    }
    fs::remove_all(m_card.Folder().Path("EDITLIST"));
    EXPECT_EQ(Peer::CheckEdlSerialNumber(m_parser, 7, pattern), 0);
    EXPECT_EQ(NewName(), "full");
}

class EdlFaultsTest : public EdlTest {
protected:
    EdlFaultsTest() {
        AddClip("0001AA");
        AddFile("MINE.xml", "old");
    }
    /// A failure comes with a reason, success with none.
    __int64 Save(const tag_P2EDL& edl = OneEvent(), const CString& name = L"MINE") {
        m_report = {};
        const __int64 result = m_parser.SaveToEdl(m_card.Root(), edl, 1, name, m_report);
        EXPECT_EQ(result == 0, m_report.failure.IsEmpty());
        return result;
    }
    ScanReport m_report;
};

/// With every call failing in turn, and with every call from one on.
TEST_F(EdlFaultsTest, WhateverCallFailsTheOldFileOrTheNewOneIsWhole) {
    FaultyFileSystem counter;
    {
        const platform::ScopedFileSystem inPlace(counter);
        ASSERT_EQ(Save(), 0);
    }
    const std::string whole = Bytes("MINE.xml");
    for (std::uint64_t call = 0; call < counter.Calls(); ++call) {
        for (const std::uint64_t times : {std::uint64_t{1}, counter.Calls()}) {
            AddFile("MINE.xml", "old");
            FaultyFileSystem faulty;
            faulty.Fail({.error = IoError::NoSpace, .skip = call, .times = times});
            __int64 result = 0;
            {
                const platform::ScopedFileSystem inPlace(faulty);
                result = Save();
            }
            EXPECT_EQ(Bytes("MINE.xml"), result == 0 ? whole : "old") << "call " << call;
            EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml"));
        }
    }
}

TEST_F(EdlFaultsTest, TheReasonIsTold) {
    m_card.Folder().Write("CONTENTS/CLIP/0002BB.XML", "<a>");
    tag_P2EDL edl;
    const std::pair<CString, const char*> clips[] = {
        {L"", "has no events"},
        {L"0002BB", "the metadata of clip 0002BB cannot be read"},
        {L"0003CC", "no event's ClipName and GlobalClipID are those of a clip"}};
    for (const auto& [clip, reason] : clips) {
        edl.Events.RemoveAll();
        if (!clip.IsEmpty()) {
            edl.Events.Add(Event(clip, kClipID));
        }
        EXPECT_EQ(Save(edl), 1);
        EXPECT_THAT(platform::Utf8FromText(m_report.failure.View()), HasSubstr(reason));
    }
    EXPECT_EQ(Save(OneEvent(), L"a?b"), 1);
    EXPECT_THAT(platform::Utf8FromText(m_report.failure.View()), HasSubstr("a?b.xml is no name"));
}

TEST_F(EdlFaultsTest, NoFileIsReplacedWhenOthersWriteTooAndTheSearchForANameEnds) {
    // Another writer takes the two names that come next, in the last moment.
    FaultyFileSystem busy;
    int taken = 0;
    busy.SetHook([&](Operation operation, const std::string&) {
        if (operation == Operation::Commit && ++taken <= 2) {
            AddFile("P00" + std::to_string(taken) + "AB.XML", "theirs");
        }
    });
    const platform::ScopedFileSystem inPlace(busy);
    EXPECT_EQ(SaveOnCard(OneEvent()), "EDITLIST\\P003AB.XML");
    EXPECT_EQ(Bytes("P001AB.XML"), "theirs");
    EXPECT_EQ(Bytes("P002AB.XML"), "theirs");
    EXPECT_EQ(FilesInFolder().size(), 4U);
    busy.Fail({.error = IoError::Exists, .operation = Operation::Commit});
    EXPECT_EQ(SaveOnCard(OneEvent()), "");
    EXPECT_EQ(FilesInFolder().size(), 4U);
}

TEST_F(EdlFaultsTest, NothingIsWrittenThroughLinksOrInAFoldersPlace) {
    const test::TempFolder outside;
    const std::string theirs = outside.Write("MINE.xml", "theirs");
    const std::string folder = m_card.Folder().Path("EDITLIST");
    const std::string mine = folder + "/MINE.xml";
    fs::remove(mine);
    for (const char* target : {"MINE.xml", "none.xml"}) {
        fs::create_symlink(outside.Path(target), mine);
        EXPECT_EQ(Save(), 1);
        fs::remove(mine);
    }
    fs::create_directory(mine);
    EXPECT_EQ(Save(), 1);
    fs::remove_all(folder);
    fs::create_symlink(outside.Path(), m_card.Folder().Path("CONTENTS/EDITLIST"));
    EXPECT_EQ(SaveOnCard(OneEvent()), "");
    m_card.Folder().Write("EDITLIST", "a file");
    EXPECT_EQ(Save(), 1);
    fs::remove(folder);
    fs::create_symlink(outside.Path(), folder);
    EXPECT_EQ(Save(), 1);
    fs::remove(folder);
    fs::create_directory(folder);
    int done = 0;
    {
        const test::SwappingLink swapping(folder, outside.Path());
        for (int round = 0; round < 250; ++round) {
            done += Save() == 0 ? 1 : 0;
            done += m_parser.SaveToEdl(m_card.Root(), OneEvent(), 0, L"") == 0 ? 1 : 0;
        }
    }
    EXPECT_GT(done, 0);
    EXPECT_THAT(std::distance(fs::directory_iterator(outside.Path()), {}), 1);
    EXPECT_EQ(fs::file_size(theirs), 6U);
}

} // namespace
} // namespace nqp2::edl
