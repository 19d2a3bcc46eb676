// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_layout.h"
#include "platform/guid_text.h"
#include "tests/edl/edl_test.h"
#include "tests/support/child_process.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/swapping_link.h"

#include <atomic>
#include <sys/resource.h>
#include <thread>
#include <vector>

namespace nqp2::edl {
namespace {

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

TEST_F(EdlWriterTest, TheTreeIsWrittenInOrderAndReadBack) {
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
    const tag_P2EDL back = LoadOnly();
    EXPECT_EQ(back.EditUnit.Denominator, 30000);
    ASSERT_EQ(back.Events.GetSize(), 2);
    EXPECT_EQ(back.Events[0].P2SerialNo, L"A&B<1>");
    EXPECT_EQ(back.Events[0].SourceOut, 1858);
    EXPECT_EQ(back.Events[0].GlobalClipGuid, edl.Events[0].GlobalClipGuid);
}

TEST_F(EdlWriterTest, ClassAndTimecodesAreThoseOfTheReference) {
    const std::tuple<const char*, const char*, const char*> codecs[] = {
        {"AVC-I_1080/50i", "50", R"(<Codec Class="50">AVC-I_1080/50i</Codec>)"},
        {"AVC-I_1080/50i", "", R"(<Codec Class="100">AVC-I_1080/50i</Codec>)"},
        {"AVC-I_720/50p", "50", "<Codec>AVC-I_720/50p</Codec>"},
        {"avc-i_1080/50i", "50", "<Codec>avc-i_1080/50i</Codec>"},
    };
    for (const auto& [codec, codecClass, element] : codecs) {
        AddClip("0001AA", {{"EssenceList/Video/Codec", codec},
                           {"EssenceList/Video/Codec@Class", codecClass}});
        EXPECT_THAT(Written(OneEvent()), HasSubstr(element));
    }
    const std::tuple<const char*, std::int32_t, const char*> rates[] = {
        {"25P", 100, "00:00:04:00"},       {"59.94i", 100, "00:00:03:10"},
        {"23.98p", 100, "00:00:04:04"},    {"59.94p", 100, "00:00:01:40"},
        {"50i", INT32_MIN, "--:--:--:--"},
    };
    for (const auto& [rate, offset, in] : rates) {
        AddClip("0001AA", {{"EssenceList/Video/FrameRate", rate}});
        tag_P2EDL edl = OneEvent();
        edl.Events[0].SourceOffset = offset;
        EXPECT_THAT(Written(edl), HasSubstr(std::string("<InTimecode>") + in + "<")) << rate;
    }
}

TEST_F(EdlWriterTest, TheReferenceIsTheFirstClipThatIsThereAndFits) {
    tag_P2EDL edl;
    for (const wchar_t* name : {L"0001AA", L"..\\CLIP\\0005AA", L"0002AA", L"0003aa", L"0004AA"}) {
        edl.Events.Add(Event(name, kClipID));
    }
    AddClip("0005AA", {{"EditUnit", "reached from outside"}});
    m_card.Folder().MakeFolder("CONTENTS/CLIP/0001AA.XML");
    AddClip("0002AA",
            {{"GlobalClipID", "060A2B340101010501010D4313000000798AE7C6A09E4B6FA5A11F6E2D0"
                              "8E5C1"}}); // another clip
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

TEST_F(EdlWriterTest, GivenNamesGainAnExtensionUnlessTheyHoldIt) {
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"MYEDIT", "MYEDIT.xml"}, {L"MYEDIT.xml", "MYEDIT.xml"},   {L"LOUD.XML", "LOUD.XML.xml"},
        {L"a.xml.b", "a.xml.b"},   {L"caf\u00E9", "caf\u00E9.xml"},
    };
    AddClip("0001AA");
    for (const auto& [name, file] : rows) {
        EXPECT_EQ(Save(OneEvent(), name), 0);
        EXPECT_THAT(FilesInFolder(), ElementsAre(file));
        std::filesystem::remove(m_card.Folder().Path("EDITLIST/" + std::string(file)));
    }
}

TEST_F(EdlWriterTest, WithoutFlagOrNameTheNextNumberIsTakenThatNoFileHasInAnyLetters) {
    AddClip("0001AA");
    EXPECT_EQ(m_parser.SaveToEdl(m_card.Root(), OneEvent(), 0, L"ignored"), 0);
    tag_P2EDL edl = OneEvent();
    edl.Events.InsertAt(0, Event(L"none", L""));
    edl.Events[0].GlobalClipGuid = {0x12, 0x3c, 0x4d, {}};
    EXPECT_EQ(Save(edl, L""), 0) << "named after the GUID when there is no text";
    EXPECT_THAT(FilesInFolder(), ElementsAre("P001AB.XML", "P002-C.XML"));
    AddFile("P999AB.XML", "theirs");
    AddFile("p003ab.xml", "theirs");
    m_card.Folder().MakeFolder("EDITLIST/P004AB.XML");
    EXPECT_EQ(Save(OneEvent()), 0);
    EXPECT_EQ(Bytes("p003ab.xml"), "theirs");
    EXPECT_TRUE(FilesInFolder().contains("P005AB.XML"));
}

TEST_F(EdlWriterTest, ACardsOwnListsAreNumberedThroughAndLieWhereItKeepsThem) {
    AddClip("0001AA");
    m_card.Folder().Write("CONTENTS/EDITLIST/P004AB.XML");
    EXPECT_EQ(SaveOnCard(OneEvent()), "CONTENTS\\EDITLIST\\P005AB.XML");
    AddFile("P001AB.XML", "");
    EXPECT_EQ(SaveOnCard(OneEvent()), "EDITLIST\\P006AB.XML");
}

TEST_F(EdlWriterTest, NamesLeadNowhereElseAndFitACard) {
    AddClip("0001AA");
    for (const wchar_t* name :
         {L"..\\out", L"/tmp/out", L"a/b", L"C:out", L"CON:", L"a\n", L"what?", L"<a>"}) {
        EXPECT_EQ(Save(OneEvent(), name), 1) << CString(name);
    }
    m_card.Folder().MakeFolder("EDITLIST/P001");
    tag_P2EDL edl = OneEvent();
    edl.Events.InsertAt(0, Event(L"none", L""));
    for (const wchar_t* identifier : {L"/x", L"\n\n060A", L"*?"}) {
        edl.Events[0].GlobalClipID = identifier;
        EXPECT_EQ(Save(edl, L""), 1) << CString(identifier);
    }
    EXPECT_THAT(FilesInFolder(), ElementsAre("P001"));
    EXPECT_TRUE(std::filesystem::is_empty(m_card.Folder().Path("EDITLIST/P001")));
}

TEST_F(EdlWriterTest, FailuresLeaveNothingButTheFolder) {
    const tag_P2EDL edl = OneEvent();
    EXPECT_EQ(Save(edl), 1) << "no clip on the card";
    EXPECT_TRUE(FilesInFolder().empty()) << "the folder was made";
    AddClip("0001AA");
    EXPECT_EQ(Save(tag_P2EDL()), 1) << "no events";
    tag_P2EDL unwritable = edl;
    unwritable.Events[0].P2SerialNo = L"\x01";
    EXPECT_EQ(Save(unwritable), 1) << "XML cannot hold the text";
    EXPECT_EQ(Save(unwritable, L"x"), 1);
    m_parser.Release();
    EXPECT_EQ(Save(edl, L"x"), 1) << "no document";
    m_parser.Init();
    std::filesystem::rename(m_card.Folder().Path("CONTENTS"), m_card.Folder().Path("ELSEWHERE"));
    EXPECT_EQ(Save(edl, L"x"), 1) << "no contents";
    EXPECT_TRUE(FilesInFolder().empty());
}

using Peer = parser::NQP2ParserPeer;

class EdlNameTest : public EdlTest {
protected:
    EdlNameTest() { m_card.Folder().MakeFolder("EDITLIST"); }

