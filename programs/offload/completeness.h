// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/card_contents.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::offload {

/// Something that a card promises and does not have.
struct Gap {
    enum class Of { Clip, Take, EditList, Unread };
    Of of = Of::Clip;
    std::string name;    ///< of the clip or list, of a take's first clip; or a path
    std::string problem; ///< for a person
};

/// What the word for it is where programs read it.
const char* GapWord(Gap::Of of);

/// Whether cards are complete in themselves.
struct Completeness {
    std::uint64_t clips = 0;
    std::uint64_t takes = 0;
    std::uint64_t editLists = 0;
    std::vector<Gap> gaps;
};

/// Compares each clip's metadata with its essence, takes with their segments, edit lists with the
/// clips that they use. Cards that were given together complete each other.
Completeness CheckCompleteness(const GivenFolder& given);

} // namespace nqp2::offload
