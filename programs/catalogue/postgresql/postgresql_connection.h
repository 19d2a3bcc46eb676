// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"

#include <memory>
#include <string>

namespace nqp2::catalogue {

/// A session with a server, by its client library.
std::unique_ptr<Connection> ConnectToPostgresql(const std::string& url);

} // namespace nqp2::catalogue
