// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace nqp2::catalogue {

/// What a parameter of a statement is given. Texts are UTF-8 without zero bytes.
using Parameter = std::variant<std::int64_t, std::string>;
using Parameters = std::vector<Parameter>;

/// A row of a result; columns count from 0. Valid while it is shown.
class Row {
public:
    virtual ~Row() = default;
    [[nodiscard]] virtual std::int64_t Number(int column) const = 0;
    [[nodiscard]] virtual std::string_view Text(int column) const = 0;
};
using OnRow = std::function<void(const Row& row)>;

enum class DatabaseFault {
    Busy,     ///< another has it
    Full,     ///< no space
    Damaged,  ///< its file is none, or not whole
    Denied,   ///< may not be written or opened
    Gone,     ///< the server is not there, or not any more
    Conflict, ///< with another writer: what was done is undone and may be done again
    Other,
};

class DatabaseError : public std::runtime_error {
public:
    DatabaseError(DatabaseFault fault, const std::string& reason)
        : std::runtime_error(reason), m_fault(fault) {}
    [[nodiscard]] DatabaseFault Fault() const { return m_fault; }

private:
    DatabaseFault m_fault;
};

/// Rows that are put into a table, all by one statement where the engine can.
struct Insertion {
    struct Column {
        std::string name;
        bool isNumber = false;
    };
    std::string table;
    std::vector<Column> columns;
    std::string end; ///< ON CONFLICT, RETURNING
};
/// "table (a, b)".
std::string TableAndColumns(const Insertion& into);

/// The column whose texts Dialect::keptWords makes.
inline constexpr std::string_view kWordsColumn = "words";

/// Statements that bring the tables from one version to the next.
using Migration = std::span<const char* const>;

struct WordQuery;

/// What the engines say in words of their own. No text here holds anything of a user's.
struct Dialect {
    /// Each leads to the version that is its place, counted from 1.
    std::span<const Migration> migrations;
    /// One row: how many tables there are, whoever made them; how many are the catalogue's.
    const char* tables;
    const char* beginWrite;
    /// Lets others who give the same text wait until the transaction ends; empty where all who
    /// write wait for each other anyway.
    const char* lockText;
    /// Counts clips with the words of the parameter $1, up to $2; empty where the engine plans by
    /// counts of its own.
    const char* countByWords;
    /// Clips `c` by their words, behind FROM: what stands before a parameter and behind it.
    const char* clipsByWords;
    const char* clipsByWordsEnd;
    /// Says behind the table by which index to go through it; empty where that cannot be said.
    const char* indexedBy;
    /// Clips' words with a space before and behind each, and what stands before a parameter that
    /// is looked for in them: for going through clips by an index.
    const char* placeInWords;
    /// A query for words as that parameter, and the words of a clip as they are kept.
    std::string (*queryText)(const WordQuery& query);
    std::string (*keptWords)(const std::string& words);
};

/// One session with a database. Throws DatabaseError. One thread at a time.
class Connection {
public:
    virtual ~Connection() = default;

    [[nodiscard]] virtual const Dialect& Words() const = 0;
    /// Runs one statement with its parameters, $1 and so on. Prepared once for each text.
    virtual void Run(std::string_view statement, const Parameters& parameters,
                     const OnRow& onRow) = 0;
    void Run(std::string_view statement, const Parameters& parameters = {}) {
        Run(statement, parameters, [](const Row&) {});
    }
    /// Puts rows of these columns into the table. No two may be the same to ON CONFLICT. What
    /// RETURNING tells comes in any order.
    virtual void Insert(const Insertion& into, const std::vector<Parameters>& rows,
                        const OnRow& onRow) = 0;
    void Insert(const Insertion& into, const std::vector<Parameters>& rows) {
        Insert(into, rows, [](const Row&) {});
    }
};

/// Undone unless it is committed.
class Transaction {
public:
    /// `begin` is the statement that begins it.
    Transaction(Connection& connection, const char* begin);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit();

private:
    Connection& m_connection;
    bool m_isOpen = true;
};

} // namespace nqp2::catalogue