    /// The new name, or "full".
    std::string NewName(const CString& id = L"AB") {
        CString name = L"untouched";
        const bool found = Peer::GetNewEdlName(m_parser, m_card.Root(), id, name) == 0;
        EXPECT_TRUE(found || name == L"untouched") << name;
        return found ? platform::Utf8FromText(name.View()) : "full";
    }
    void AddNumbers(int first, int last) const {
        for (int number = first; number <= last; ++number) {
            char name[16];
            std::snprintf(name, sizeof name, "P%03dXY.XML", number);
            AddFile(name, "");
        }
    }
};

TEST_F(EdlNameTest, TheSuffixIsTheFirstTwoThatAreNoDigits) {
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"060a2b34", "P001AB.XML"}, {L"0123456789", "P001.XML"},        {L"", "P001.XML"},
        {L"1x2", "P001X.XML"},       {L"00\u00E9-q", "P001\u00C9-.XML"},
    };
    for (const auto& [id, name] : rows) {
        EXPECT_EQ(NewName(id), name);
    }
}

TEST_F(EdlNameTest, AFolderThatIsMissingOrCannotBeListedGivesNoNumber) {
    AddNumbers(1, 5);
    test::FaultyFileSystem files;
    files.Fail({.operation = test::Operation::List, .pathPart = "EDITLIST", .keptEntries = 2});
    {
        const platform::ScopedFileSystem inUse(files);
        EXPECT_EQ(NewName(), "full");
    }
    std::filesystem::remove_all(m_card.Folder().Path("EDITLIST"));
    EXPECT_EQ(NewName(), "full");
}

