// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"
#include "catalogue/records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::catalogue {

/// What clips are wanted; what is empty does not matter.
struct SearchOptions {
    std::string words; ///< as ReadSearchWords takes them
    std::string from;  ///< date or time: "2009", "2009-05-03", "2009-05-03T14:00"
    std::string to;    ///< included, all of the day or year that it names
    std::string camera;
    std::string codec;
    std::string rate;
    std::string state; ///< "incomplete", "missing-segment", "not-ingested", "one-copy"
    std::string sort;  ///< "newest", which is taken if empty, "oldest", "name"
    std::int64_t limit = 100;
    /// Up to so many clips with the words are taken from the index of words and sorted; where more
    /// have them, going through all clips in order and looking at each meets enough of them soon.
    std::int64_t few = 10'000;
};

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

/// The clips that fit, in order. Throws tool::Failure of wrong usage for what cannot be searched.
std::vector<FoundClip> Search(Connection& connection, const SearchOptions& options);

/// Up to `limit` clips behind that number, in the order of numbers.
std::vector<FoundClip> ClipsBehind(Connection& connection, std::int64_t id, std::int64_t limit);

/// The clips of that name or global identifier; those of a card, in the order of their names.
std::vector<FoundClip> ClipsNamed(Connection& connection, const std::string& name);
std::vector<FoundClip> ClipsOfCard(Connection& connection, std::int64_t card);

} // namespace nqp2::catalogue
