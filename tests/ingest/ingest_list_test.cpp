// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/DebugOutput.h"
#include "tests/ingest/ingest_test.h"
#include "tests/xml/captured_texts.h"

namespace nqp2::ingest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using IngestListTest = IngestTest;

TEST_F(IngestListTest, AFreshCardGetsFolderAndFile) {
    EXPECT_EQ(Add({{L"0002BB", {{INT32_MIN, INT32_MAX}}}, {L"0001AA", {{0, 9}, {20, 29}}}}), 0);
    EXPECT_EQ(File(), "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\r\n"
                      "<Media MediaID=\"P2\">"
                      "<Clip ClipName=\"0001AA\"><Segment InPoint=\"0\" OutPoint=\"9\"/>"
                      "<Segment InPoint=\"20\" OutPoint=\"29\"/></Clip>"
                      "<Clip ClipName=\"0002BB\">"
                      "<Segment InPoint=\"-2147483648\" OutPoint=\"2147483647\"/></Clip>"
                      "</Media>\r\n");
    EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
}

TEST_F(IngestListTest, SegmentsAreAppendedToTheirClips) {
    SetFile("<Media MediaID=\"P2\" Kept=\"1\">\n <!-- kept -->\n"
            " <Clip ClipName=\"0002bb\" Kept=\"1\"><Segment InPoint=\"1\" OutPoint=\"2\"/></Clip>\n"
            " <Other/>\n <Clip ClipName=\"0002BB\"/>\n</Media>");
    EXPECT_EQ(Add({{L"0002BB", {{3, 4}, {5, 6}}}, {L"0001AA", {{7, 8}}}, {L"0003CC", {}}}), 0);
    EXPECT_THAT(Listed(), ElementsAre("0002bb 1-2 3-4 5-6", "0002BB", "0001AA 7-8", "0003CC"));
    EXPECT_EQ(Add({{L"0002BB", {{9, 9}}}, {L"0003cc", {{1, 1}}}}), 0);
    EXPECT_THAT(Listed(),
                ElementsAre("0002bb 1-2 3-4 5-6 9-9", "0002BB", "0001AA 7-8", "0003CC 1-1"));
    EXPECT_THAT(File(), testing::HasSubstr("<!-- kept -->"));
    EXPECT_THAT(File(), testing::HasSubstr("<Clip ClipName=\"0002bb\" Kept=\"1\">"));
    EXPECT_THAT(File(), testing::HasSubstr("<Media MediaID=\"P2\" Kept=\"1\">"));
}

TEST_F(IngestListTest, NamesThatDifferInCaseAloneShareAnEntryWithinOneRequest) {
    EXPECT_EQ(Add({{L"A<&\">", {{1, 1}}}, {L"\u00C9a", {{2, 2}}}, {L"\u00E9A", {{3, 3}}}}), 0);
    EXPECT_THAT(Listed(), ElementsAre("A<&\"> 1-1", "\u00C9a 2-2 3-3"));
}

TEST_F(IngestListTest, EachCardGetsItsOwnFileUpToTheFirstWithoutFolder) {
    test::CapturedTexts texts(SetDebugOutput);
    const test::TempFolder& folder = m_card.Folder();
    for (const char* card : {"a", "b", "c"}) {
        folder.MakeFolder(card);
    }
    folder.Write("b/USERDATA", "a file");
    IngestRequest request = {{InterfaceRoot(folder.Path("c")), {{L"x", {{1, 2}}}}},
                             {InterfaceRoot(folder.Path("b")), {{L"x", {{1, 2}}}}},
                             {InterfaceRoot(folder.Path("a")), {{L"x", {{1, 2}}}}}};
    EXPECT_EQ(m_parser.WriteIngestXML(L"Mine.xml", request), 1);
    EXPECT_THAT(texts.Take(), ElementsAre(L"\n==Create Directory Failed==\n"));
    EXPECT_TRUE(std::filesystem::exists(folder.Path("a/USERDATA/Mine.xml")));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("c/USERDATA")));
    std::filesystem::remove(folder.Path("b/USERDATA"));
    EXPECT_EQ(m_parser.WriteIngestXML(L"Mine.xml", request), 0);
    EXPECT_TRUE(std::filesystem::exists(folder.Path("c/USERDATA/Mine.xml")));
    EXPECT_THAT(texts.Take(), IsEmpty());
}

TEST_F(IngestListTest, WithoutFileNameNothingIsTouched) {
    IngestRequest request = {{m_card.Root(), {{L"x", {{1, 2}}}}}};
    EXPECT_EQ(m_parser.WriteIngestXML(L"", request), 1);
    EXPECT_FALSE(std::filesystem::exists(m_card.Folder().Path("USERDATA")));
}

TEST_F(IngestListTest, AnUnreadableFileIsKeptAsideAndReplaced) {
    const std::string broken[] = {"", "<Media", std::string("\0\1", 2), "<Media/><Media/>"};
    int number = 0;
    for (const std::string& bytes : broken) {
        SetFile(bytes);
        EXPECT_EQ(Add({{L"0001AA", {{1, 2}}}, {L"0002BB", {{3, 4}}}}), 0);
        EXPECT_EQ(File("Ingest.xml.unreadable" + std::to_string(++number)), bytes);
        // The clips go into an empty document, which has room for one: kept.
        EXPECT_EQ(File(), "<Clip ClipName=\"0001AA\"><Segment InPoint=\"1\" OutPoint=\"2\"/>"
                          "</Clip>\r\n");
    }
    EXPECT_EQ(FilesInFolder().size(), 5U);
}