TEST_F(EdlNameTest, TheNumberFollowsTheLargestUpTo999AndIsTheLowestGapBehindIt) {
    const std::pair<std::vector<const char*>, const char*> steps[] = {
        {{"P001AB.XML"}, "P002EF.XML"},
        {{"P007CD.XML", "P900.TXT", "P-50.XML", "PP99.XML"}, "P008EF.XML"},
        {{"x041.xml"}, "P042EF.XML"}, // whatever letter is in front
        {{"P998AB.XML"}, "P999EF.XML"},
        {{"P999AB.XML"}, "P002EF.XML"},
        {{"xP002.XML", "p003ab.XML"}, "P003EF.XML"}, // anywhere in the title; letter case counts
        {{"P99999999999.XML"}, "P003EF.XML"},
    };
    m_card.Folder().MakeFolder("EDITLIST/P800AB.XML");
    for (const auto& [added, name] : steps) {
        for (const char* const file : added) {
            AddFile(file, "");
        }
        EXPECT_EQ(NewName(L"EF"), name);
    }
    const CString pattern = m_card.Root() + L"\\EDITLIST\\*.XML";
    for (const auto& [number, taken] : {std::pair(7, 1), {2, 1}, {3, 0}, {900, 0}, {800, 0}}) {
        EXPECT_EQ(Peer::CheckEdlSerialNumber(m_parser, number, pattern), taken) << number;
    }
    EXPECT_EQ(Peer::CheckEdlSerialNumber(m_parser, 7, m_card.Root() + L"\\NONE\\*.XML"), 0);
}

TEST_F(EdlNameTest, AFolderOf999IsFullAndOneOfMoreGoesOnAbove) {
    AddClip("0001AA");
    AddNumbers(1, 998);
    AddFile("other.xml", "");
    EXPECT_EQ(NewName(), "P999AB.XML") << "999 files, but room behind the largest number";
    AddNumbers(1000, 1000);
    EXPECT_EQ(NewName(), "P1001AB.XML");
    std::filesystem::remove(m_card.Folder().Path("EDITLIST/other.xml"));
    EXPECT_EQ(NewName(), "full");
    EXPECT_EQ(m_parser.SaveToEdl(m_card.Root(), OneEvent(), 0, L""), 1);
    EXPECT_EQ(FilesInFolder().size(), 999U);
    AddNumbers(1001, 1001);
    EXPECT_EQ(NewName(), "P1002AB.XML") << "999 is not tried";
}

using platform::IoError;
using test::FaultyFileSystem;
using test::Operation;

