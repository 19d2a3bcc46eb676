// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures one and eight processes that add made-up cards to a catalogue on a server at once,
// beside bare writers that copy the same rows into the same tables; on the server's machine and a
// millisecond away from it. Whatever was written must be there afterwards.
//
//     bench_catalogue_server [FOLDER-OF-SOCKET USER DATABASE]

#include "bench/fleet.h"
#include "bench/made_clips.h"
#include "bench/measure.h"
#include "bench/slow_link.h"
#include "catalogue/card_writer.h"
#include "catalogue/columns.h"
#include "catalogue/postgresql/open_postgresql.h"
#include "catalogue/schema.h"

#include <array>
#include <fmt/core.h>
#include <libpq-fe.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::bench {
namespace {

using catalogue::Connection;
using Cards = std::vector<catalogue::CardContents>;

constexpr std::int64_t kCards = 160;
constexpr std::int64_t kClips = 100;

/// As the catalogue adds a card, but for the reading of it.
void WriteCards(const std::string& url, Cards& cards, const std::function<void()>& wait) {
    const std::unique_ptr<Connection> connection = catalogue::OpenPostgresql(url);
    wait();
    for (catalogue::CardContents& each : cards) {
        catalogue::Transaction transaction(*connection, connection->Words().beginWrite);
        connection->Run(connection->Words().lockText, {each.card.mediumKey});
        catalogue::CardWriter(*connection, each, {}).Write();
        transaction.Commit();
    }
}

/// Rows as the server's COPY takes them.
class CopiedRows {
public:
    void Put(const catalogue::Parameters& values) {
        std::string row;
        for (const catalogue::Parameter& each : values) {
            const auto* const text = std::get_if<std::string>(&each);
            row += row.empty() ? "" : "\t";
            AppendEscaped(row,
                          text == nullptr ? std::to_string(std::get<std::int64_t>(each)) : *text);
        }
        m_rows += row + '\n';
    }
    [[nodiscard]] const std::string& Text() const { return m_rows; }

private:
    static void AppendEscaped(std::string& row, std::string_view text) {
        for (const char byte : text) {
            row += byte == '\n' ? "\\n" : byte == '\\' ? "\\\\" : std::string(1, byte);
        }
    }
    std::string m_rows;
};

void Execute(PGconn* connection, const std::string& statement) {
    PGresult* const result = PQexec(connection, statement.c_str());
    const ExecStatusType status = PQresultStatus(result);
    PQclear(result);
    Require(status == PGRES_COMMAND_OK || status == PGRES_COPY_IN, PQerrorMessage(connection));
}

void Copy(PGconn* connection, const std::string& into, const std::string& rows) {
    Execute(connection, "COPY " + into + " FROM STDIN");
    Require(PQputCopyData(connection, rows.data(), static_cast<int>(rows.size())) == 1 &&
                PQputCopyEnd(connection, nullptr) == 1,
            "not copied");
    while (PGresult* const result = PQgetResult(connection)) {
        Require(PQresultStatus(result) == PGRES_COMMAND_OK, PQresultErrorMessage(result));
        PQclear(result);
    }
}

/// The rows of a card, made before the clock runs.
struct BareCard {
    std::array<CopiedRows, 3> rows;
};

BareCard BareOf(const catalogue::CardContents& contents, std::int64_t number,
                std::string (*keptWords)(const std::string&)) {
    BareCard bare;
    const auto put = [&](CopiedRows& rows, std::vector<std::int64_t> numbers, const auto& columns,
                         const auto& record) {
        catalogue::Parameters values(numbers.begin(), numbers.end());
        AddValues(values, columns, record);
        rows.Put(values);
    };
    put(bare.rows[0], {number + 1}, catalogue::kCardColumns, contents.card);
    std::int64_t clip = number * kClips;
    for (catalogue::CardClip each : contents.read) {
        each.clip.words = keptWords(each.clip.words);
        each.holding.clip = ++clip;
        put(bare.rows[1], {clip}, catalogue::kClipColumns, each.clip);
        put(bare.rows[2], {number + 1}, catalogue::kHoldingColumns, each.holding);
    }
    return bare;
}

void CopyCards(const std::string& url, const std::vector<BareCard>& cards,
               const std::function<void()>& wait) {
    PGconn* const connection = PQconnectdb(url.c_str());
    Execute(connection, "SET search_path TO nqp2_catalogue");
    wait();
    for (const BareCard& each : cards) {
        Execute(connection, "BEGIN");
        Copy(connection, "card (id, " + NamesOf(catalogue::kCardColumns) + ")",
             each.rows[0].Text());
        Copy(connection, "clip (id, " + NamesOf(catalogue::kClipColumns) + ")",
             each.rows[1].Text());
        Copy(connection, "holding (card_id, " + NamesOf(catalogue::kHoldingColumns) + ")",
             each.rows[2].Text());
        Execute(connection, "COMMIT");
    }
    PQfinish(connection);
}

/// Where what is written comes from, how far that is, and how many write.
struct Case {
    bool isOurs;
    bool isFar;
    std::size_t writers;

