// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQP2Parser.h"
#include "tests/support/print_text.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/card_requests.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nqp2::worker {
namespace {

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

    std::string Export(const std::vector<CString>& names = {L"0001AB", L"0002AB"}) {
        return ExportTo(m_card.Root(), names);
    }
    std::string ExportTo(const CString& card, const std::vector<CString>& names) {
        m_watch = {};
        m_sizes = {};
        return ErrorOf([&] {
            ExportClips({card, m_from.Root(), names}, copy::kDefaultBlock, m_watch, m_sizes);
        });
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

/// What an earlier export has brought, under whatever names, and what is done about the rest.
TEST_F(ClipExportTest, OfATakeAgainCompletesWhatIsThereOrBringsItUnderNewNames) {
    struct Case {
        const char* what;
        bool firstIsTaken; ///< at the first export, by another clip
        std::function<void(const test::CardBuilder& card)> between;
        std::size_t newFiles; ///< at the second export
        const wchar_t* first; ///< names after it
        const wchar_t* second;
    };
    const auto kAll = 2 * kFilesOfAClip;
    using Card = test::CardBuilder;
    const auto without = [](const char* file) {
        return [file](const Card& card) { std::filesystem::remove(card.Folder().Path(file)); };
    };
    const auto remove = [](const wchar_t* name) {
        return [name](const Card& card) { DeleteClip(name, card.Root()); };
    };
    const auto replace = [](const Card& card) {
        DeleteClip(L"0001AB", card.Root());
        card.AddClip("0001AB", {{"GlobalClipID", kForeignId}});
    };
    const auto change = [](const Card& card) { card.AddFile("VIDEO/0002AB.MXF", "changed"); };
    const Case cases[] = {
        {"all is there", false, [](const Card&) {}, 0, L"0001AB", L"0002AB"},
        {"one under a new name", true, [](const Card&) {}, 0, L"0003AB", L"0002AB"},
        {"one is missing", false, remove(L"0001AB"), kFilesOfAClip, L"0001AB", L"0002AB"},
        {"one of two", true, remove(L"0002AB"), kFilesOfAClip, L"0003AB", L"0002AB"},
        {"one is missing whose name is taken now", false, replace, kAll, L"0003AB", L"0004AB"},
        {"one has other content by now", false, change, kAll, L"0004AB", L"0003AB"},
        {"no sound", true, without("CONTENTS/AUDIO/0003AB00.MXF"), 1, L"0003AB", L"0002AB"},
        {"essence alone", false, without("CONTENTS/CLIP/0001AB.XML"), 1, L"0001AB", L"0002AB"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        std::filesystem::remove_all(m_card.Folder().Path("CONTENTS"));
        if (each.firstIsTaken) {
            m_card.AddClip("0001ab", {{"GlobalClipID", kForeignId}});
        }
        ASSERT_EQ(Export(), "");
        each.between(m_card);
        const auto before = OnCard();
        ASSERT_EQ(Export(), "");
        const auto after = OnCard();
        EXPECT_EQ(after.size(), before.size() + each.newFiles);
        for (const auto& [name, content] : before) {
            EXPECT_TRUE(after.at(name) == content) << name;
        }
        const _tag_P2Clip first = Load(each.first);
        const _tag_P2Clip second = Load(each.second);
        EXPECT_EQ(first.GlobalClipID, Name(kFirstId));
        EXPECT_EQ(first.NextClipName, each.second);
        EXPECT_EQ(second.GlobalClipID, Name(kSecondId));
        EXPECT_EQ(second.TopClipName, each.first);
        EXPECT_EQ(second.NextClipName, L"0001AB") << "another card's clip";
    }
}

TEST_F(ClipExportTest, AllOrNone) {
    const std::map<const char*, std::vector<CString>> cases = {
        {"no clip 0007AB", {L"0001AB", L"0007AB"}},
        {"No clip", {}},
        {"twice", {L"0001AB", L"0001ab"}},
        {"no name", {L"../x"}}};
    for (const auto& [error, names] : cases) {
        EXPECT_THAT(Export(names), HasSubstr(error));
        EXPECT_THAT(OnCard(), IsEmpty()) << error;
    }
    const test::TempFolder card;
    const CString to = InterfaceRoot(card.Path());
    EXPECT_GT(SweepFaults(
                  card.Path(),
                  [&] {
                      return ExportTo(to, {L"0001AB", L"0002AB"});
                  },
                  7),
              20);
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.SetHook([&](test::Operation operation, const std::string& path) {
        if (operation == test::Operation::ReadAt && path.ends_with("VIDEO/0001AB.MXF")) {
            std::filesystem::remove_all(m_from.Folder().Path("CONTENTS"));
        }
    });
    EXPECT_THAT(Export(), HasSubstr("read")) << "the source card is pulled out";
    EXPECT_THAT(OnCard(), IsEmpty());
}

} // namespace
} // namespace nqp2::worker
