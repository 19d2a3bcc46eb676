// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/console.h"
#include "nqp2/card.h"
#include "nqp2/transfer_watch.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/ScanReport.h"

#include <cstddef>
#include <string>
#include <vector>

namespace nqp2::tool {

/// Whether the other segments of a clip's take go with it.
enum class TakeWish { Leave, Whole };

/// What the user wants of cards.
struct ImportWish {
    std::vector<std::string> cards;
    std::vector<std::string> clips; ///< none: all that the cards hold
    TakeWish takes = TakeWish::Leave;
};

/// A card to import from, and how it is told from the others.
struct PlannedCard {
    Card card;
    std::string label;
};

struct PlannedClip {
    std::size_t card = 0; ///< index of its card
    std::string name;     ///< as the card writes it, where it does
    FileSum size;
};

/// A take of which something is imported, and something not.
struct PartialTake {
    std::vector<PlannedClip> taken;
    std::vector<PlannedClip> left;  ///< what else the cards have of it
    CArray<MissingSegment> missing; ///< what none of them has
};

struct ImportPlan {
    std::vector<PlannedCard> cards;
    std::vector<PlannedClip> clips;
    std::vector<PartialTake> takes;
    std::vector<SkippedFile> unread; ///< folders that may hold clips that nobody knows of

    [[nodiscard]] FileSum Size() const;
    /// The clip's name, with its card's where there are several.
    [[nodiscard]] std::string LabelOf(const PlannedClip& clip) const;
};

/// Looks what is to be imported. A clip that the only card does not have is planned all the same:
/// the worker says why it is not imported. Throws the failure to report for a card that cannot be
/// read, and for a clip that is on none of several, or on more than one.
ImportPlan PlanImport(Console& console, const ImportWish& wish);

} // namespace nqp2::tool