TEST_F(IngestListTest, WhatIsNoPlainListIsToldAndOnlyTheSilentWriterExtendsIt) {
    constexpr struct {
        const char* file;
        const char* extended; ///< part of what the writer makes of it
        IngestStatus status;
    } kRows[] = {
        {"<Root><Media><Clip ClipName=\"a\"/></Media></Root>",
         "<Root><Media><Clip ClipName=\"a\"><Segment", IngestStatus::Foreign},
        {"<Root><Other/></Root>", "<Root><Other/><Clip ClipName=\"A\"><Segment",
         IngestStatus::Foreign},
        {"<Media><Clip ClipName=\"a\"/><Media/></Media>", "<Media><Clip ClipName=\"A\"><Segment",
         IngestStatus::Foreign},
        {"<Media", "<Clip ClipName=\"A\"><Segment", IngestStatus::Unreadable},
    };
    for (const auto& row : kRows) {
        SetFile(row.file);
        const IngestResult result = AddToIngestList(m_card.Root(), {{L"A", {{1, 2}}}});
        EXPECT_EQ(result.status, row.status) << row.file;
        EXPECT_FALSE(result.reason.IsEmpty());
        EXPECT_EQ(result.line, row.status == IngestStatus::Unreadable ? 1 : 0);
        EXPECT_THAT(Listed(), ElementsAre("(unreadable)"));
        EXPECT_EQ(File(), row.file);
        EXPECT_EQ(Add({{L"A", {{1, 2}}}}), 0);
        EXPECT_THAT(File(), testing::HasSubstr(row.extended));
    }
}

TEST_F(IngestListTest, ANameThatXmlCannotHoldLeavesNoEntry) {
    EXPECT_EQ(Add({{L"\x01", {{1, 2}}}, {L"B", {{3, 4}}}}), 0);
    EXPECT_THAT(Listed(), ElementsAre("B 3-4"));
    const IngestClips mixed = {{L"\x01", {{1, 2}}}, {L"C", {}}};
    EXPECT_EQ(AddToIngestList(m_card.Root(), mixed).status, IngestStatus::BadName);
    EXPECT_THAT(Listed(), ElementsAre("B 3-4"));
}

TEST_F(IngestListTest, AnAdditionMakesAndExtendsTheList) {
    const IngestClips clips = {{L"A", {{1, 2}}}};
    EXPECT_EQ(AddToIngestList(m_card.Root(), clips).status, IngestStatus::Done);
    EXPECT_EQ(AddToIngestList(m_card.Root(), {{L"a", {{3, 4}}}}).status, IngestStatus::Done);
    EXPECT_THAT(Listed(), ElementsAre("A 1-2 3-4"));
    std::filesystem::remove_all(m_card.Folder().Path("USERDATA"));
    m_card.Folder().Write("USERDATA", "a file");
    EXPECT_EQ(AddToIngestList(m_card.Root(), clips).status, IngestStatus::NotSaved);
}

TEST_F(IngestListTest, DeletingTakesTheFirstEntryOnly) {
    SetFile("<Media MediaID=\"P2\"><Clip/><Clip ClipName=\"b\"/><Clip ClipName=\"a\">"
            "<Segment InPoint=\"1\" OutPoint=\"2\"/></Clip><Clip ClipName=\"A\"/></Media>");
    EXPECT_EQ(Delete(L"A"), 1) << "what saving says";
    EXPECT_THAT(Listed(), ElementsAre("", "b", "A"));
    EXPECT_EQ(Delete(L"a"), 1);
    EXPECT_THAT(Listed(), ElementsAre("", "b"));
    const std::string left = File();
    EXPECT_EQ(Delete(L"a"), 0);
    EXPECT_EQ(Delete(L""), 1);
    EXPECT_EQ(parser::NQP2ParserPeer::DeleteIngestNode(m_parser, L"", L"b"), 1);
    EXPECT_EQ(File(), left);
}

TEST_F(IngestListTest, RemovalTellsMoreThanTheNumber) {
    constexpr struct {
        const char* file; ///< null: none
        IngestStatus status;
        int number;
    } kRows[] = {
        {nullptr, IngestStatus::NoList, 1},
        {"<Media", IngestStatus::Unreadable, 1},
        {"<Other/>", IngestStatus::Foreign, 0},
        {"<Media><Clip ClipName=\"b\"/></Media>", IngestStatus::NotListed, 0},
        {"<Media><Clip ClipName=\"A\"/><Media/></Media>", IngestStatus::Done, 1},
    };
    for (const auto& row : kRows) {
        for (const bool asNumber : {false, true}) {
            if (row.file != nullptr) {
                SetFile(row.file);
            }
            const auto status =
                asNumber ? IngestStatus::Done : RemoveFromIngestList(m_card.Root(), L"a").status;
            EXPECT_TRUE(asNumber ? Delete(L"a") == row.number : status == row.status) << row.file;
        }
    }
}

TEST_F(IngestListTest, ReadingTakesWhatNumbersThereAre) {
    SetFile("<Media><Clip ClipName=\"a\"><Segment/><Other InPoint=\"9\"/>"
            "<Segment InPoint=\"x\" OutPoint=\"99999999999\"/></Clip><Skip><Clip/></Skip></Media>");
    EXPECT_THAT(Listed(), ElementsAre("a 0-0 0-2147483647"));
}

} // namespace
} // namespace nqp2::ingest
