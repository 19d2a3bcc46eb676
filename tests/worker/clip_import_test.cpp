// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/support/print_text.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/card_requests.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

namespace nqp2::worker {
namespace {

using test::Operation;
using testing::HasSubstr;

class ClipImportTest : public testing::Test {
protected:
    ClipImportTest() {
        AddWholeClip(m_card, "0001AB");
        m_card.AddClip("0001A"); // names that begin or go on alike belong to other clips
        m_card.AddFile("VIDEO/0001ABC.MXF", "other");
        m_card.AddFile("AUDIO/0001AB0.MXF", "other");
        m_card.AddFile("VIDEO/.0001AB.MXF", "hidden");
    }

    std::string Import(const CString& name = L"0001AB", bool incomplete = false,
                       std::size_t block = copy::kSmallestBlock) {
        m_watch = {};
        return Run({m_card.Root(), name, InterfaceRoot(m_to.Path("new/place")), incomplete}, block);
    }
    std::string Run(const ImportRequest& request, std::size_t block = copy::kDefaultBlock) {
        m_sizes = {};
        return ErrorOf([&] { ImportClip(request, block, m_watch, m_sizes); });
    }
    std::map<std::string, std::string> Arrived() {
        return std::filesystem::exists(m_to.Path("new/place"))
                   ? FilesBelow(m_to.Path("new/place"))
                   : std::map<std::string, std::string>();
    }

