// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/postgresql/open_postgresql.h"

#ifdef NQP2_HAS_POSTGRESQL
#include "catalogue/postgresql/postgresql_connection.h"
#endif

namespace nqp2::catalogue {

#ifdef NQP2_HAS_POSTGRESQL
std::unique_ptr<Connection> OpenPostgresql(const std::string& url) {
    return ConnectToPostgresql(url);
}
#else
std::unique_ptr<Connection> OpenPostgresql(const std::string& /*url*/) {
    throw DatabaseError(DatabaseFault::Other, "this nqp2 was built without its client library");
}
#endif

} // namespace nqp2::catalogue
