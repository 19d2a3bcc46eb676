// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"
#include "catalogue/records.h"
#include "console/console.h"
#include "NQP2ParserU/CardFinder.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::catalogue {

/// All cards by their numbers.
std::vector<CardRecord> AllCards(Connection& connection);
/// Those of a number, label, serial number or path.
std::vector<CardRecord> CardsNamed(Connection& connection, const std::string& name);

/// Those whose files were in a state when they were seen last.
std::vector<CardRecord> CardsInState(Connection& connection, const std::string& state);

/// The card at a path, which says so when that is another folder than the one given; all below one.
/// Throws tool::Failure when there is none, or several where one is wanted.
FoundCard CardAt(tool::Console& console, const std::string& path);
std::vector<FoundCard> CardsBelow(const std::string& path, std::vector<std::string>& problems);

/// The card where it was seen last, on this machine; nothing when another or none is there now.
std::optional<FoundCard> ReachedAgain(const CardRecord& card);

} // namespace nqp2::catalogue
