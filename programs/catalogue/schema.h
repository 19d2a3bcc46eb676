// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"

#include <cstddef>
#include <string>

namespace nqp2::catalogue {

/// Brings the tables to the newest version, or to one before it; makes them when there are none.
/// Throws tool::Failure, about `name`, for a database of something else and for one of a newer
/// version, both untouched.
void BringUpToDate(Connection& connection, const std::string& name);
void BringUpTo(Connection& connection, const std::string& name, std::size_t version);

} // namespace nqp2::catalogue
