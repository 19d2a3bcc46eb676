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

TEST_F(IngestTest, SegmentsAreAppendedToTheirClips) {
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

TEST_F(IngestTest, NamesThatDifferInCaseAloneShareAnEntryWithinOneRequest) {
    EXPECT_EQ(Add({{L"A<&\">", {{1, 1}}}, {L"\u00C9a", {{2, 2}}}, {L"\u00E9A", {{3, 3}}}}), 0);
    EXPECT_THAT(Listed(), ElementsAre("A<&\"> 1-1", "\u00C9a 2-2 3-3"));
}

TEST_F(IngestTest, EachCardGetsItsOwnFileUpToTheFirstWithoutFolder) {
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

TEST_F(IngestTest, AnAdditionMakesAndExtendsTheList) {
    const IngestClips clips = {{L"A", {{1, 2}}}};
    EXPECT_EQ(AddToIngestList(m_card.Root(), clips).status, IngestStatus::Done);
    EXPECT_EQ(AddToIngestList(m_card.Root(), {{L"a", {{3, 4}}}}).status, IngestStatus::Done);
    EXPECT_THAT(Listed(), ElementsAre("A 1-2 3-4"));
    std::filesystem::remove_all(m_card.Folder().Path("USERDATA"));
    m_card.Folder().Write("USERDATA", "a file");
    EXPECT_EQ(AddToIngestList(m_card.Root(), clips).status, IngestStatus::NotSaved);
}

TEST_F(IngestTest, DeletingTakesTheFirstEntryOnly) {
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

TEST_F(IngestTest, RemovalTellsMoreThanTheNumber) {
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

TEST_F(IngestTest, ReadingTakesWhatNumbersThereAre) {
    SetFile("<Media><Clip ClipName=\"a\"><Segment/><Other InPoint=\"9\"/>"
            "<Segment InPoint=\"x\" OutPoint=\"99999999999\"/></Clip><Skip><Clip/></Skip></Media>");
    EXPECT_THAT(Listed(), ElementsAre("a 0-0 0-2147483647"));
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

TEST_F(IngestFaultsTest, ARefusedWriteKeepsTheOldFileAndNotEveryWriterTells) {
    FaultyFileSystem faulty;
    faulty.Fail({.error = IoError::NoSpace, .operation = Operation::WriteWhole});
    const platform::ScopedFileSystem inPlace(faulty);
    EXPECT_EQ(Add({{L"new", {{1, 2}}}}), 0) << "kept";
    EXPECT_EQ(Delete(L"old"), 0);
    EXPECT_EQ(RemoveFromIngestList(m_card.Root(), L"old").status, IngestStatus::NotSaved);
    EXPECT_EQ(AddToIngestList(m_card.Root(), {{L"new", {}}}).status, IngestStatus::NotSaved);
    ExpectOldFileAlone();
}

TEST_F(IngestFaultsTest, WhateverCallFailsNoListIsLost) {
    FaultyFileSystem counter;
    {
        const platform::ScopedFileSystem inPlace(counter);
        ASSERT_EQ(Add({{L"new", {{1, 2}}}}), 0);
    }
    for (std::uint64_t call = 0; call < counter.Calls(); ++call) {
        SCOPED_TRACE(call);
        std::filesystem::remove_all(m_card.Folder().Path("USERDATA"));
        SetFile(kOld);
        FaultyFileSystem faulty;
        faulty.Fail({.skip = call, .times = 1});
        {
            const platform::ScopedFileSystem inPlace(faulty);
            Add({{L"new", {{1, 2}}}});
        }
        const auto files = FilesInFolder();
        const bool setAside = files.count("Ingest.xml.unreadable1") != 0;
        EXPECT_EQ(files.size(), setAside ? 2U : 1U) << testing::PrintToString(files);
        if (setAside) {
            EXPECT_EQ(File("Ingest.xml.unreadable1"), kOld);
        } else {
            EXPECT_EQ(Listed().at(0), "old");
        }
    }
}

/// The writer that tells changes a list only when it says so.
TEST_F(IngestFaultsTest, WhateverCallFailsAnAdditionTellsTheTruth) {
    bool done = false;
    for (std::uint64_t call = 0; !done; ++call) {
        SCOPED_TRACE(call);
        SetFile(kOld);
        FaultyFileSystem faulty;
        faulty.Fail({.skip = call, .times = 1});
        IngestStatus status = {};
        {
            const platform::ScopedFileSystem inPlace(faulty);
            status = AddToIngestList(m_card.Root(), {{L"new", {{1, 2}}}}).status;
        }
        EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
        EXPECT_EQ(Listed().size(), status == IngestStatus::Done ? 2U : 1U);
        done = faulty.Calls() <= call;
    }
}

TEST_F(IngestFaultsTest, WhoChangesAListAtOnceLosesNothing) {
    constexpr int kWriters = 8;
    std::atomic<int> failed = 0;
    {
        std::vector<std::jthread> writers;
        for (int i = 0; i < kWriters; ++i) {
            writers.emplace_back([&, i] {
                CString name;
                name.Format(L"%d", i);
                CNQP2Parser parser;
                IngestRequest request = {{m_card.Root(), {{name, {{1, 2}}}}}};
                failed += static_cast<int>(parser.WriteIngestXML(L"Ingest.xml", request));
                failed += RemoveFromIngestList(m_card.Root(), i == 0 ? L"old" : name).status ==
                                  IngestStatus::Done
                              ? 0
                              : 1;
                failed +=
                    AddToIngestList(m_card.Root(), {{name, {{3, 4}}}}).status == IngestStatus::Done
                        ? 0
                        : 1;
            });
        }
    }
    EXPECT_EQ(failed, 0);
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

TEST_F(IngestFaultsTest, AnUnreadableFileThatCannotBeKeptAsideIsNotReplaced) {
    for (const IoError error : {IoError::Denied, IoError::Exists}) {
        SetFile("<broken");
        FaultyFileSystem faulty;
        faulty.Fail({.error = error, .operation = Operation::MoveToFree});
        const platform::ScopedFileSystem inPlace(faulty);
        EXPECT_EQ(Add({{L"new", {{1, 2}}}}), 0);
        EXPECT_EQ(File(), "<broken");
        EXPECT_THAT(FilesInFolder(), ElementsAre("Ingest.xml"));
    }
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

TEST_F(IngestFaultsTest, AFolderInTheFilesPlaceStays) {
    std::filesystem::remove(m_card.Folder().Path("USERDATA/Ingest.xml"));
    m_card.Folder().Write("USERDATA/Ingest.xml/inside", "x");
    EXPECT_EQ(Add({{L"new", {{1, 2}}}}), 0);
    EXPECT_TRUE(std::filesystem::exists(m_card.Folder().Path("USERDATA/Ingest.xml/inside")));
    EXPECT_EQ(Delete(L"new"), 1);
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