class EdlFaultsTest : public EdlTest {
protected:
    EdlFaultsTest() {
        AddClip("0001AA");
        AddFile("MINE.xml", "old");
    }
    __int64 Save() { return m_parser.SaveToEdl(m_card.Root(), OneEvent(), 1, L"MINE"); }
    void ExpectOldFileAlone() const {
        EXPECT_EQ(Bytes("MINE.xml"), "old");
        EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml"));
    }
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

TEST_F(EdlFaultsTest, ANumberIsNeverGivenTwiceAndNoFileReplacedWhenOthersWriteToo) {
    // Another writer takes the two names that come next, in the last moment.
    FaultyFileSystem busy;
    int taken = 0;
    busy.SetHook([&](Operation operation, const std::string&) {
        if (operation == Operation::Commit && ++taken <= 2) {
            AddFile("P00" + std::to_string(taken) + "AB.XML", "theirs");
        }
    });
    {
        const platform::ScopedFileSystem inPlace(busy);
        EXPECT_EQ(m_parser.SaveToEdl(m_card.Root(), OneEvent(), 0, L""), 0);
    }
    EXPECT_EQ(busy.Calls(Operation::List), 1U) << "one look, however many names are tried";
    EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml", "P001AB.XML", "P002AB.XML", "P003AB.XML"));
    EXPECT_EQ(Bytes("P001AB.XML"), "theirs");
    constexpr int kWriters = 8;
    std::atomic<__int64> failed = 0;
    {
        std::vector<std::jthread> writers;
        for (int i = 0; i < kWriters; ++i) {
            writers.emplace_back([&] {
                CNQP2Parser parser;
                parser.Init();
                failed += parser.SaveToEdl(m_card.Root(), OneEvent(), 0, L"");
                parser.Release();
            });
        }
    }
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(FilesInFolder().size(), 4U + kWriters);
}

TEST_F(EdlFaultsTest, WithoutAFreeNameNothingIsLeftAndTheSearchEnds) {
    for (const IoError error : {IoError::Exists, IoError::NoSpace}) {
        FaultyFileSystem faulty;
        faulty.Fail({.error = error, .operation = Operation::Commit});
        const platform::ScopedFileSystem inPlace(faulty);
        EXPECT_EQ(SaveOnCard(OneEvent()), "");
        ExpectOldFileAlone();
    }
}

TEST_F(EdlFaultsTest, FoldersAndFilesInEachOthersPlaceAreAFailure) {
    std::filesystem::remove(m_card.Folder().Path("EDITLIST/MINE.xml"));
    m_card.Folder().MakeFolder("EDITLIST/MINE.xml");
    EXPECT_EQ(Save(), 1);
    EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml"));
    EXPECT_TRUE(std::filesystem::is_empty(m_card.Folder().Path("EDITLIST/MINE.xml")));
    std::filesystem::remove_all(m_card.Folder().Path("EDITLIST"));
    m_card.Folder().Write("EDITLIST", "a file");
    EXPECT_EQ(Save(), 1);
    EXPECT_TRUE(std::filesystem::is_regular_file(m_card.Folder().Path("EDITLIST")));
}

TEST_F(EdlFaultsTest, NothingIsWrittenThroughLinks) {
    const test::TempFolder outside;
    const std::string theirs = outside.Write("MINE.xml", "theirs");
    const std::string folder = m_card.Folder().Path("EDITLIST");
    std::filesystem::remove(folder + "/MINE.xml");
    for (const char* target : {"MINE.xml", "none.xml"}) {
        std::filesystem::create_symlink(outside.Path(target), folder + "/MINE.xml");
        EXPECT_EQ(Save(), 1);
        std::filesystem::remove(folder + "/MINE.xml");
    }
    std::filesystem::remove(folder);
    std::filesystem::create_symlink(outside.Path(), folder);
    EXPECT_EQ(Save(), 1);
    EXPECT_EQ(SaveOnCard(OneEvent()), "");
    std::filesystem::remove(folder);
    std::filesystem::create_symlink(outside.Path(), m_card.Folder().Path("CONTENTS/EDITLIST"));
    EXPECT_EQ(SaveOnCard(OneEvent()), "");
    std::filesystem::create_directory(folder);
    int done = 0;
    {
        const test::SwappingLink swapping(folder, outside.Path());
        for (int round = 0; round < 250; ++round) {
            done += Save() == 0 ? 1 : 0;
            done += m_parser.SaveToEdl(m_card.Root(), OneEvent(), 0, L"") == 0 ? 1 : 0;
        }
    }
    EXPECT_GT(done, 0);
    EXPECT_THAT(std::distance(std::filesystem::directory_iterator(outside.Path()), {}), 1);
    EXPECT_EQ(std::filesystem::file_size(theirs), 6U);
    EXPECT_TRUE(FilesInFolder().contains("MINE.xml")) << "the folder itself was written";
}

TEST_F(EdlFaultsTest, ALimitOfFileSizesIsAFailureAndNoSignal) {
    EXPECT_EQ(test::RunInChild([&] {
                  const rlimit limit = {100, 100};
                  return setrlimit(RLIMIT_FSIZE, &limit) == 0 && Save() == 1 &&
                                 SaveOnCard(OneEvent()).empty()
                             ? 0
                             : 1;
              }),
              0);
    ExpectOldFileAlone();
}

TEST_F(EdlFaultsTest, LeftoversAreSweptAndMissingClipsCostOneLook) {
    tag_P2EDL edl;
    for (int i = 0; i < 1000; ++i) {
        edl.Events.Add(Event(L"none", kClipID));
    }
    edl.Events.Add(Event(L"0001aa", kClipID));
    FaultyFileSystem counter;
    const platform::ScopedFileSystem inPlace(counter);
    AddFile(".nqp2-killed.part", "half");
    EXPECT_EQ(m_parser.SaveToEdl(m_card.Root(), edl, 1, L"MINE"), 0);
    EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml"));
    EXPECT_EQ(counter.Calls(Operation::List), 1U);
    AddFile(".nqp2-killed.tmp", "half");
    EXPECT_EQ(m_parser.SaveToEdl(m_card.Root(), edl, 0, L""), 0);
    EXPECT_THAT(FilesInFolder(), ElementsAre("MINE.xml", "P001AB.XML"));
}

TEST_F(EdlFaultsTest, WhatCouldNotBeReadAgainIsNotWritten) {
    tag_P2EDL wordy = OneEvent();
    wordy.Events[0].P2SerialNo = CString(std::wstring(kMaxText, L'7'));
    tag_P2EDL longOne = OneEvent();
    longOne.Events.SetSize(static_cast<std::int64_t>(kMaxEvents) + 1);
    for (const tag_P2EDL* const edl : {&wordy, &longOne}) {
        EXPECT_EQ(m_parser.SaveToEdl(m_card.Root(), *edl, 1, L"MINE"), 1);
        ExpectOldFileAlone();
    }
}

TEST_F(EdlFaultsTest, EveryLossOfAScanIsTold) {
    std::filesystem::remove(m_card.Folder().Path("EDITLIST/MINE.xml"));
    for (const char* name : {"P001.XML", "P002.XML", "P003.XML"}) {
        AddEdl(name);
    }
    FaultyFileSystem faulty;
    faulty.Fail({.operation = Operation::List, .times = 1, .keptEntries = 2});
    faulty.Fail({.operation = Operation::Read, .times = 1});
    faulty.Fail({.error = IoError::Denied, .operation = Operation::Stat, .pathPart = "CONTENTS"});
    const platform::ScopedFileSystem inPlace(faulty);
    CArray<tag_P2EDL> edls;
    EXPECT_EQ(m_parser.LoadCardEdls(m_card.Root(), edls, m_report), 0);
    EXPECT_EQ(edls.GetSize(), 1) << "two were listed, one of them could not be read";
    std::vector<SkipReason> reasons;
    for (const SkippedFile& file : m_report.skipped) {
        reasons.push_back(file.reason);
        EXPECT_EQ(file.text, L"made to fail");
    }
    EXPECT_THAT(reasons, ElementsAre(SkipReason::Unreadable, SkipReason::FolderUnreadable,
                                     SkipReason::FolderUnreadable));
}

} // namespace
} // namespace nqp2::edl
