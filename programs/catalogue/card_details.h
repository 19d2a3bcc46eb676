// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"
#include "catalogue/records.h"
#include "console/console.h"
#include "console/value.h"

namespace nqp2::catalogue {

/// A card with all that belongs to it: its clips, the cards that have some of them too, edit lists,
/// what was taken in, its lists of hashes.
tool::Record CardDetailsValue(Connection& connection, const CardRecord& card);
void PrintCardDetails(tool::Console& console, Connection& connection, const CardRecord& card);

} // namespace nqp2::catalogue
