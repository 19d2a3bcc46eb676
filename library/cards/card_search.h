// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/CString.h"

#include <cstdint>

namespace nqp2::cards {

/// What a search looks for, and where.
struct SearchOrder {
    CardSearchLimits limits;
    std::uint32_t kinds = kEveryCard;
    bool tellsDepth = true; ///< whether folders that are too far below are told as skipped
};

/// Appends the cards in a folder and below it, as FindCards says.
void SearchCards(const CString& folder, const SearchOrder& order, CardSearch& found);

} // namespace nqp2::cards
