// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Fills a catalogue with made-up cards, unless it has some, and times searches in it: what a clip
// takes of the file, and milliseconds of each search, once the system has the file in memory.
//
//     catalogue_of_many DATABASE CARDS CLIPS-OF-EACH

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
#include <cstdio>
#include <exception>
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

void TimeSearches(Connection& connection) {
    for (const NamedSearch& each : Searches()) {
        std::vector<double> times;
        std::size_t found = 0;
        for (int i = 0; i < 5; ++i) {
            const double begin = Now(Clock::Wall);
            found = Search(connection, each.options).size();
            times.push_back((Now(Clock::Wall) - begin) / 1e6);
        }
        fmt::print("{:28} {:5} clips  first {:8.1f} ms  then {:8.1f} ms\n", each.name, found,
                   times.front(), *std::min_element(times.begin() + 1, times.end()));
    }
}

void Run(const std::string& database, std::int64_t cards, std::int64_t clips) {
    const Address address = AddressOf(database);
    const std::unique_ptr<Connection> connection =
        address.isServer ? OpenPostgresql(address.target) : OpenSqlite(address.target, false);
    BringUpToDate(*connection, address.name);
    if (AllCards(*connection).empty()) {
        const double begin = Now(Clock::Wall);
        Fill(*connection, cards, clips);
        fmt::print("filled in {:.0f} s\n", (Now(Clock::Wall) - begin) / 1e9);
    }
    if (!address.isServer) {
        connection->Run("PRAGMA wal_checkpoint(TRUNCATE)");
        const auto size = static_cast<double>(std::filesystem::file_size(address.target));
        fmt::print("{:.0f} bytes a clip\n", size / static_cast<double>(cards * clips));
    }
    TimeSearches(*connection);
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: catalogue_of_many DATABASE CARDS CLIPS-OF-EACH\n", stderr);
        return 2;
    }
    try {
        nqp2::bench::Run(argv[1], std::stoll(argv[2]), std::stoll(argv[3]));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "catalogue_of_many: %s\n", error.what());
        return 1;
    }
    return 0;
}
