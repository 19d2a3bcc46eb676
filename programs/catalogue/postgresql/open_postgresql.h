// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"

#include <memory>
#include <string>

namespace nqp2::catalogue {

/// Connects to a server. Passwords come from where its client library takes them. Throws
/// DatabaseError where this was built without that library.
std::unique_ptr<Connection> OpenPostgresql(const std::string& url);

} // namespace nqp2::catalogue
