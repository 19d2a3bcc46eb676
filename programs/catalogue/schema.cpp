// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/schema.h"

#include "console/console.h"

#include <fmt/core.h>

#include <cstdint>

namespace nqp2::catalogue {
namespace {

/// The version that the tables have; 0 when there are none. `name` is the database's.
std::size_t VersionOf(Connection& connection, const std::string& name) {
    std::int64_t tables = 0;
    std::int64_t own = 0;
    connection.Run(connection.Words().tables, {}, [&](const Row& row) {
        tables = row.Number(0);
        own = row.Number(1);
    });
    if (own == 0 && tables > 0) {
        throw tool::Failure(name, "is no catalogue", "it has tables of something else");
    }
    std::int64_t version = 0;
    if (own > 0) {
        connection.Run("SELECT version FROM catalogue_version", {},
                       [&](const Row& row) { version = row.Number(0); });
    }
    return static_cast<std::size_t>(version);
}

void Migrate(Connection& connection, std::size_t from, std::size_t to) {
    for (std::size_t version = from; version < to; ++version) {
        for (const char* const statement : connection.Words().migrations[version]) {
            connection.Run(statement);
        }
    }
    connection.Run("DELETE FROM catalogue_version");
    connection.Run("INSERT INTO catalogue_version (version) VALUES ($1)",
                   {static_cast<std::int64_t>(to)});
}

} // namespace

void BringUpTo(Connection& connection, const std::string& name, std::size_t version) {
    const std::size_t newest = connection.Words().migrations.size();
    std::size_t found = VersionOf(connection, name);
    if (found < version) {
        Transaction transaction(connection, connection.Words().beginWrite);
        if (const char* const lock = connection.Words().lockText; *lock != '\0') {
            connection.Run(lock, {std::string("schema")});
        }
        // Another may have done it in the meantime.
        found = VersionOf(connection, name);
        if (found < version) {
            Migrate(connection, found, version);
        }
        transaction.Commit();
    }
    if (found > newest) {
        throw tool::Failure(
            name, "was made by a newer nqp2",
            fmt::format("its tables have version {}, this one knows {}", found, newest));
    }
}

void BringUpToDate(Connection& connection, const std::string& name) {
    BringUpTo(connection, name, connection.Words().migrations.size());
}

} // namespace nqp2::catalogue
