// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/address.h"
#include "catalogue/arguments.h"
#include "catalogue/connection.h"
#include "console/console.h"

namespace nqp2::catalogue {

/// Opens the catalogue and does what was asked for. Throws tool::Failure and DatabaseError.
tool::Status RunCommand(tool::Console& console, const Arguments& arguments, const Address& address);

using Command = tool::Status (*)(tool::Console& console, Connection& connection,
                                 const Arguments& arguments);

tool::Status RunAdd(tool::Console& console, Connection& connection, const Arguments& arguments);
tool::Status RunUpdate(tool::Console& console, Connection& connection, const Arguments& arguments);
tool::Status RunCards(tool::Console& console, Connection& connection, const Arguments& arguments);
tool::Status RunSearch(tool::Console& console, Connection& connection, const Arguments& arguments);
tool::Status RunShow(tool::Console& console, Connection& connection, const Arguments& arguments);
tool::Status RunRemove(tool::Console& console, Connection& connection, const Arguments& arguments);
tool::Status RunExport(tool::Console& console, Connection& connection, const Arguments& arguments);

} // namespace nqp2::catalogue
