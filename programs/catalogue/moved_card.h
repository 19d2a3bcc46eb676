// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"
#include "catalogue/records.h"

#include <optional>
#include <string>

namespace nqp2::catalogue {

/// The card that has been moved to where one was found that nobody knows: a copy on this machine
/// that was in the same state, and is not any more where it was. Nothing where that is uncertain,
/// as when the medium on which it was may just not be there.
std::optional<CardRecord> MovedCard(Connection& connection, const std::string& state);

} // namespace nqp2::catalogue
