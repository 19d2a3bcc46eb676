// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures a card added to a new catalogue beside reading the card and writing the same rows by
// SQLite alone, and bringing an unchanged card up to date beside listing its folders.
//
//     bench_catalogue FOLDER CARD

#include "bench/measure.h"
#include "catalogue/card_reading.h"
#include "catalogue/card_store.h"
#include "catalogue/schema.h"
#include "catalogue/sqlite/sqlite_connection.h"
#include "NQP2ParserU/PathText.h"

#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace nqp2::bench {
namespace {

namespace fs = std::filesystem;
using catalogue::Connection;

FoundCard CardIn(const std::string& folder) {
    CardSearch search;
    Require(FindCard(InterfaceRoot(folder), search) && search.cards.GetSize() == 1, "no card");
    return search.cards[0];
}

/// Each folder below listed, each entry asked for size and time.
void ListBelow(int folder) {
    DIR* const listed = fdopendir(folder);
    Require(listed != nullptr, "no folder");
    std::vector<std::string> below;
    for (const dirent* entry = readdir(listed); entry != nullptr; entry = readdir(listed)) {
        struct stat info = {};
        const std::string_view name = entry->d_name;
        if (name != "." && name != ".." &&
            fstatat(folder, entry->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISDIR(info.st_mode)) {
            below.emplace_back(name);
        }
    }
    for (const std::string& name : below) {
        ListBelow(openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    closedir(listed);
}

/// The rows of a card, put into the tables by the engine's own interface.
class BareWriter {
public:
    explicit BareWriter(const std::string& path) {
        Require(sqlite3_open(path.c_str(), &m_database) == SQLITE_OK, "not opened");
        Execute("PRAGMA journal_mode = WAL");
        Execute("PRAGMA synchronous = FULL");
    }
    ~BareWriter() { sqlite3_close(m_database); }
    BareWriter(const BareWriter&) = delete;
    BareWriter& operator=(const BareWriter&) = delete;

    void Write(const catalogue::CardContents& contents) {
        Execute("BEGIN IMMEDIATE");
        Insert("card", "", catalogue::kCardColumns, std::vector{contents.card});
        std::vector<catalogue::ClipRecord> clips;
        std::vector<catalogue::HoldingRecord> holdings;
        for (const catalogue::CardClip& each : contents.read) {
            clips.push_back(each.clip);
            holdings.push_back(each.holding);
            holdings.back().clip = static_cast<std::int64_t>(clips.size());
        }
        Insert("clip", "", catalogue::kClipColumns, clips);
        Insert("holding", "card_id", catalogue::kHoldingColumns, holdings);
        Insert("gap", "card_id", catalogue::kGapColumns, contents.gaps);
        Execute("COMMIT");
    }

private:
    void Execute(const char* statement) {
        Require(sqlite3_exec(m_database, statement, nullptr, nullptr, nullptr) == SQLITE_OK,
                statement);
    }

    void Bind(sqlite3_stmt* statement, int place, const catalogue::Parameter& value) {
        if (const auto* const text = std::get_if<std::string>(&value)) {
            sqlite3_bind_text64(statement, place, text->data(), text->size(), SQLITE_STATIC,
                                SQLITE_UTF8);
        } else {
            sqlite3_bind_int64(statement, place, std::get<std::int64_t>(value));
        }
    }

    template <class Columns, class Records>
    void Insert(const char* table, const char* owner, const Columns& columns,
                const Records& records) {
        const catalogue::Insertion into = catalogue::InsertionInto(table, owner, columns);
        std::string text = "INSERT INTO " + TableAndColumns(into) + " VALUES (?";
        for (std::size_t i = 1; i < into.columns.size(); ++i) {
            text += ", ?";
        }
        text += ')';
        sqlite3_stmt* statement = nullptr;
        Require(sqlite3_prepare_v2(m_database, text.c_str(), -1, &statement, nullptr) == SQLITE_OK,
                "not prepared");
        for (const auto& record : records) {
            catalogue::Parameters values;
            if (*owner != '\0') {
                values.emplace_back(std::int64_t{1});
            }
            AddValues(values, columns, record);
            for (std::size_t i = 0; i < values.size(); ++i) {
                Bind(statement, static_cast<int>(i) + 1, values[i]);
            }
            Require(sqlite3_step(statement) == SQLITE_DONE, "not written");
            sqlite3_reset(statement);
        }
        sqlite3_finalize(statement);
    }

    sqlite3* m_database = nullptr;
};

class Databases {
public:
    explicit Databases(fs::path folder) : m_folder(std::move(folder)) {}

    /// An empty catalogue in the place of what was there.
    std::string Fresh(const std::string& name) {
        const fs::path path = m_folder / (name + ".sqlite");
        for (const char* const ending : {"", "-wal", "-shm"}) {
            fs::remove(path.string() + ending);
        }
        BringUpToDate(*catalogue::OpenSqlite(path, false), name);
        return path;
    }

private:
    fs::path m_folder;
};

void Measure(Bench& bench) {
    fs::create_directories(bench.Arguments()[0]);
    const std::string path = fs::absolute(bench.Arguments()[1]);
    const FoundCard card = CardIn(path);
    Databases databases(bench.Arguments()[0]);
    catalogue::ReadingRemarks remarks;
    catalogue::CardContents contents = ReadCard(catalogue::LookAt(card), {}, remarks);
    // Clips of one identifier are one in the catalogue.
    std::sort(contents.read.begin(), contents.read.end(),
              [](const auto& a, const auto& b) { return a.clip.identity < b.clip.identity; });
    std::unique_ptr<Connection> ours;
    std::unique_ptr<BareWriter> bare;
    bench.Together(
        Clock::Processor,
        {{"add", [&] { Keep(StoreCard(*ours, card, "").clipsRead); },
          [&] { ours = catalogue::OpenSqlite(databases.Fresh("add"), false); }},
         {"scan", [&] { Keep(ReadCard(catalogue::LookAt(card), {}, remarks).read.size()); }},
         {"bare", [&] { bare->Write(contents); },
          [&] { bare = std::make_unique<BareWriter>(databases.Fresh("bare")); }}});
    const std::unique_ptr<Connection> kept =
        catalogue::OpenSqlite(databases.Fresh("update"), false);
    StoreCard(*kept, card, "");
    bench.Together(
        Clock::Processor,
        {{"update", [&] { Keep(StoreCard(*kept, card, "").isUnchanged); }},
         {"list", [&] { ListBelow(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)); }}});
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Main(argc, argv, 2, "FOLDER CARD", nqp2::bench::Measure);
}
