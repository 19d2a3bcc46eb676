// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/address.h"
#include "catalogue/connection.h"
#include "console/console.h"

#include <functional>
#include <memory>
#include <string>

namespace nqp2::catalogue {

enum class Missing { Make, Refuse };

/// Opens a catalogue with its tables at the newest version. A file that is not there is made or
/// refused. Tells when it lies where others cannot share it safely.
std::unique_ptr<Connection> OpenCatalogue(tool::Console& console, const Address& address,
                                          Missing missing);

/// The failure to report for an error of a database.
tool::Failure FailureOf(const DatabaseError& error, const std::string& name);

} // namespace nqp2::catalogue
