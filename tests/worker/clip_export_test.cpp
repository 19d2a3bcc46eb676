// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_export.h"

#include "parser/NQP2Parser.h"
#include "tests/support/print_text.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/clip_import.h"
#include "worker/verified_copy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nqp2::worker {
namespace {

using platform::IoError;
using test::Operation;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kFirstId = "060A2B340101010501010D431300000011111111111111111111111111111111";
constexpr const char* kSecondId =
    "060A2B340101010501010D431300000022222222222222222222222222222222";
constexpr const char* kForeignId =
    "060A2B340101010501010D431300000033333333333333333333333333333333";

class ClipExportTest : public testing::Test {
protected:
    /// Two segments of one take; the second one's "next" lies on another card under the name of
    /// the first.
    ClipExportTest() {
        const std::string link = "Relation/Connection/";
        AddWholeClip(m_from, "0001AB", 1,
                     {{"GlobalClipID", kFirstId},
                      {link + "Top/ClipName", "0001AB"},
                      {link + "Top/GlobalClipID", kFirstId},
                      {link + "Next/ClipName", "0002AB"},
                      {link + "Next/GlobalClipID", kSecondId}});
        AddWholeClip(m_from, "0002AB", 5,
                     {{"GlobalClipID", kSecondId},
                      {link + "Top/ClipName", "0001AB"}, // no identifier: the name alone counts
                      {link + "Next/ClipName", "0001AB"},
                      {link + "Next/GlobalClipID", kForeignId}});
    }

    Outcome Export(std::vector<CString> names = {L"0001AB", L"0002AB"}) {
        m_watch = {};
        return ExportClips({m_card.Root(), m_from.Root(), std::move(names)}, kDefaultBlock, m_watch,
                           m_sizes);
    }
    std::map<std::string, std::string> OnCard() { return FilesBelow(m_card.Folder().Path()); }
    _tag_P2Clip Load(const wchar_t* name) {
        CNQP2Parser parser;
        parser.Init();
        _tag_P2Clip clip;
        EXPECT_EQ(parser.LoadClipInfo(m_card.Root(), name, clip), 0);
        parser.Release();
        return clip;
    }

