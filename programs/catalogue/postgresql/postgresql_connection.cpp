// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/postgresql/postgresql_connection.h"

#include "catalogue/postgresql/postgresql_dialect.h"

#include <fmt/core.h>
#include <libpq-fe.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <unordered_map>

namespace nqp2::catalogue {
namespace {

/// By the beginnings of the server's codes of errors, the longer ones first.
constexpr struct {
    std::string_view code;
    DatabaseFault fault;
} kFaults[] = {
    {"40P01", DatabaseFault::Conflict}, // deadlock
    {"23", DatabaseFault::Conflict},    // another has added or removed the same at this moment
    {"40", DatabaseFault::Conflict},    {"53100", DatabaseFault::Full},
    {"55P03", DatabaseFault::Busy},     {"53", DatabaseFault::Busy},
    {"57", DatabaseFault::Gone},        {"08", DatabaseFault::Gone},
    {"28", DatabaseFault::Denied},      {"25006", DatabaseFault::Denied},
    {"42501", DatabaseFault::Denied},   {"XX001", DatabaseFault::Damaged},
    {"XX002", DatabaseFault::Damaged},
};

struct CloseConnection {
    void operator()(PGconn* connection) const { PQfinish(connection); }
};
struct ClearResult {
    void operator()(PGresult* result) const { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, ClearResult>;

class ResultRow final : public Row {
public:
    ResultRow(const PGresult* result, int row) : m_result(result), m_row(row) {}
    [[nodiscard]] std::int64_t Number(int column) const override {
        std::int64_t number = 0;
        const std::string_view text = Text(column);
        std::from_chars(text.data(), text.data() + text.size(), number);
        return number;
    }
    [[nodiscard]] std::string_view Text(int column) const override {
        return {PQgetvalue(m_result, m_row, column),
                static_cast<std::size_t>(PQgetlength(m_result, m_row, column))};
    }

private:
    const PGresult* m_result;
    int m_row;
};

/// Parameters as the client library takes them.
class Bound {
public:
    explicit Bound(const Parameters& parameters) {
        m_texts.reserve(parameters.size());
        for (const Parameter& each : parameters) {
            const auto* const text = std::get_if<std::string>(&each);
            m_texts.push_back(text == nullptr ? std::to_string(std::get<std::int64_t>(each))
                                              : *text);
            m_values.push_back(m_texts.back().c_str());
        }
    }
    [[nodiscard]] int Count() const { return static_cast<int>(m_values.size()); }
    [[nodiscard]] const char* const* Values() const { return m_values.data(); }

private:
    std::vector<std::string> m_texts;
    std::vector<const char*> m_values;
};

/// Rows turned into one array for each column, as the server reads them.
class Arrays {
public:
    explicit Arrays(const Insertion& into) : m_arrays(into.columns.size()) {}

    void Put(const Parameters& row) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            std::string& array = m_arrays[i];
            const std::size_t before = array.size();
            array += array.empty() ? '{' : ',';
            if (const auto* const text = std::get_if<std::string>(&row[i])) {
                AppendQuoted(array, *text);
            } else {
                array += std::to_string(std::get<std::int64_t>(row[i]));
            }
            m_size += array.size() - before;
        }
    }
    [[nodiscard]] std::size_t Size() const { return m_size; }
    [[nodiscard]] Parameters Take() const {
        Parameters arrays;
        for (const std::string& array : m_arrays) {
            arrays.emplace_back(array + '}');
        }
        return arrays;
    }

private:
    static void AppendQuoted(std::string& array, std::string_view text) {
        array += '"';
        for (std::size_t at = 0;; ++at) {
            const std::size_t end = std::min(text.find_first_of("\"\\", at), text.size());
            array.append(text, at, end - at);
            if (end == text.size()) {
                break;
            }
            array += '\\';
            array += text[end];
            at = end;
        }
        array += '"';
    }

