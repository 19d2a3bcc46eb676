// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card_scan.h"
#include "nqp2/rewrap/plan.h"

#include <string>
#include <vector>

namespace nqp2::tool {

class Console;

/// What the user wants files of: one of the first four.
struct RewrapWish {
    std::string clip;
    std::string editList;
    std::string playlist;
    bool all = false;
    bool noTake = false; ///< each clip alone
    rewrap::PlanOptions plan;
};

/// What of the cards becomes no file, and nobody knows what it would have been.
struct Loss {
    std::string name; ///< path or playlist
    std::string reason;
};

struct RewrapPlans {
    std::vector<rewrap::Plan> plans;
    std::vector<Loss> losses;
};

/// Finds what is to be made. Throws the failure to report for what is on none of the cards, and for
/// the one file of a clip or edit list that cannot be made.
RewrapPlans PlanRewrap(Console& console, const CardScans& scans, const RewrapWish& wish);

} // namespace nqp2::tool