    [[nodiscard]] std::string Name() const {
        return fmt::format("{}/{}/{}", isFar ? "far" : "near", isOurs ? "ours" : "bare", writers);
    }
};
constexpr Case kCases[] = {{true, false, 1}, {true, false, 8}, {false, false, 1}, {false, false, 8},
                           {true, true, 1},  {true, true, 8},  {false, true, 1},  {false, true, 8}};

class Writers {
public:
    Writers(std::string near, std::string far) : m_near(std::move(near)), m_far(std::move(far)) {
        Language language;
        for (std::int64_t card = 0; card < kCards; ++card) {
            m_cards.push_back(MadeCard(language, card, kClips));
        }
        Empty();
        for (std::int64_t card = 0; card < kCards; ++card) {
            m_bare.push_back(BareOf(m_cards[static_cast<std::size_t>(card)], card,
                                    m_connection->Words().keptWords));
        }
    }

    double Time(const Case& wanted) {
        Empty();
        const std::string& url = wanted.isFar ? m_far : m_near;
        Fleet fleet;
        for (std::size_t writer = 0; writer < wanted.writers; ++writer) {
            const std::size_t first = m_cards.size() * writer / wanted.writers;
            const std::size_t last = m_cards.size() * (writer + 1) / wanted.writers;
            const auto part = [&](const auto& all) {
                return std::vector(all.begin() + static_cast<std::ptrdiff_t>(first),
                                   all.begin() + static_cast<std::ptrdiff_t>(last));
            };
            fleet.Add([&](const std::function<void()>& wait) {
                if (wanted.isOurs) {
                    Cards cards = part(m_cards);
                    WriteCards(url, cards, wait);
                } else {
                    CopyCards(url, part(m_bare), wait);
                }
            });
        }
        const double time = fleet.Run();
        for (const auto& [table, count] :
             {std::pair("card", kCards), {"clip", kCards * kClips}, {"holding", kCards * kClips}}) {
            std::int64_t found = 0;
            m_connection->Run(fmt::format("SELECT count(*) FROM {}", table), {},
                              [&](const catalogue::Row& row) { found = row.Number(0); });
            Require(found == count, "rows are lost");
        }
        return time / kCards;
    }

private:
    void Empty() {
        m_connection = catalogue::OpenPostgresql(m_near);
        m_connection->Run("SET client_min_messages TO error");
        m_connection->Run("DROP SCHEMA IF EXISTS nqp2_catalogue CASCADE");
        BringUpToDate(*m_connection, m_near);
        m_connection->Run("CHECKPOINT");
    }

    std::string m_near;
    std::string m_far;
    Cards m_cards;
    std::vector<BareCard> m_bare;
    std::unique_ptr<Connection> m_connection;
};

void Measure(Bench& bench) {
    using namespace std::chrono_literals;
    if (bench.Arguments().empty()) {
        for (const Case& each : kCases) {
            bench.Absent(each.Name(), "no PostgreSQL server is installed");
        }
        return;
    }
    Require(bench.Arguments().size() == 3, "three arguments or none");
    const std::string& folder = bench.Arguments()[0];
    const auto url = [&](int port) {
        return fmt::format("postgresql://{}@/{}?host={}&port={}", bench.Arguments()[1],
                           bench.Arguments()[2], folder, port);
    };
    const auto socket = [&](int port) { return fmt::format("{}/.s.PGSQL.{}", folder, port); };
    constexpr int kPort = 5432;
    const SlowLink link(socket(kPort + 1), socket(kPort), 1ms);
    Writers writers(url(kPort), url(kPort + 1));
    for (const Case& each : kCases) {
        bench.Value(each.Name(), [&] { return writers.Time(each); });
    }
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Main(argc, argv, 0, "[FOLDER-OF-SOCKET USER DATABASE]",
                             nqp2::bench::Measure);
}
