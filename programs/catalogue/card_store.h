// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/card_reading.h"
#include "catalogue/connection.h"
#include "catalogue/records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::catalogue {

/// What became of a card that was stored.
struct StoreOutcome {
    CardRecord card;
    bool isNew = false;
    bool isUnchanged = false; ///< as it was: nothing but when and where it was seen is new
    std::int64_t clipsRead = 0;
    std::int64_t clipsGone = 0; ///< that the card had and has no more
    ReadingRemarks remarks;
};

/// Brings a card that is there into the catalogue, or up to date in it, in one transaction: all of
/// it or nothing. An empty label leaves the one that it has. What other writers do at the same time
/// is waited for, and done again where that is needed.
StoreOutcome StoreCard(Connection& connection, const FoundCard& found, const std::string& label);

/// Whether the card that is there is in the catalogue, maybe from where it was before.
bool IsKnown(Connection& connection, const FoundCard& found);

/// Takes a card out, and the clips that no other card has.
void RemoveCard(Connection& connection, std::int64_t card);

/// The cards that lie, or lay, on a medium; the newest first.
std::vector<CardRecord> CardsOn(Connection& connection, const std::string& mediumKey);
std::vector<HoldingRecord> HoldingsOf(Connection& connection, std::int64_t card);

} // namespace nqp2::catalogue
