// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Fills catalogues with made-up cards, unless they have some, and times searches in them once the
// system has them in memory: each as a figure, the slowest, and the bytes that a clip takes of a
// file. A database is a file or the URL of a server.
//
//     bench_catalogue_search CARDS CLIPS-OF-EACH [NAME DATABASE]...

#include "bench/made_clips.h"
#include "bench/measure.h"
#include "catalogue/address.h"
#include "catalogue/card_choice.h"
#include "catalogue/card_writer.h"
#include "catalogue/postgresql/open_postgresql.h"
#include "catalogue/schema.h"
#include "catalogue/search.h"
#include "catalogue/sqlite/sqlite_connection.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fmt/core.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::bench {
namespace {

using namespace catalogue; // NOLINT(google-build-using-namespace)

void Fill(Connection& connection, std::int64_t cards, std::int64_t clips) {
    constexpr std::int64_t kCardsAtOnce = 200;
    Language language;
    std::optional<Transaction> transaction;
    for (std::int64_t card = 0; card < cards; ++card) {
        if (card % kCardsAtOnce == 0) {
            transaction.emplace(connection, connection.Words().beginWrite);
        }
        CardContents contents = MadeCard(language, card, clips);
        CardWriter(connection, contents, {}).Write();
        if ((card + 1) % kCardsAtOnce == 0 || card + 1 == cards) {
            transaction->Commit();
            transaction.reset();
        }
    }
}

struct NamedSearch {
    const char* name;
    SearchOptions options;
};

std::vector<NamedSearch> Searches() {
    const auto with = [](auto... members) {
        SearchOptions options;
        ((options.*members.first = members.second), ...);
        return options;
    };
    using Text = std::pair<std::string SearchOptions::*, std::string>;
    const Text often{&SearchOptions::words, "lele"};
    const Text rare{&SearchOptions::words, "lemonide kenmoostle*"};
    const Text from{&SearchOptions::from, "2009-05-03"};
    const Text to{&SearchOptions::to, "2009-05-03"};
    const Text year{&SearchOptions::to, "2009"};
    return {{"nothing asked", with()},
            {"a frequent word", with(often)},
            {"two frequent words", with(Text{&SearchOptions::words, "lele molele*"})},
            {"rare words", with(rare)},
            {"a name", with(Text{&SearchOptions::words, "000123"})},
            {"a phrase", with(Text{&SearchOptions::words, "\"lele rile\""})},
            {"a frequent word, one day", with(often, from, to)},
            {"one day", with(from, to)},
            {"frequent, a camera", with(often, Text{&SearchOptions::camera, "cam-17"})},
            {"frequent, up to a year", with(often, year)},
            {"a rate, by name",
             with(Text{&SearchOptions::rate, "59.94i"}, Text{&SearchOptions::sort, "name"})},
            {"frequent, not taken in", with(often, Text{&SearchOptions::state, "not-ingested"})},
            {"one copy", with(Text{&SearchOptions::state, "one-copy"})},
            {"incomplete", with(Text{&SearchOptions::state, "incomplete"})}};
}

double TimeOf(Connection& connection, const SearchOptions& options) {
    constexpr int kRuns = 5;
    double best = 0;
    for (int i = 0; i < kRuns; ++i) {
        const double begin = Now(Clock::Wall);
        Keep(Search(connection, options).size());
        const double time = Now(Clock::Wall) - begin;
        best = i == 0 ? time : std::min(best, time);
    }
    return best;
}

void MeasureIn(Bench& bench, const std::string& name, const std::string& database,
               std::int64_t cards, std::int64_t clips) {
    const Address address = AddressOf(database);
    const std::unique_ptr<Connection> connection =
        address.isServer ? OpenPostgresql(address.target) : OpenSqlite(address.target, false);
    BringUpToDate(*connection, address.name);
    if (AllCards(*connection).empty()) {
        Fill(*connection, cards, clips);
        if (address.isServer) {
            connection->Run("ANALYZE"); // as it does by itself within a minute
        }
    }
    if (!address.isServer) {
        connection->Run("PRAGMA wal_checkpoint(TRUNCATE)");
        bench.Value(name + "/bytes", [&] {
            return static_cast<double>(std::filesystem::file_size(address.target)) /
                   static_cast<double>(cards * clips);
        });
    }
    for (const NamedSearch& each : Searches()) {
        bench.Value(name + '/' + each.name, [&] { return TimeOf(*connection, each.options); });
    }
    bench.Value(name + "/slowest", [&] {
        double slowest = 0;
        for (const NamedSearch& each : Searches()) {
            slowest = std::max(slowest, TimeOf(*connection, each.options));
        }
        return slowest;
    });
}

void Measure(Bench& bench) {
    const std::vector<std::string>& arguments = bench.Arguments();
    for (std::size_t i = 2; i + 1 < arguments.size(); i += 2) {
        MeasureIn(bench, arguments[i], arguments[i + 1], std::stoll(arguments[0]),
                  std::stoll(arguments[1]));
    }
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Main(argc, argv, 2, "CARDS CLIPS-OF-EACH [NAME DATABASE]...",
                             nqp2::bench::Measure);
}