    std::vector<std::string> m_arrays;
    std::size_t m_size = 0;
};

/// An INSERT of rows that are given as arrays.
std::string InsertOfArrays(const Insertion& into) {
    std::string taken;
    std::string arrays;
    std::string names;
    for (std::size_t i = 0; i < into.columns.size(); ++i) {
        const auto& [name, isNumber] = into.columns[i];
        const char* const comma = i == 0 ? "" : ", ";
        const bool isWords = name == kWordsColumn;
        taken += isWords ? fmt::format("{}CAST({} AS tsvector)", comma, name)
                         : fmt::format("{}{}", comma, name);
        arrays += fmt::format("{}CAST(${} AS {}[])", comma, i + 1, isNumber ? "bigint" : "text");
        names += fmt::format("{}{}", comma, name);
    }
    return "INSERT INTO " + TableAndColumns(into) + " SELECT " + taken + " FROM unnest(" + arrays +
           ") AS given (" + names + ")" + into.end;
}

/// What a person reads of a server's message: its first line.
std::string FirstLine(const char* message) {
    const std::string_view text = message == nullptr ? "" : message;
    return std::string(text.substr(0, text.find('\n')));
}

class PostgresqlConnection final : public Connection {
public:
    explicit PostgresqlConnection(const std::string& url) {
        const char* const keys[] = {"dbname", "fallback_application_name", "client_encoding",
                                    nullptr};
        const char* const values[] = {url.c_str(), "nqp2-catalogue", "UTF8", nullptr};
        m_connection.reset(PQconnectdbParams(keys, values, 1));
        if (PQstatus(m_connection.get()) != CONNECTION_OK) {
            throw DatabaseError(DatabaseFault::Gone, FirstLine(PQerrorMessage(m_connection.get())));
        }
        PQsetNoticeProcessor(
            m_connection.get(), [](void*, const char*) {}, nullptr);
        Connection::Run("SET search_path TO nqp2_catalogue");
        Connection::Run("SET statement_timeout TO 0");
    }

    [[nodiscard]] const Dialect& Words() const override { return kPostgresqlDialect; }

    void Run(std::string_view statement, const Parameters& parameters,
             const OnRow& onRow) override {
        const Bound bound(parameters);
        const std::string& name = Prepared(statement, bound.Count());
        const Result result(PQexecPrepared(m_connection.get(), name.c_str(), bound.Count(),
                                           bound.Values(), nullptr, nullptr, 0));
        Require(result.get());
        for (int i = 0; i < PQntuples(result.get()); ++i) {
            onRow(ResultRow(result.get(), i));
        }
    }

    void Insert(const Insertion& into, const std::vector<Parameters>& rows,
                const OnRow& onRow) override {
        constexpr std::size_t kMostAtOnce = 4 << 20; // bytes
        const std::string statement = InsertOfArrays(into);
        for (std::size_t at = 0; at < rows.size();) {
            Arrays arrays(into);
            for (; at < rows.size() && arrays.Size() < kMostAtOnce; ++at) {
                arrays.Put(rows[at]);
            }
            Run(statement, arrays.Take(), onRow);
        }
    }

private:
    void Require(const PGresult* result) const {
        const ExecStatusType status = PQresultStatus(result);
        if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK) {
            return;
        }
        const char* const told = PQresultErrorField(result, PG_DIAG_SQLSTATE);
        const char* const message = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
        throw DatabaseError(FaultOf(told == nullptr ? "" : told),
                            message == nullptr ? FirstLine(PQerrorMessage(m_connection.get()))
                                               : message);
    }

    [[nodiscard]] DatabaseFault FaultOf(std::string_view code) const {
        const auto* const row =
            std::find_if(std::begin(kFaults), std::end(kFaults),
                         [code](const auto& each) { return code.starts_with(each.code); });
        if (row != std::end(kFaults)) {
            return row->fault;
        }
        return PQstatus(m_connection.get()) == CONNECTION_OK ? DatabaseFault::Other
                                                             : DatabaseFault::Gone;
    }

    const std::string& Prepared(std::string_view statement, int parameters) {
        const std::string text(statement);
        const auto known = m_statements.find(text);
        if (known != m_statements.end()) {
            return known->second;
        }
        const std::string name = "s" + std::to_string(m_statements.size());
        const Result result(
            PQprepare(m_connection.get(), name.c_str(), text.c_str(), parameters, nullptr));
        Require(result.get());
        return m_statements.emplace(text, name).first->second;
    }

    std::unique_ptr<PGconn, CloseConnection> m_connection;
    std::unordered_map<std::string, std::string> m_statements;
};

} // namespace

std::unique_ptr<Connection> ConnectToPostgresql(const std::string& url) {
    return std::make_unique<PostgresqlConnection>(url);
}

} // namespace nqp2::catalogue