    test::CardBuilder m_from;
    test::CardBuilder m_card;
    RecordingWatch m_watch;
    TransferSizes m_sizes;
};

TEST_F(ClipExportTest, FreeNamesStayAndTheFilesAreTheSame) {
    ASSERT_TRUE(Export());
    EXPECT_EQ(OnCard(), FilesBelow(m_from.Folder().Path()));
    ASSERT_TRUE(Export()) << "again: nothing to do";
    EXPECT_EQ(m_sizes.written, 0U);
}

TEST_F(ClipExportTest, ATakenNameGivesAFreeOneInAllThatRefersToIt) {
    m_card.AddClip("0001ab", {{"Duration", "5"}});
    m_card.AddFile("AUDIO/0002xy00.MXF", "no clip, but the name is taken");
    AddWholeClip(m_from, "0009AB");
    m_card.AddFile("VIDEO/0003AB.MXF", "taken as well");
    ASSERT_TRUE(Export());
    // 0001AB is taken; so is 0002AB by the second clip only if it came first.
    const _tag_P2Clip first = Load(L"0002AB");
    EXPECT_EQ(first.TopClipName, L"0002AB");
    EXPECT_EQ(first.NextClipName, L"0004AB");
    EXPECT_EQ(first.GlobalClipID, Name(kFirstId));
    const _tag_P2Clip second = Load(L"0004AB");
    EXPECT_EQ(second.ClipName, L"0004AB");
    EXPECT_EQ(second.TopClipName, L"0002AB");
    EXPECT_EQ(second.NextClipName, L"0001AB") << "another card's clip";
    EXPECT_EQ(OnCard().at("CONTENTS/VIDEO/0002AB.MXF"), Essence(300'001, 1));
    EXPECT_EQ(OnCard().at("CONTENTS/AUDIO/0004AB01.mxf"), Essence(20'000, 6));
    EXPECT_EQ(OnCard().size(), 3 + 2 * kFilesOfAClip);
}

TEST_F(ClipExportTest, AnInterruptedExportIsTakenUp) {
    m_card.AddFile("VIDEO/0001AB.MXF", Essence(300'001, 1));
    ASSERT_TRUE(Export({L"0001AB"}));
    EXPECT_EQ(OnCard().size(), kFilesOfAClip);
    EXPECT_EQ(m_sizes.written, m_sizes.total - 300'001);
}

TEST_F(ClipExportTest, ForeignEssenceOfTheSameSizeTakesTheNameToo) {
    m_card.AddFile("VIDEO/0001AB.MXF", Essence(300'001, 9));
    m_card.AddFile("ICON/0001AB.BMP", "icon");
    const auto before = OnCard();
    ASSERT_TRUE(Export({L"0001AB"}));
    EXPECT_EQ(Load(L"0002AB").GlobalClipID, Name(kFirstId));
    EXPECT_EQ(OnCard().size(), before.size() + kFilesOfAClip);
    EXPECT_EQ(OnCard().at("CONTENTS/VIDEO/0001AB.MXF"), Essence(300'001, 9));
}

TEST_F(ClipExportTest, AllOrNone) {
    struct Case {
        const char* what;
        test::Fault fault;
        std::vector<CString> names;
        const char* error;
    };
    const Case cases[] = {
        {"unknown clip",
         {IoError::Device, Operation::ReadAt, "nowhere"},
         {L"0001AB", L"0007AB"},
         "no clip 0007AB"},
        {"no clip", {IoError::Device, Operation::ReadAt, "nowhere"}, {}, "No clip"},
        {"twice", {IoError::Device, Operation::ReadAt, "nowhere"}, {L"0001AB", L"0001ab"}, "twice"},
        {"outside", {IoError::Device, Operation::ReadAt, "nowhere"}, {L"../x"}, "no name"},
        {"full",
         {IoError::NoSpace, Operation::WriteAt, "0002AB"},
         {L"0001AB", L"0002AB"},
         "made to fail"},
        {"read-only card",
         {IoError::ReadOnly, Operation::Create, ""},
         {L"0001AB", L"0002AB"},
         "made to fail"},
        {"card that has become read-only",
         {IoError::ReadOnly, Operation::Create, "AUDIO/0002AB"},
         {L"0001AB", L"0002AB"},
         "made to fail"},
        {"source goes bad",
         {IoError::Device, Operation::ReadBlock, "VIDEO/0002AB"},
         {L"0001AB", L"0002AB"},
         "made to fail"},
        {"names",
         {IoError::Denied, Operation::Commit, "CLIP/0002AB"},
         {L"0001AB", L"0002AB"},
         "made to fail"},
    };
    for (const Case& each : cases) {
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        files.Fail(each.fault);
        EXPECT_THAT(Export(each.names).error, HasSubstr(each.error)) << each.what;
        EXPECT_THAT(OnCard(), IsEmpty()) << each.what;
    }
}

TEST_F(ClipExportTest, ASourceThatVanishesLeavesNothingOnTheCard) {
    for (const char* last : {"VIDEO/0001AB.MXF", "PROXY/0001AB.MP4", "VIDEO/0002AB.MXF"}) {
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        files.SetHook([&](Operation operation, const std::string& path) {
            if (operation == Operation::ReadBlock && path.ends_with(last)) {
                std::filesystem::rename(m_from.Folder().Path("CONTENTS"),
                                        m_from.Folder().Path("gone"));
                files.SetHook({});
            }
        });
        EXPECT_THAT(Export().error, HasSubstr("read")) << last;
        EXPECT_THAT(OnCard(), IsEmpty()) << last;
        std::filesystem::rename(m_from.Folder().Path("gone"), m_from.Folder().Path("CONTENTS"));
    }
}

TEST_F(ClipExportTest, TooLittleSpaceIsRefusedBeforeAnythingIsWritten) {
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.SetFreeSpace(600'000); // enough for one
    EXPECT_THAT(Export().error, HasSubstr("too little space"));
    EXPECT_EQ(files.Calls(Operation::Create), 0U);
    EXPECT_TRUE(Export({L"0001AB"}));
}

TEST_F(ClipExportTest, MetadataThatIsNoneIsRefused) {
    for (const char* xml :
         {"", "<P2Main/>", "no xml", "<!DOCTYPE P2Main><P2Main><ClipContent/></P2Main>"}) {
        m_from.AddFile("CLIP/0001AB.XML", xml);
        EXPECT_THAT(Export({L"0001AB"}).error, HasSubstr("not the metadata of a clip")) << xml;
    }
    EXPECT_THAT(OnCard(), IsEmpty());
}

TEST_F(ClipExportTest, ImportThenExportGivesTheSameCard) {
    const test::TempFolder between;
    for (const wchar_t* name : {L"0001AB", L"0002AB"}) {
        m_watch = {};
        ASSERT_TRUE(ImportClip({m_from.Root(), name, InterfaceRoot(between.Path())}, kDefaultBlock,
                               m_watch, m_sizes));
    }
    m_watch = {};
    ASSERT_TRUE(ExportClips({m_card.Root(), InterfaceRoot(between.Path()), {L"0001AB", L"0002AB"}},
                            kDefaultBlock, m_watch, m_sizes));
    EXPECT_EQ(OnCard(), FilesBelow(m_from.Folder().Path()));
}

} // namespace
} // namespace nqp2::worker
