// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_store.h"
#include "catalogue/open_catalogue.h"
#include "catalogue/schema.h"
#include "catalogue/sqlite/sqlite_connection.h"
#include "tests/support/card_builder.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_folder.h"

#include <gmock/gmock.h>
#include <memory>
#include <string>

namespace nqp2::catalogue {
namespace {

TEST(Places, AFileOnANetworkIsToldAndLockedAsEveryFileSystemCan) {
    for (const char* const server : {"", "nas"}) {
        const test::TempFolder folder;
        const std::string path = folder.Path("c.sqlite");
        test::FaultyFileSystem files;
        files.SetMedium(
            [&](const std::string&, platform::MediumFacts& facts) { facts.server = server; });
        const platform::ScopedFileSystem scoped(files);
        tool::Console console;
        testing::internal::CaptureStderr();
        const auto connection = OpenCatalogue(console, {false, path, path}, Missing::Make);
        const std::string told = testing::internal::GetCapturedStderr();
        std::string journal;
        connection->Run("PRAGMA journal_mode", {}, [&](const Row& row) { journal = row.Text(0); });
        const bool isShared = *server != '\0';
        EXPECT_EQ(told.find("is on a network file system") != std::string::npos, isShared);
        EXPECT_EQ(journal, isShared ? "delete" : "wal"); // others share no memory with this one
    }
}

TEST(Places, AVolumeIsTheSameCardWhereverItIsAndACopyIsAnother) {
    const test::TempFolder folder;
    const auto connection = OpenSqlite(folder.Path("c.sqlite"), false);
    BringUpToDate(*connection, "test");
    const test::CardBuilder builders[2];
    const auto found = [&](int where, const wchar_t* serial) {
        builders[where].AddClip("0001AB");
        FoundCard card;
        card.root = builders[where].Root();
        card.serialNo = serial;
        card.label = L"CARD A";
        return card;
    };
    const StoreOutcome first = StoreCard(*connection, found(0, L"1A2B-3C4D"), "Shelf");
    EXPECT_EQ(first.card.volume + first.card.volumeLabel, "1A2B-3C4DCARD A");
    EXPECT_EQ(first.card.isMedium, 1);
    const StoreOutcome again = StoreCard(*connection, found(1, L"1A2B-3C4D"), "");
    EXPECT_EQ(again.card.id, first.card.id);
    EXPECT_EQ(again.card.label, "Shelf");
    const StoreOutcome copy = StoreCard(*connection, found(1, L""), "");
    EXPECT_NE(copy.card.id, first.card.id);
    EXPECT_EQ(copy.card.isMedium, 0);
    EXPECT_TRUE(StoreCard(*connection, found(1, L"9999-0000"), "").isNew);
}

} // namespace
} // namespace nqp2::catalogue