    test::CardBuilder m_card;
    test::TempFolder m_to;
    RecordingWatch m_watch;
    TransferSizes m_sizes;
};

TEST_F(ClipImportTest, CopiesAllFilesOfTheClipAsTheyAreAndNoOther) {
    const auto before = FilesBelow(m_card.Folder().Path());
    const auto shot = std::filesystem::file_time_type::clock::now() - std::chrono::hours(9999);
    std::filesystem::last_write_time(m_card.Folder().Path("CONTENTS/VIDEO/0001AB.MXF"), shot);
    ASSERT_EQ(Import(L"0001ab"), "") << "asked for in other letters than the card's";
    const auto arrived = Arrived();
    EXPECT_EQ(arrived.size(), kFilesOfAClip);
    for (const auto& [name, content] : arrived) {
        EXPECT_EQ(content, before.at(name)) << name;
        EXPECT_EQ(std::filesystem::last_write_time(m_to.Path("new/place/" + name)),
                  std::filesystem::last_write_time(m_card.Folder().Path(name)))
            << name;
    }
    EXPECT_EQ(FilesBelow(m_card.Folder().Path()), before);
}

TEST_F(ClipImportTest, AClipThatIsNotWholeFailsOrIsTakenAsItIs) {
    struct Case {
        const char* file;
        std::optional<std::string> content; ///< none: the file is missing
        const char* fault;
        std::size_t files = kFilesOfAClip;
    };
    const Case cases[] = {
        {"VIDEO/0001AB.MXF", {}, "VIDEO/0001AB.MXF is missing", kFilesOfAClip - 1},
        {"VIDEO/0001AB.MXF", "", "VIDEO/0001AB.MXF is empty"},
        {"VIDEO/0001AB.MXF", Essence(300'000, 1), "has 300000 bytes of the 300001"},
        {"AUDIO/0001AB01.mxf", {}, "AUDIO/0001AB01.MXF is missing", kFilesOfAClip - 1},
        {"AUDIO/0001AB00.MXF", Essence(19'999, 1), "AUDIO/0001AB00.MXF has 19999 bytes"},
        {"CLIP/0001AB.XML", "<P2Main>", "not the metadata of a clip"},
        {"CLIP/0001AB.XML", test::ClipXml({{"EssenceList/Video/Codec", "AVC-LongG422"}}),
         "AVCLIP/0001AB.MXF is missing"},
        {"CLIP/0001AB.XML",
         test::ClipXml(
             {{"EssenceList/Audio", ""}, {"EssenceList/+Audio", ""}, {"EssenceList/+Audio", ""}}),
         "AUDIO/0001AB02.MXF is missing"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.fault);
        AddWholeClip(m_card, "0001AB");
        if (each.content) {
            m_card.AddFile(each.file, *each.content);
        } else {
            std::filesystem::remove(m_card.Folder().Path(std::string("CONTENTS/") + each.file));
        }
        EXPECT_THAT(Import(), HasSubstr(each.fault));
        EXPECT_TRUE(std::filesystem::is_empty(m_to.Path())) << "before anything is written";
        EXPECT_EQ(Import(L"0001AB", true), "");
        EXPECT_THAT(m_sizes.lacks, HasSubstr(each.fault));
        EXPECT_EQ(Arrived().size(), each.files);
        std::filesystem::remove_all(m_to.Path("new"));
    }
    AddWholeClip(m_card, "0001AB");
    m_card.AddFile("AUDIO/0001AB02.MXF", "more than the metadata tell of goes along");
    EXPECT_EQ(Import(), "");
    EXPECT_EQ(Arrived().size(), kFilesOfAClip + 1);
}

/// What begins while another transfer to the same folder is at work.
TEST_F(ClipImportTest, OfOneClipOneAtATimeAndOfOthersSideBySide) {
    AddWholeClip(m_card, "0002AB", 7);
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    std::string again;
    std::string other;
    std::string removal;
    files.SetHook([&](Operation operation, const std::string& path) {
        if (operation != Operation::Commit || !path.ends_with("VIDEO/0001AB.MXF")) {
            return;
        }
        files.SetHook({});
        const CString to = InterfaceRoot(m_to.Path("new/place"));
        const auto import = [&](const wchar_t* name) {
            RecordingWatch watch;
            TransferSizes sizes;
            return ErrorOf([&] {
                ImportClip({m_card.Root(), name, to}, copy::kDefaultBlock, watch, sizes);
            });
        };
        again = import(L"0001ab");
        removal = ErrorOf([&] { DeleteClip(L"0001AB", to); });
        other = import(L"0002AB");
    });
    EXPECT_EQ(Import(), "");
    EXPECT_THAT(again, HasSubstr("Another transfer is working on 0001ab in " + m_to.Path()));
    EXPECT_THAT(removal, HasSubstr("A transfer is working on 0001AB"));
    EXPECT_EQ(other, "");
    EXPECT_EQ(Arrived().size(), 2 * kFilesOfAClip) << "and nothing beside them";
}

TEST_F(ClipImportTest, OtherContentIsNeverOverwritten) {
    for (const std::string& other : {Essence(300'001, 9), std::string("short"), std::string()}) {
        // Also where it is spelled in other letters.
        const std::string path = m_to.Write("new/place/CONTENTS/Video/0001ab.mxf", other);
        EXPECT_THAT(Import(), HasSubstr("0001ab.mxf is there already with other content"));
        const auto arrived = Arrived();
        ASSERT_EQ(arrived.size(), 1U);
        EXPECT_EQ(arrived.begin()->second, other);
    }
}

TEST_F(ClipImportTest, CancelAtAnyPointLeavesNothing) {
    const ImportRequest request = {m_card.Root(), L"0001AB", InterfaceRoot(m_to.Path("new/place"))};
    for (const std::uint64_t stop : {0U, 1U, 100'000U, 300'100U, 330'000U, 999'999U}) {
        m_watch = {};
        m_watch.stopAt = stop;
        m_watch.mayFinish = false;
        EXPECT_EQ(Run(request, copy::kSmallestBlock), "Cancelled.");
        EXPECT_TRUE(std::filesystem::is_empty(m_to.Path())) << stop;
    }
}

TEST_F(ClipImportTest, AFaultAtAnyPointLeavesNothing) {
    EXPECT_GT(SweepFaults(
                  m_to.Path(), [&] { return Import(L"0001AB", false, 65'536); }, 3),
              20);
}

/// A medium that gives back other bytes than were written.
TEST_F(ClipImportTest, WhatTheMediumGivesBackIsCompared) {
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    bool spoilt = false;
    files.SetHook([&](Operation operation, const std::string& path) {
        if (operation != Operation::ReadAt || spoilt || path.find("VIDEO") == path.npos) {
            return;
        }
        for (const auto& entry :
             std::filesystem::directory_iterator(m_to.Path("new/place/CONTENTS/VIDEO"))) {
            std::fstream file(entry.path(), std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(250'000);
            file.put('!');
            spoilt = true;
        }
    });
    const std::string error = Import();
    EXPECT_TRUE(spoilt);
    EXPECT_THAT(error, HasSubstr("is not what was written"));
    EXPECT_TRUE(Arrived().empty());
}

TEST_F(ClipImportTest, ASourceThatGrowsOrShrinksFails) {
    for (const std::size_t size : {std::size_t{300'002}, std::size_t{1000}, std::size_t{0}}) {
        AddWholeClip(m_card, "0001AB");
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        files.SetHook([&](Operation operation, const std::string& path) {
            if (operation == Operation::Open && path.ends_with("VIDEO/0001AB.MXF")) {
                std::filesystem::resize_file(path, size);
            }
        });
        EXPECT_THAT(Import(), HasSubstr("changed while it was being read"));
        EXPECT_TRUE(Arrived().empty());
    }
}

TEST_F(ClipImportTest, HostileNamesLeadNowhere) {
    for (const wchar_t* name : {L"", L".", L"..", L"../CLIP/0001AB", L"..\\0001AB", L"0001AB/",
                                L"E:0001AB", L".0001AB", L"0001AB\n", L"*", L"0001A?"}) {
        EXPECT_NE(Import(name), "") << CString(name);
    }
    EXPECT_NE(Import(CString(L'A', 300)), "");
    EXPECT_NE(Import(CString(L"0001AB\0x", 8)), "");
    EXPECT_TRUE(FilesBelow(m_to.Path()).empty());
}

TEST_F(ClipImportTest, TooLittleSpaceIsToldBeforeAnythingIsWritten) {
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.SetFreeSpace(340'000);
    EXPECT_THAT(Import(), HasSubstr("too little space"));
    EXPECT_EQ(files.Calls(Operation::Create), 0U);
    EXPECT_TRUE(std::filesystem::is_empty(m_to.Path()));
}

} // namespace
} // namespace nqp2::worker
