// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/postgresql/postgresql_connection.h"

namespace nqp2::catalogue {

std::unique_ptr<Connection> OpenPostgresql(const std::string& /*url*/) {
    throw DatabaseError(DatabaseFault::Other, "this nqp2 was built without its client library");
}

} // namespace nqp2::catalogue
