// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"
#include "catalogue/records.h"
#include "catalogue/select.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::catalogue {

/// A card that has a clip, or what another one lacks.
struct ClipPlace {
    CardRecord card;
    HoldingRecord holding;
};

/// Something that is missing, and the cards that have it.
struct KnownGap {
    std::int64_t card = 0; ///< the one that lacks it
    GapRecord gap;
    std::vector<ClipPlace> places;
};

struct FoundClip {
    std::int64_t id = 0;
    ClipRecord clip;
    std::vector<ClipPlace> places;
    std::vector<KnownGap> gaps;
};

/// What a statement that finds clips begins with: a table of them, `c`, follows.
const std::string& SelectClips();
/// The clips that it finds, with all that is known of them.
std::vector<FoundClip> FindClips(Connection& connection, const Select& select);

/// Up to `limit` clips behind that number, in the order of numbers.
std::vector<FoundClip> ClipsBehind(Connection& connection, std::int64_t id, std::int64_t limit);

/// The clips of that name or global identifier; those of a card, in the order of their names.
std::vector<FoundClip> ClipsNamed(Connection& connection, const std::string& name);
std::vector<FoundClip> ClipsOfCard(Connection& connection, std::int64_t card);

} // namespace nqp2::catalogue
