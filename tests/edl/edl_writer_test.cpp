// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/guid_text.h"
#include "tests/edl/edl_test.h"

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
    EXPECT_EQ(back.Name, L"written");
    EXPECT_EQ(back.Duration, 135);
    EXPECT_EQ(back.StartTimecode, 0);
    EXPECT_EQ(back.EditUnit.Denominator, 30000);
    ASSERT_EQ(back.Events.GetSize(), 2);
    EXPECT_EQ(back.Events[0].P2SerialNo, L"A&B<1>");
    EXPECT_EQ(back.Events[0].SourceOut, 1858);
    EXPECT_EQ(back.Events[0].GlobalClipGuid, edl.Events[0].GlobalClipGuid);
    EXPECT_EQ(back.Events[1].GlobalClipGuid, edl.Events[1].GlobalClipGuid);
    EXPECT_EQ(back.Events[1].Offset, 60);
}

TEST_F(EdlWriterTest, TheClassIsWrittenForOneCodecAlone) {
    const struct {
        const char* codec;
        const char* codecClass;
        const char* element;
    } rows[] = {
        {"AVC-I_1080/50i", "50", R"(<Codec Class="50">AVC-I_1080/50i</Codec>)"},
        {"AVC-I_1080/50i", "100", R"(<Codec Class="100">AVC-I_1080/50i</Codec>)"},
        {"AVC-I_1080/50i", "", R"(<Codec Class="100">AVC-I_1080/50i</Codec>)"},
        {"AVC-I_1080/25p", "50", "<Codec>AVC-I_1080/25p</Codec>"},
        {"AVC-I_720/50p", "50", "<Codec>AVC-I_720/50p</Codec>"},
        {"AVC-I_720/59.94p", "50", "<Codec>AVC-I_720/59.94p</Codec>"},
        {"DV25_411", "50", "<Codec>DV25_411</Codec>"},
    };
    for (const auto& row : rows) {
        AddClip("0001AA", {{"EssenceList/Video/Codec", row.codec},
                           {"EssenceList/Video/Codec@Class", row.codecClass}});
        EXPECT_THAT(Written(OneEvent()), HasSubstr(row.element));
    }
}

TEST_F(EdlWriterTest, TimecodesCountAtTheReferencesRate) {
    const std::pair<const char*, const char*> rows[] = {
        {"50i", "00:00:04:00"},    {"25P", "00:00:04:00"}, {"59.94i", "00:00:03:10"},
        {"23.98p", "00:00:04:04"}, {"50p", "00:00:02:00"}, {"59.94p", "00:00:01:40"},
    };
    for (const auto& [rate, in] : rows) {
        AddClip("0001AA", {{"EssenceList/Video/FrameRate", rate}});
        tag_P2EDL edl = OneEvent();
        edl.Events[0].SourceOffset = 100;
        EXPECT_THAT(Written(edl), HasSubstr(std::string("<InTimecode>") + in + "<")) << rate;
    }
    tag_P2EDL edl = OneEvent();
    edl.Events[0].SourceOffset = INT32_MAX;
    edl.Events[0].Duration = INT32_MAX;
    EXPECT_THAT(Written(edl), HasSubstr("<OutTimecode>--:--:--:--<"));
    edl.Events[0].SourceOffset = INT32_MIN;
    edl.Events[0].Duration = INT32_MIN;
    EXPECT_THAT(Written(edl), HasSubstr("<InTimecode>--:--:--:--<"));
}

