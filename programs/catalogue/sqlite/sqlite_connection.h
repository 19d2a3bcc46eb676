// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"

#include <memory>
#include <string>

namespace nqp2::catalogue {

/// Opens or makes a database in a file. `isShared`: it is on a file system that other machines
/// reach too, where processes cannot share memory.
std::unique_ptr<Connection> OpenSqlite(const std::string& path, bool isShared);

} // namespace nqp2::catalogue
