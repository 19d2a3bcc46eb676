// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/sqlite/sqlite_connection.h"

#include "catalogue/sqlite/sqlite_dialect.h"

#include <sqlite3.h>

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace nqp2::catalogue {
namespace {

constexpr int kPatience = 10'000; ///< milliseconds, for another that writes

constexpr struct {
    int code;
    DatabaseFault fault;
} kFaults[] = {{SQLITE_BUSY, DatabaseFault::Busy},      {SQLITE_LOCKED, DatabaseFault::Busy},
               {SQLITE_FULL, DatabaseFault::Full},      {SQLITE_CORRUPT, DatabaseFault::Damaged},
               {SQLITE_NOTADB, DatabaseFault::Damaged}, {SQLITE_READONLY, DatabaseFault::Denied},
               {SQLITE_PERM, DatabaseFault::Denied},    {SQLITE_CANTOPEN, DatabaseFault::Denied},
               {SQLITE_AUTH, DatabaseFault::Denied}};

DatabaseFault FaultOf(int code) {
    const auto* const row = std::find_if(std::begin(kFaults), std::end(kFaults),
                                         [&](auto& each) { return each.code == (code & 0xFF); });
    return row == std::end(kFaults) ? DatabaseFault::Other : row->fault;
}

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
struct EndStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, EndStatement>;

class SqliteRow final : public Row {
public:
    explicit SqliteRow(sqlite3_stmt* statement) : m_statement(statement) {}
    [[nodiscard]] std::int64_t Number(int column) const override {
        return sqlite3_column_int64(m_statement, column);
    }
    [[nodiscard]] std::string_view Text(int column) const override {
        const unsigned char* const text = sqlite3_column_text(m_statement, column);
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column));
        return text == nullptr ? std::string_view()
                               : std::string_view(reinterpret_cast<const char*>(text), size);
    }

private:
    sqlite3_stmt* m_statement;
};

/// A statement that is used, made ready for its next use at the end.
class Use {
public:
    explicit Use(sqlite3_stmt* statement) : m_statement(statement) {}
    ~Use() {
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

private:
    sqlite3_stmt* m_statement;
};

class SqliteConnection final : public Connection {
public:
    SqliteConnection(const std::string& path, bool isShared) {
        sqlite3* opened = nullptr;
        const int code = sqlite3_open_v2(
            path.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
            nullptr);
        m_database.reset(opened);
        Require(code);
        sqlite3_extended_result_codes(opened, 1);
        sqlite3_busy_timeout(opened, kPatience);
        sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        for (const char* const each :
             {isShared ? "PRAGMA journal_mode = DELETE" : "PRAGMA journal_mode = WAL",
              "PRAGMA synchronous = FULL", "PRAGMA foreign_keys = ON", "PRAGMA cache_size = -65536",
              "PRAGMA temp_store = MEMORY"}) {
            Connection::Run(each);
        }
    }

    [[nodiscard]] const Dialect& Words() const override { return kSqliteDialect; }

    void Run(std::string_view statement, const Parameters& parameters,
             const OnRow& onRow) override {
        sqlite3_stmt* const prepared = Prepared(statement);
        const Use use(prepared);
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            Bind(prepared, i + 1, parameters[i]);
        }
        const SqliteRow row(prepared);
        int code = sqlite3_step(prepared);
        for (; code == SQLITE_ROW; code = sqlite3_step(prepared)) {
            onRow(row);
        }
        Require(code);
    }

    void Insert(const Insertion& into, const std::vector<Parameters>& rows,
                const OnRow& onRow) override {
        std::string values;
        for (std::size_t i = 1; i <= into.columns.size(); ++i) {
            values += (i == 1 ? "$" : ", $") + std::to_string(i);
        }
        const std::string statement =
            "INSERT INTO " + TableAndColumns(into) + " VALUES (" + values + ")" + into.end;
        for (const Parameters& row : rows) {
            Run(statement, row, onRow);
        }
    }

private:
    void Require(int code) const {
        if (code != SQLITE_OK && code != SQLITE_DONE) {
            throw DatabaseError(FaultOf(code), m_database ? sqlite3_errmsg(m_database.get())
                                                          : sqlite3_errstr(code));
        }
    }

    sqlite3_stmt* Prepared(std::string_view statement) {
        const std::string key(statement);
        const auto known = m_statements.find(key);
        if (known != m_statements.end()) {
            return known->second.get();
        }
        sqlite3_stmt* made = nullptr;
        Require(sqlite3_prepare_v3(m_database.get(), key.data(), static_cast<int>(key.size()),
                                   SQLITE_PREPARE_PERSISTENT, &made, nullptr));
        return m_statements.emplace(key, Statement(made)).first->second.get();
    }

    void Bind(sqlite3_stmt* statement, std::size_t number, const Parameter& parameter) {
        const int place =
            sqlite3_bind_parameter_index(statement, ("$" + std::to_string(number)).c_str());
        if (const auto* const text = std::get_if<std::string>(&parameter)) {
            Require(sqlite3_bind_text64(statement, place, text->data(), text->size(), SQLITE_STATIC,
                                        SQLITE_UTF8));
        } else {
            Require(sqlite3_bind_int64(statement, place, std::get<std::int64_t>(parameter)));
        }
    }

    std::unique_ptr<sqlite3, CloseDatabase> m_database;
    std::unordered_map<std::string, Statement> m_statements;
};

} // namespace

std::unique_ptr<Connection> OpenSqlite(const std::string& path, bool isShared) {
    return std::make_unique<SqliteConnection>(path, isShared);
}

} // namespace nqp2::catalogue
