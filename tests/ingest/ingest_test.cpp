// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/ingest/ingest_test.h"
#include "NQP2ParserU/DebugOutput.h"
#include "platform/folder.h"
#include "tests/support/child_process.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/swapping_link.h"
#include "tests/xml/captured_texts.h"

#include <atomic>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace nqp2::ingest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(IngestTest, AFreshCardGetsFolderAndFile) {
    EXPECT_EQ(Add({}), 0);
    EXPECT_EQ(File(), "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\r\n"
                      "<Media MediaID=\"P2\"/>\r\n");
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
    SetFile("<Media MediaID=\"P2\" Kept=\"1\">\n <!-- kept -->\n"
            " <Clip ClipName=\"0002bb\" Kept=\"1\"><Segment/><Other InPoint=\"9\"/>"
            "<Segment InPoint=\"x\" OutPoint=\"99999999999\"/></Clip>\n"
            " <Other/>\n <Clip ClipName=\"0002BB\"/>\n</Media>");
    EXPECT_EQ(Add({{L"0002BB", {{3, 4}, {5, 6}}}, {L"\u00C9<&\">", {{7, 8}}}}), 0);
    EXPECT_EQ(AddToIngestList(m_card.Root(), {{L"\u00E9<&\">", {{1, 1}}}, {L"C", {}}}).status,
              IngestStatus::Done);
    EXPECT_THAT(Listed(), ElementsAre("0002bb 0-0 0-2147483647 3-4 5-6", "0002BB",
                                      "\u00C9<&\"> 7-8 1-1", "C"));
    for (const char* kept : {"<Media MediaID=\"P2\" Kept=\"1\">", "<!-- kept -->",
                             "<Clip ClipName=\"0002bb\" Kept=\"1\">"}) {
        EXPECT_THAT(File(), testing::HasSubstr(kept));
    }
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
    EXPECT_TRUE(std::filesystem::exists(folder.Path("a/USERDATA/Mine.xml")));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("c/USERDATA")));
}

TEST_F(IngestTest, WithoutAPlainFileNameNothingIsTouched) {
    IngestRequest request = {{m_card.Root(), {{L"x", {{1, 2}}}}}};
    for (const wchar_t* name : {L"", L"..", L"..\\x.xml", L"a/b.xml"}) {
        EXPECT_EQ(m_parser.WriteIngestXML(name, request), 1) << CString(name);
    }
    EXPECT_FALSE(std::filesystem::exists(m_card.Folder().Path("USERDATA")));
    EXPECT_EQ(m_parser.WriteIngestXML(L"\\Ingest.xml", request), 0);
    EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
}

TEST_F(IngestTest, AnUnreadableFileIsKeptAsideAndReplaced) {
    const std::string broken[] = {"", "<Media", std::string("\0\1", 2), "<Media/><Media/>"};
    int number = 0;
    for (const std::string& bytes : broken) {
        SetFile(bytes);
        EXPECT_EQ(Add({{L"0001AA", {{1, 2}}}, {L"0002BB", {{3, 4}}}}), 0);
        EXPECT_EQ(File("Ingest.xml.unreadable" + std::to_string(++number)), bytes);
        EXPECT_THAT(Listed(), ElementsAre("0001AA 1-2", "0002BB 3-4"));
    }
    EXPECT_EQ(FilesInFolder().size(), 5U);
}