TEST_F(EdlWriterTest, TheReferenceIsTheFirstClipThatIsThereAndFits) {
    tag_P2EDL edl;
    for (const wchar_t* name : {L"0001AA", L"..\\CLIP\\0005AA", L"0002AA", L"0003aa", L"0004AA"}) {
        edl.Events.Add(Event(name, kClipID));
    }
    AddClip("0005AA", {{"EditUnit", "reached from outside"}});
    m_card.Folder().MakeFolder("CONTENTS/CLIP/0001AA.XML");
    AddClip("0002AA", {{"GlobalClipID", "of another clip"}});
    EXPECT_EQ(Save(edl), 1) << "none there";
    AddClip("0004AA", {{"EditUnit", "fourth"}});
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

TEST_F(EdlWriterTest, WithoutFlagOrNameTheNextNumberIsTaken) {
    AddClip("0001AA");
    EXPECT_EQ(m_parser.SaveToEdl(m_card.Root(), OneEvent(), 0, L"ignored"), 0);
    EXPECT_EQ(Save(OneEvent(), L""), 0);
    tag_P2EDL edl = OneEvent();
    edl.Events.InsertAt(0, Event(L"none", L""));
    edl.Events[0].GlobalClipGuid = {0x12, 0x3c, 0x4d, {}};
    EXPECT_EQ(Save(edl, L""), 0) << "named after the GUID when there is no text";
    EXPECT_THAT(FilesInFolder(), ElementsAre("P001AB.XML", "P002AB.XML", "P003-C.XML"));
}

TEST_F(EdlWriterTest, ANumberThatAFileInOtherLettersHasIsPassedOver) {
    AddClip("0001AA");
    for (const char* name : {"P999AB.XML", "p001ab.xml"}) {
        AddFile(name, "theirs");
    }
    m_card.Folder().MakeFolder("EDITLIST/P002AB.XML");
    EXPECT_EQ(Save(OneEvent()), 0);
    EXPECT_EQ(Bytes("p001ab.xml"), "theirs");
    EXPECT_THAT(FilesInFolder(),
                ElementsAre("P002AB.XML", "P003AB.XML", "P999AB.XML", "p001ab.xml"));
}

TEST_F(EdlWriterTest, ACardsOwnListsAreNumberedThroughAndLieWhereItKeepsThem) {
    AddClip("0001AA");
    m_card.Folder().Write("CONTENTS/EDITLIST/P004AB.XML");
    EXPECT_EQ(SaveOnCard(OneEvent()), "CONTENTS\\EDITLIST\\P005AB.XML");
    AddFile("P001AB.XML", "");
    EXPECT_EQ(SaveOnCard(OneEvent()), "EDITLIST\\P006AB.XML");
    std::filesystem::remove_all(m_card.Folder().Path("CONTENTS/EDITLIST"));
    EXPECT_EQ(SaveOnCard(OneEvent()), "EDITLIST\\P007AB.XML");
}

TEST_F(EdlWriterTest, NamesLeadNowhereElse) {
    AddClip("0001AA");
    for (const wchar_t* name : {L"..\\out", L"/tmp/out", L"a/b", L"C:out", L"CON:"}) {
        EXPECT_EQ(Save(OneEvent(), name), 1) << CString(name);
    }
    m_card.Folder().MakeFolder("EDITLIST/P001");
    tag_P2EDL edl = OneEvent();
    edl.Events.InsertAt(0, Event(L"none", L"/x"));
    EXPECT_EQ(Save(edl, L""), 1);
    EXPECT_THAT(FilesInFolder(), ElementsAre("P001"));
    EXPECT_TRUE(std::filesystem::is_empty(m_card.Folder().Path("EDITLIST/P001")));
}

TEST_F(EdlWriterTest, FailuresLeaveNothingButTheFolder) {
    const tag_P2EDL edl = OneEvent();
    EXPECT_EQ(Save(edl), 1) << "no clip on the card";
    EXPECT_TRUE(FilesInFolder().empty()) << "the folder was made";
    AddClip("0001AA");
    EXPECT_EQ(Save(tag_P2EDL()), 1) << "no events";
    for (int number = 1; number <= 999; ++number) {
        AddFile("P" + std::to_string(number) + ".XML", "");
    }
    EXPECT_EQ(Save(edl, L""), 1) << "full";
    EXPECT_EQ(FilesInFolder().size(), 999U);
    m_parser.Release();
    EXPECT_EQ(Save(edl, L"x"), 1) << "no document";
    EXPECT_EQ(FilesInFolder().size(), 999U);
    m_parser.Init();
    std::filesystem::rename(m_card.Folder().Path("CONTENTS"), m_card.Folder().Path("ELSEWHERE"));
    EXPECT_EQ(Save(edl, L"x"), 1) << "no contents";
    EXPECT_EQ(FilesInFolder().size(), 999U);
}

} // namespace
} // namespace nqp2::edl
