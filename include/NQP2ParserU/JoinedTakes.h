// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/ScanReport.h"

#include <cstdint>

namespace nqp2 {

/// What a scan of one card has found; belongs to the caller.
struct ScannedCard {
    const CArray<_tag_P2Clip>* clips = nullptr; ///< its clips
    const ScanReport* report = nullptr;         ///< what the scan reported of them, with the takes
};

/// A clip that is a segment of a take.
struct TakeSegment {
    std::int64_t card = 0;  ///< index of the card among those that were joined
    std::int64_t clip = -1; ///< index of the clip among the card's; -1 when it is not among them
    CString clipName;       ///< as the take names it

    /// Place among the segments that are there, from 0. Copies of a segment on several cards share
    /// it.
    std::int64_t place = 0;
};

/// A take with its segments on all cards.
struct JoinedTake {
    CString topGlobalClipID;        ///< identifier of the first segment; "" when it has none
    CArray<TakeSegment> segments;   ///< in shot order
    bool complete = false;          ///< true when every segment is on one of the cards
    CArray<MissingSegment> missing; ///< on none of them; `before` counts places
};

/// Joins the takes of several cards by the identifiers of their segments: a take of which one card
/// misses what another has is one. Takes without identifiers, as AVCHD cards may have them, stay
/// those of their card. In the order in which their first clips came. False, with no takes, when
/// there is no memory.
NQP2_API bool JoinTakes(const CArray<ScannedCard>& cards, CArray<JoinedTake>& takes) noexcept;

} // namespace nqp2
