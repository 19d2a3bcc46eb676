// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "platform/unicode.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

namespace nqp2::cards {
namespace {

namespace fs = std::filesystem;

class CardFinderTest : public testing::Test {
protected:
    void Make(const std::vector<std::string>& folders) {
        for (const std::string& folder : folders) {
            m_folder.MakeFolder(folder);
        }
    }
    [[nodiscard]] CString At(const std::string& name) const {
        return InterfaceRoot(m_folder.Path(name));
    }
    /// "1 card > 2 other/PRIVATE" : kinds and roots below the folder; ">" before what was entered.
    [[nodiscard]] std::string Told(const CardSearch& search) const {
        std::string text;
        for (const FoundCard& card : search.cards) {
            const std::string root =
                fs::path(PosixPath(card.root)).lexically_relative(m_folder.Path()).native();
            text += (text.empty() ? "" : " ") + std::string(card.entered ? "> " : "") +
                    std::to_string(static_cast<int>(card.kind)) + ' ' + root;
        }
        for (const SkippedFile& folder : search.skipped) {
            text += " !" + std::to_string(static_cast<int>(folder.reason));
        }
        return text;
    }
    [[nodiscard]] std::string Led(const std::string& name, std::uint32_t kinds = kEveryCard) {
        CardSearch search;
        EXPECT_TRUE(FindCard(At(name), search, kinds));
        return Told(search);
    }
    [[nodiscard]] std::string Below(const std::string& name, const CardSearchLimits& limits = {}) {
        CardSearch search;
        EXPECT_TRUE(FindCards(At(name), search, limits));
        return Told(search);
    }

