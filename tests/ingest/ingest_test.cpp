// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/ingest/ingest_test.h"

#include "NQP2ParserU/DebugOutput.h"
#include "platform/folder.h"
#include "tests/support/child_process.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/swapping_link.h"
#include "tests/xml/captured_texts.h"

#include <sys/stat.h>
#include <vector>

namespace nqp2::ingest {
namespace {

using testing::ElementsAre;

TEST_F(IngestTest, AFreshCardGetsFolderAndFile) {
    EXPECT_EQ(Add({}), 0);
    EXPECT_THAT(Listed(), testing::IsEmpty());
    m_card.Folder().Write("USERDATA/.nqp2-killed.part", "half");
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

TEST_F(IngestTest, SegmentsAreAppendedToTheirClipsAndTheRestIsKept) {
    const std::string start = "<Media MediaID=\"P2\" Kept=\"1\">\n <!-- kept -->\n"
                              " <Clip ClipName=\"0002bb\" Kept=\"1\"><Segment/>";
    SetFile(start + "<Other InPoint=\"9\"/><Segment InPoint=\"x\" OutPoint=\"99999999999\"/></Clip>"
                    "\n <Other/>\n <Clip ClipName=\"0002BB\"/>\n</Media>");
    EXPECT_EQ(Add({{L"0002BB", {{3, 4}, {5, 6}}}, {L"\u00C9<&\">", {{7, 8}}}}), 0);
    EXPECT_EQ(AddToIngestList(m_card.Root(), {{L"\u00E9<&\">", {{1, 1}}}, {L"C", {}}}).status,
              IngestStatus::Done);
    EXPECT_THAT(Listed(), ElementsAre("0002bb 0-0 0-2147483647 3-4 5-6", "0002BB",
                                      "\u00C9<&\"> 7-8 1-1", "C"));
    EXPECT_THAT(File(), testing::HasSubstr(start));
}

TEST_F(IngestTest, EachCardGetsItsOwnFileUpToTheFirstWithoutFolder) {
    test::CapturedTexts texts(SetDebugOutput);
    const test::TempFolder& folder = m_card.Folder();
    IngestRequest request;
    for (const char* card : {"a", "b", "c"}) {
        folder.MakeFolder(card);
        request[InterfaceRoot(folder.Path(card))] = {{L"x", {{1, 2}}}};
    }
    folder.Write("b/USERDATA", "a file");
    EXPECT_EQ(m_parser.WriteIngestXML(L"Mine.xml", request), 1);
    EXPECT_THAT(texts.Take(), ElementsAre(L"\n==Create Directory Failed==\n"));
    EXPECT_TRUE(fs::exists(folder.Path("a/USERDATA/Mine.xml")));
    EXPECT_FALSE(fs::exists(folder.Path("c/USERDATA")));
}

TEST_F(IngestTest, WithoutAPlainFileNameNothingIsTouched) {
    IngestRequest request = {{m_card.Root(), {{L"x", {{1, 2}}}}}};
    for (const wchar_t* name : {L"", L"..", L"..\\x.xml", L"a/b.xml"}) {
        EXPECT_EQ(m_parser.WriteIngestXML(name, request), 1) << CString(name);
    }
    EXPECT_FALSE(fs::exists(m_card.Folder().Path("USERDATA")));
    EXPECT_EQ(m_parser.WriteIngestXML(L"\\Ingest.xml", request), 0);
    EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
}

TEST_F(IngestTest, AnUnreadableFileIsKeptAsideAndReplaced) {
    int number = 0;
    for (const std::string bytes : {"", "<Media", "<Media/><Media/>"}) {
        SetFile(bytes);
        EXPECT_EQ(Add({{L"0001AA", {{1, 2}}}, {L"0002BB", {{3, 4}}}}), 0);
        EXPECT_EQ(File("Ingest.xml.unreadable" + std::to_string(++number)), bytes);
        EXPECT_THAT(Listed(), ElementsAre("0001AA 1-2", "0002BB 3-4"));
    }
    EXPECT_EQ(FilesInFolder().size(), 4U);
}

TEST_F(IngestTest, WhatIsNoPlainListIsExtendedByTheSilentWriterOnly) {
    const std::pair<std::string, std::string> rows[] = {
        // before and behind the new clip
        {"<Root><Media><Clip ClipName=\"a\"", "/></Media></Root>"},
        {"<Root><Other/><Clip ClipName=\"A\"", "/></Root>"},
        {"<Media><Clip ClipName=\"A\"", "/><Media/></Media>"}};
    for (const auto& [before, behind] : rows) {
        SetFile(before + behind);
        EXPECT_EQ(AddToIngestList(m_card.Root(), {{L"A", {{1, 2}}}}).status, IngestStatus::Foreign);
        EXPECT_EQ(File(), before + behind);
        EXPECT_EQ(Add({{L"A", {{1, 2}}}}), 0);
        EXPECT_THAT(File(), testing::HasSubstr(before + "><Segment")) << "the first one";
    }
    SetFile("<Media/>");
    EXPECT_EQ(Add({{L"\x01", {{1, 2}}}, {L"B", {{3, 4}}}}), 0);
    EXPECT_EQ(AddToIngestList(m_card.Root(), {{L"\x01", {{1, 2}}}, {L"C", {}}}).status,
              IngestStatus::BadName);
    EXPECT_THAT(Listed(), ElementsAre("B 3-4")) << "XML cannot hold the name";
}

TEST_F(IngestTest, RemovalTakesTheFirstEntryAndGivesANumber) {
    const std::tuple<const char*, int, std::vector<std::string>> rows[] = {
        {"<Media", 1, {"(unreadable)"}},
        {"<Other/>", 0, {"(unreadable)"}},
        {"<Media><Clip ClipName=\"b\"/></Media>", 0, {"b"}},
        {"<Media><Clip/><Clip ClipName=\"a\"><Segment/></Clip><Clip ClipName=\"A\"/></Media>",
         1,
         {"", "A"}}};
    EXPECT_EQ(Delete(L"A"), 1) << "there is no list";
    for (const auto& [file, number, left] : rows) {
        SetFile(file);
        EXPECT_EQ(Delete(L"A"), number) << file;
        EXPECT_EQ(Listed(), left) << file;
    }
}

constexpr const char* kOld = "<Media MediaID=\"P2\"><Clip ClipName=\"old\"/></Media>";

/// A sound list stays, with or without the new clip, or is put aside as a broken one always is; the
/// writer that tells says which.
TEST_F(IngestTest, WhateverCallFailsNoListIsLostAndTheTruthIsTold) {
    for (const std::string before : {kOld, "<broken"}) {
        bool done = false;
        for (std::uint64_t call = 0; !done; ++call) {
            for (const bool tells : {false, true}) {
                SCOPED_TRACE(call);
                fs::remove_all(m_card.Folder().Path("USERDATA"));
                SetFile(before);
                test::FaultyFileSystem faulty;
                faulty.Fail({.skip = call, .times = 1});
                bool added = false;
                {
                    const platform::ScopedFileSystem inPlace(faulty);
                    const IngestClips clips = {{L"new", {{1, 2}}}};
                    added = tells
                                ? AddToIngestList(m_card.Root(), clips).status == IngestStatus::Done
                                : Add(clips) == 0;
                }
                const bool isAside = FilesInFolder().count("Ingest.xml.unreadable1") != 0;
                EXPECT_EQ(FilesInFolder().size(), isAside ? 2U : 1U);
                EXPECT_TRUE(isAside          ? File("Ingest.xml.unreadable1") == before
                            : before == kOld ? Listed().at(0) == "old"
                                             : File() == before);
                EXPECT_TRUE(!tells || (added && before == kOld) == (File() != before));
                done = faulty.Calls() <= call;
            }
        }
    }
}

TEST_F(IngestTest, NothingIsWrittenThroughLinks) {
    const test::TempFolder outside;
    outside.Write("Ingest.xml", kOld);
    outside.Write("broken.xml", "<broken");
    const std::string folder = m_card.Folder().MakeFolder("USERDATA");
    const auto expectRefused = [&](const std::string& target, const std::string& link) {
        fs::remove_all(link);
        fs::create_symlink(target, link);
        EXPECT_EQ(Add({{L"new", {}}}), 1);
        EXPECT_NE(AddToIngestList(m_card.Root(), {{L"new", {}}}).status, IngestStatus::Done);
        EXPECT_NE(RemoveFromIngestList(m_card.Root(), L"old").status, IngestStatus::Done);
    };
    for (const char* target : {"Ingest.xml", "broken.xml", "none.xml"}) {
        expectRefused(outside.Path(target), folder + "/Ingest.xml");
    }
    expectRefused(outside.Path(), folder);
    fs::remove(folder);
    SetFile(kOld);
    int done = 0;
    {
        const test::SwappingLink swapping(folder, outside.Path());
        for (int round = 0; round < 250; ++round) {
            done += AddToIngestList(m_card.Root(), {{L"new", {}}}).status == IngestStatus::Done;
            Add({{L"silent", {}}});
            Delete(L"silent");
        }
    }
    EXPECT_GT(done, 0);
    std::string bytes;
    EXPECT_TRUE(platform::Files().Read(outside.Path("Ingest.xml"), 99, bytes) && bytes == kOld);
    EXPECT_TRUE(platform::Files().Read(outside.Path("broken.xml"), 99, bytes) && bytes[1] == 'b');
    EXPECT_EQ(std::distance(fs::directory_iterator(outside.Path()), {}), 2);
}

TEST_F(IngestTest, AListThatCannotBeSeenIsNotTakenForNone) {
    ASSERT_EQ(chmod(m_card.Folder().Path().c_str(), 0755), 0);
    for (const char* name : {"USERDATA", "Userdata"}) { // in other letters, too
        const std::string folder = m_card.Folder().MakeFolder(name);
        ASSERT_EQ(chmod(folder.c_str(), 0), 0);
        EXPECT_EQ(test::RunInChild([&] {
                      const IngestClips clips = {{L"new", {}}};
                      return test::BecomeOrdinaryUser()
                                 ? static_cast<int>(AddToIngestList(m_card.Root(), clips).status)
                                 : 255;
                  }),
                  static_cast<int>(IngestStatus::Unreadable));
        fs::remove(folder);
    }
}

} // namespace
} // namespace nqp2::ingest
