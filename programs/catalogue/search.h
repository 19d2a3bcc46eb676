// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"
#include "catalogue/found_clips.h"

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

/// The clips that fit, in order. Throws tool::Failure of wrong usage for what cannot be searched.
std::vector<FoundClip> Search(Connection& connection, const SearchOptions& options);

} // namespace nqp2::catalogue