    test::TempFolder m_folder;
};

TEST_F(CardFinderTest, AFolderLeadsToTheCardThatItIsThatItIsAPartOfOrThatLiesBelow) {
    Make({"one/card/CONTENTS/CLIP/deep", "one/card/notes", "two/a/contents", "two/b/Contents",
          "disk/private/avchd/bdmv/stream", "disk/DCIM", "disc/BDMV/PLAYLIST", "user/a/CONTENTS",
          "user/sd/PRIVATE/AVCHD/BDMV", "cam/PANA_GRP/001YDJAM", "cam/PANA_GRP/002", "no/SONY2",
          "no/PANA_GRP/003", "far/a/b/CONTENTS", "both/CONTENTS", "both/BDMV",
          "wild/CONTENTS/BDMV/x"});
    m_folder.Write("file/CONTENTS");
    fs::create_directory_symlink(m_folder.Path("one/card"), m_folder.Path("far/link"));
    fs::create_directory_symlink(m_folder.Path("one/card/CONTENTS/CLIP"), m_folder.Path("no/link"));
    fs::create_directories(m_folder.Path("linked"));
    fs::create_directory_symlink(m_folder.Path("one/card/CONTENTS"),
                                 m_folder.Path("linked/CONTENTS"));
    const std::tuple<const char*, std::uint32_t, const char*> rows[] = {
        {"one/card", kEveryCard, "1 one/card"},
        {"one/card/CONTENTS", kEveryCard, "> 1 one/card"},
        {"one/card/CONTENTS/CLIP/deep", kEveryCard, "> 1 one/card"},
        {"one/card/CONTENTS/CLIP/gone", kEveryCard, " !3"},
        {"one/card/notes", kEveryCard, ""}, // is no part of the card
        {"one", kEveryCard, "> 1 one/card"},
        {"one", kAvchdCards, ""},
        {"two", kEveryCard, "> 1 two/a > 1 two/b"},
        {"two/b/Contents", kP2Cards, "> 1 two/b"},
        {"disk", kEveryCard, "> 2 disk/private"},
        {"disk/private", kEveryCard, "2 disk/private"},
        {"disk/private/avchd", kEveryCard, "2 disk/private/avchd"},
        {"disk/private/avchd/bdmv/stream", kEveryCard, "> 2 disk/private/avchd"},
        {"disk/private/avchd", kP2Cards, ""},
        {"disc/BDMV/PLAYLIST", kAvchdCards, "> 2 disc"},
        {"user", kEveryCard, "> 1 user/a > 2 user/sd/PRIVATE"},
        {"cam/PANA_GRP/002", kEveryCard, "> 4 cam"},
        {"cam", kAvchdCards, ""},
        {"no", kEveryCard, ""},   // links below lead to no card
        {"far", kEveryCard, ""},  // nor is one two folders below
        {"file", kEveryCard, ""}, // nor is a file a folder
        {"far/link", kEveryCard, "1 far/link"},
        {"far/link/CONTENTS", kEveryCard, "> 1 far/link"},
        {"no/link", kEveryCard, ""}, // where it leads is not where it lies
        {"linked", kEveryCard, "1 linked"},
        {"both", kEveryCard, "1 both"},
        {"both", kAvchdCards, "2 both"},
        {"wild/CONTENTS/BDMV/x", kEveryCard, "> 2 wild/CONTENTS"}, // the nearest
        {"wild/CONTENTS/BDMV/x", kP2Cards, "> 1 wild"},
        {"one/../two/a/contents/.", kEveryCard, "> 1 two/a"},
        {"far/link/../card/CONTENTS", kEveryCard, ""}, // where ".." is not what it seems
    };
    for (const auto& [asked, kinds, told] : rows) {
        EXPECT_EQ(Led(asked, kinds), told) << asked << ' ' << kinds;
    }
}

TEST_F(CardFinderTest, TextsOfCardsStayAsTheHostWroteThem) {
    Make({"card/CONTENTS/CLIP"});
    ASSERT_TRUE(MapDrive(L"Q", m_folder.Path("card").c_str()));
    for (const wchar_t* const text : {L"Q", L"Q:", L"Q:\\"}) {
        CardSearch search;
        ASSERT_TRUE(FindCard(text, search));
        ASSERT_EQ(search.cards.GetSize(), 1);
        EXPECT_EQ(search.cards[0].root, text);
        EXPECT_FALSE(search.cards[0].entered);
    }
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.Path("card/CONTENTS/CLIP"));
    CardSearch search;
    EXPECT_TRUE(FindCard(InterfaceRoot("."), search));
    fs::current_path(before);
    EXPECT_EQ(Told(search), "> 1 card");
    for (const wchar_t* const nothing : {L"", L"R:", L"a\0b"}) {
        EXPECT_TRUE(FindCard(nothing, search));
        EXPECT_TRUE(search.cards.IsEmpty());
    }
}

TEST_F(CardFinderTest, EveryCardBelowIsFoundOnceWhateverLinksAndLoopsThereAre) {
    Make({"d/b/CONTENTS/CLIP", "d/b/backup/CONTENTS", "d/a/PRIVATE/AVCHD/BDMV/BACKUP/BDMV",
          "d/a/PRIVATE/SONY", "d/a/CONTENTS", "d/both/bdmv", "d/both/contents", "d/empty/x",
          "d/cam/SONY", "d/back\\slash/CONTENTS", "d/b c/CONTENTS", "out/CONTENTS"});
    fs::create_directory_symlink(m_folder.Path("d"), m_folder.Path("d/empty/loop"));
    fs::create_directory_symlink(m_folder.Path("out"), m_folder.Path("d/out"));
    fs::create_directory_symlink(m_folder.Path("d/b/CONTENTS"),
                                 m_folder.Path("d/empty/x/CONTENTS"));
    EXPECT_EQ(Below("d"), "1 d/a 2 d/a/PRIVATE 1 d/b 1 d/b c 1 d/b/backup 1 d/back\\slash "
                          "1 d/both 2 d/both 4 d/cam");
    EXPECT_EQ(Below("d/b/CONTENTS"), "") << "a search goes downward";
    EXPECT_EQ(Below("gone"), " !3");
}

TEST_F(CardFinderTest, SearchesAreBoundedAndTellWhatTheyLeftOut) {
    Make({"d/1/2/3/CONTENTS", "d/1/2/PRIVATE/BDMV", "d/other/CONTENTS", "d/z"});
    const int depth = static_cast<int>(SkipReason::TooLarge);
    const std::tuple<CardSearchLimits, std::string> rows[] = {
        {CardSearchLimits(), "1 d/1/2/3 2 d/1/2/PRIVATE 1 d/other"},
        {{3, 5}, "1 d/1/2/3 2 d/1/2/PRIVATE 1 d/other !2"},
        {{2, 100}, "2 d/1/2/PRIVATE 1 d/other !" + std::to_string(depth)},
        {{0, 100}, " !" + std::to_string(depth)},
        {{100, 0}, " !" + std::to_string(depth)},
    };
    for (const auto& [limits, told] : rows) {
        EXPECT_EQ(Below("d", limits), told) << limits.depth << ' ' << limits.folders;
    }
    std::string wide;
    for (int i = 0; i < 1'001; ++i) {
        Make({"wide/" + std::to_string(i)});
    }
    EXPECT_EQ(Led("wide"), " !" + std::to_string(depth));
}

TEST_F(CardFinderTest, AFolderThatCannotBeReadIsToldAndTheOthersAreSearched) {
    Make({"d/a/CONTENTS", "d/shut/CONTENTS", "d/z/CONTENTS"});
    for (const test::Operation operation : {test::Operation::List, test::Operation::Other}) {
        test::FaultyFileSystem disk;
        const platform::ScopedFileSystem inPlace(disk);
        disk.Fail({platform::IoError::Denied, operation, "d/shut"});
        EXPECT_EQ(Below("d"),
                  operation == test::Operation::List ? "1 d/a 1 d/z !8" : "1 d/a 1 d/z !3");
    }
}

} // namespace
} // namespace nqp2::cards
