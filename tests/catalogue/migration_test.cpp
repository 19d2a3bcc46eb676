// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_writer.h"
#include "catalogue/postgresql/open_postgresql.h"
#include "catalogue/schema.h"
#include "catalogue/search.h"
#include "catalogue/sqlite/sqlite_connection.h"
#include "console/console.h"
#include "tests/support/temp_folder.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <memory>
#include <string>

namespace nqp2::catalogue {
namespace {

/// A database of each engine, empty at first; the server's is given by the environment.
class MigrationTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        const char* const url = std::getenv("NQP2_TEST_POSTGRESQL");
        if (std::string(GetParam()) == "sqlite") {
            m_connection = OpenSqlite(m_folder.Path("c.sqlite"), false);
        } else if (url == nullptr) {
            GTEST_SKIP() << "no server was given";
        } else {
            m_connection = OpenPostgresql(url);
            m_connection->Run("DROP SCHEMA IF EXISTS nqp2_catalogue CASCADE");
        }
    }

    std::size_t Newest() { return m_connection->Words().migrations.size(); }

    test::TempFolder m_folder;
    std::unique_ptr<Connection> m_connection;
};

TEST_P(MigrationTest, FromEachEarlierVersionKeepsWhatIsThere) {
    for (std::size_t version = 1; version <= Newest(); ++version) {
        SCOPED_TRACE(version);
        if (std::string(GetParam()) == "sqlite") {
            m_connection = OpenSqlite(m_folder.Path(std::to_string(version)), false);
        } else {
            m_connection->Run("DROP SCHEMA IF EXISTS nqp2_catalogue CASCADE");
        }
        BringUpTo(*m_connection, "test", version);
        m_connection->Run("INSERT INTO card (medium_key, epoch, kind, is_medium, serial, volume,"
                          " volume_label, label, host, place, contents, state, clips, bytes, added,"
                          " changed, seen) VALUES ('m', 1, 'p2', 0, '', '', '', 'kept', '', '', '',"
                          " '', 0, 0, 0, 0, 0)");
        BringUpToDate(*m_connection, "test");
        BringUpToDate(*m_connection, "test");

        // All that is written and read today goes into what came of it.
        CardContents contents;
        contents.card.mediumKey = "other";
        contents.read.resize(1);
        contents.read[0].clip.identity = "X";
        contents.read[0].clip.words = "FOUND";
        contents.read[0].holding.name = "X";
        contents.gaps.resize(1);
        contents.lists.resize(1);
        contents.events.resize(1);
        contents.ingests.resize(1);
        contents.generations.resize(1);
        CardWriter(*m_connection, contents, {}).Write();
        SearchOptions options;
        options.words = "found";
        EXPECT_EQ(Search(*m_connection, options).size(), 1U);
        std::string labels;
        m_connection->Run("SELECT label FROM card ORDER BY id", {},
                          [&](const Row& row) { labels += row.Text(0); });
        EXPECT_EQ(labels, "kept");
    }
}

TEST_P(MigrationTest, AFailureInTheMiddleLeavesTheVersionBefore) {
    BringUpTo(*m_connection, "test", 1);
    m_connection->Run("CREATE TABLE ingest (x INTEGER)");
    EXPECT_THROW(BringUpToDate(*m_connection, "test"), DatabaseError);
    m_connection->Run("DROP TABLE ingest");
    BringUpToDate(*m_connection, "test");
    m_connection->Run("UPDATE catalogue_version SET version = version + 1");
    EXPECT_THROW(BringUpToDate(*m_connection, "test"), tool::Failure);
}

INSTANTIATE_TEST_SUITE_P(Engines, MigrationTest, ::testing::Values("sqlite", "postgresql"),
                         [](const auto& each) { return std::string(each.param); });

} // namespace
} // namespace nqp2::catalogue
