// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/card_state.h"
#include "catalogue/records.h"
#include "NQP2ParserU/CardFinder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::catalogue {

/// A card that is there.
struct SeenCard {
    FoundCard found;
    std::string path;
    CardState state;
};

SeenCard LookAt(const FoundCard& found);

/// What a reading of a card could not take.
struct ReadingRemarks {
    std::int64_t skippedFiles = 0;
    std::int64_t unreadClips = 0; ///< of which only the record is known
};

/// Reads what is to be kept of a card. `known` are the holdings that the catalogue has of it: their
/// clips are read only where a file has changed since. Throws tool::Failure when the card cannot be
/// read.
CardContents ReadCard(const SeenCard& card, const std::vector<HoldingRecord>& known,
                      ReadingRemarks& remarks);

} // namespace nqp2::catalogue