TEST_F(IngestTest, WhatIsNoPlainListIsToldAndOnlyTheSilentWriterExtendsIt) {
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
        {"<Media", "<Media MediaID=\"P2\"><Clip ClipName=\"A\"><Segment", IngestStatus::Unreadable},
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

TEST_F(IngestTest, ANameThatXmlCannotHoldLeavesNoEntry) {
    EXPECT_EQ(Add({{L"\x01", {{1, 2}}}, {L"B", {{3, 4}}}}), 0);
    EXPECT_THAT(Listed(), ElementsAre("B 3-4"));
    const IngestClips mixed = {{L"\x01", {{1, 2}}}, {L"C", {}}};
    EXPECT_EQ(AddToIngestList(m_card.Root(), mixed).status, IngestStatus::BadName);
    EXPECT_THAT(Listed(), ElementsAre("B 3-4"));
}

TEST_F(IngestTest, RemovalTakesTheFirstEntryAndTellsMoreThanTheNumber) {
    constexpr const char* kTwice =
        "<Media><Clip/><Clip ClipName=\"a\"><Segment/></Clip><Clip ClipName=\"A\"/></Media>";
    const struct {
        const char* file; ///< null: none
        IngestStatus status;
        int number;
        std::vector<std::string> left;
    } rows[] = {
        {nullptr, IngestStatus::NoList, 1, {}},
        {"<Media", IngestStatus::Unreadable, 1, {"(unreadable)"}},
        {"<Other/>", IngestStatus::Foreign, 0, {"(unreadable)"}},
        {"<Media><Clip ClipName=\"b\"/></Media>", IngestStatus::NotListed, 0, {"b"}},
        {kTwice, IngestStatus::Done, 1, {"", "A"}},
    };
    for (const auto& row : rows) {
        for (const bool asNumber : {false, true}) {
            if (row.file != nullptr) {
                SetFile(row.file);
            }
            EXPECT_TRUE(asNumber ? Delete(L"A") == row.number
                                 : RemoveFromIngestList(m_card.Root(), L"A").status == row.status);
            EXPECT_EQ(Listed(), row.left) << row.number;
        }
    }
    EXPECT_EQ(Delete(L""), 1);
}

using platform::IoError;
using test::FaultyFileSystem;
using test::Operation;
constexpr const char* kOld = "<Media MediaID=\"P2\"><Clip ClipName=\"old\"/></Media>";

class IngestFaultsTest : public IngestTest {
protected:
    IngestFaultsTest() { SetFile(kOld); }
    void ExpectOldFileAlone() const {
        EXPECT_EQ(File(), kOld);
        EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
    }
};

/// A sound list stays, with or without the new clip, or is put aside as a broken one always is; the
/// writer that tells says which.
TEST_F(IngestFaultsTest, WhateverCallFailsNoListIsLostAndTheTruthIsTold) {
    for (const std::string before : {kOld, "<broken"}) {
        bool done = false;
        for (std::uint64_t call = 0; !done; ++call) {
            for (const bool tells : {false, true}) {
                SCOPED_TRACE(call);
                std::filesystem::remove_all(m_card.Folder().Path("USERDATA"));
                SetFile(before);
                FaultyFileSystem faulty;
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

TEST_F(IngestFaultsTest, WhoChangesAListAtOnceLosesNothing) {
    constexpr int kWriters = 8;
    std::atomic<int> done = 0;
    {
        std::vector<std::jthread> writers;
        for (int i = 0; i < kWriters; ++i) {
            writers.emplace_back([&, i] {
                const CString name(static_cast<wchar_t>(L'a' + i));
                const CString root = m_card.Root();
                CNQP2Parser parser;
                IngestRequest request = {{root, {{name, {{1, 2}}}}}};
                const bool all =
                    parser.WriteIngestXML(L"Ingest.xml", request) == 0 &&
                    RemoveFromIngestList(root, i == 0 ? L"old" : name).status ==
                        IngestStatus::Done &&
                    AddToIngestList(root, {{name, {{3, 4}}}}).status == IngestStatus::Done;
                done += all ? 1 : 0;
            });
        }
    }
    EXPECT_EQ(done, kWriters);
    EXPECT_EQ(Listed().size(), static_cast<std::size_t>(kWriters));
}

TEST_F(IngestFaultsTest, AFolderThatAnotherKeepsLockedIsAFailureAfterAWhile) {
    std::unique_ptr<platform::Folder> others;
    ASSERT_TRUE(platform::OpenRoot(m_card.Folder().Path("USERDATA"), others));
    ASSERT_TRUE(others->Lock(std::chrono::seconds(0)));
    std::atomic<int> busy = 0;
    {
        // At once, because each waits for seconds.
        const std::jthread first([&] { busy += Add({{L"new", {{1, 2}}}}) == 1 ? 1 : 0; });
        const std::jthread second([&] { busy += Delete(L"old") == 0 ? 1 : 0; });
        const std::jthread third([&] {
            busy += AddToIngestList(m_card.Root(), {{L"new", {}}}).status == IngestStatus::Busy;
        });
    }
    EXPECT_EQ(busy, 3);
    ExpectOldFileAlone();
}

TEST_F(IngestFaultsTest, NothingIsWrittenThroughLinks) {
    const test::TempFolder outside;
    const std::string theirs = outside.Write("Ingest.xml", kOld);
    const std::string broken = outside.Write("broken.xml", "<broken");
    const std::string folder = m_card.Folder().Path("USERDATA");
    const auto expectRefused = [&] {
        EXPECT_EQ(Add({{L"new", {}}}), 1);
        EXPECT_NE(AddToIngestList(m_card.Root(), {{L"new", {}}}).status, IngestStatus::Done);
        EXPECT_NE(RemoveFromIngestList(m_card.Root(), L"old").status, IngestStatus::Done);
    };
    for (const char* target : {"Ingest.xml", "broken.xml", "none.xml"}) {
        std::filesystem::remove(folder + "/Ingest.xml");
        std::filesystem::create_symlink(outside.Path(target), folder + "/Ingest.xml");
        expectRefused();
    }
    std::filesystem::remove_all(folder);
    std::filesystem::create_symlink(outside.Path(), folder);
    expectRefused();
    std::filesystem::remove(folder);
    int done = 0;
    SetFile(kOld);
    {
        const test::SwappingLink swapping(folder, outside.Path());
        for (int round = 0; round < 250; ++round) {
            const bool added =
                AddToIngestList(m_card.Root(), {{L"new", {}}}).status == IngestStatus::Done;
            Add({{L"silent", {}}});
            Delete(L"silent");
            done += added ? 1 : 0;
        }
    }
    EXPECT_GT(done, 0);
    std::string bytes;
    EXPECT_TRUE(platform::Files().Read(theirs, 1000, bytes) && bytes == kOld);
    EXPECT_TRUE(platform::Files().Read(broken, 1000, bytes) && bytes == "<broken");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(outside.Path()), {}), 2);
}

TEST_F(IngestFaultsTest, ALimitOfFileSizesIsAFailureAndNoSignal) {
    EXPECT_EQ(test::RunInChild([&] {
                  const rlimit limit = {10, 10};
                  const IngestClips clips = {{L"new", {{1, 2}}}};
                  return setrlimit(RLIMIT_FSIZE, &limit) == 0 && Add(clips) == 0 &&
                                 AddToIngestList(m_card.Root(), clips).status ==
                                     IngestStatus::NotSaved
                             ? 0
                             : 1;
              }),
              0);
    ExpectOldFileAlone();
}

TEST_F(IngestFaultsTest, AListThatCannotBeSeenIsNotTakenForNone) {
    ASSERT_EQ(chmod(m_card.Folder().Path().c_str(), 0755), 0);
    std::string folder = m_card.Folder().Path("USERDATA");
    for (const char* next : {"Userdata", "USERDATA"}) { // in other letters, too
        ASSERT_EQ(chmod(folder.c_str(), 0), 0);
        EXPECT_EQ(test::RunInChild([&] {
                      IngestList list;
                      return test::BecomeOrdinaryUser() && !LoadIngestList(m_card.Root(), list) &&
                                     AddToIngestList(m_card.Root(), {{L"new", {}}}).status ==
                                         IngestStatus::Unreadable
                                 ? 0
                                 : 1;
                  }),
                  0);
        std::filesystem::rename(folder, m_card.Folder().Path(next));
        folder = m_card.Folder().Path(next);
    }
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
}

} // namespace
} // namespace nqp2::ingest
