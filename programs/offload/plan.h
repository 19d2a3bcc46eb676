// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/arguments.h"
#include "offload/card_identity.h"
#include "offload/completeness.h"
#include "offload/mhl/history.h"
#include "offload/target.h"
#include "offload/walk.h"
#include "platform/folder.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::offload {

/// Everything that is known before anything is written.
struct Plan {
    std::string card; ///< what was given, whole
    std::shared_ptr<platform::Folder> opened;
    platform::MediumFacts medium; ///< of the card
    std::string kind;             ///< "P2 card"; "" when no card is known in it
    std::string partOf;
    Completeness completeness;
    CardIdentity identity;
    FolderIndex index;
    mhl::IgnoreList ignored = mhl::IgnoreList::Default();
    std::optional<mhl::History> history; ///< that the card brings
    bool isUnfinishedCopy = false;       ///< the card itself is one
    mhl::FormatSet formats;              ///< of the list
    std::string name;                    ///< of the copies
    std::vector<Target> targets;
    std::vector<std::string> warnings;

    /// Those of the list, and those by which older lists of card and copies can be checked.
    [[nodiscard]] mhl::FormatSet FormatsToMake() const;
    /// What is not copied: litter, and what the card's own list says is none of its matter.
    [[nodiscard]] WalkRules Rules() const {
        WalkRules rules(ignored, history ? &history->Ignored() : nullptr);
        rules.areListsLookedInto = true;
        return rules;
    }
};

/// Looks at the card and at all targets. Throws tool::Failure, with nothing written, when a target
/// cannot hold the card or must not. Targets are locked but in a dry run. `goesOn` is asked now and
/// then; false ends it.
Plan MakePlan(const Arguments& arguments, const std::function<bool()>& goesOn);

} // namespace nqp2::offload
