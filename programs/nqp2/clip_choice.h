// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card_scan.h"
#include "nqp2/import_plan.h"
#include "NQP2ParserU/JoinedTakes.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::tool {

/// The clip of that name, in any letter case; null when the only card has none. Throws the failure
/// to report for a name that is on none of several cards or names several clips.
const _tag_P2Clip* NamedClip(const CardScans& scans, const std::string& name);

/// Chooses among the clips of scanned cards, which outlive it.
class ClipChoice {
public:
    /// Throws the failure to report for a card that is no P2 card.
    explicit ClipChoice(const CardScans& scans);

    /// Every clip, those whose metadata cannot be read too.
    void WantAll();
    /// Throws as NamedClip does.
    void WantNamed(const std::string& name);
    /// The whole takes of what is wanted so far.
    void WantWholeTakes();
    /// What is wanted, and what its takes have beside it.
    [[nodiscard]] ImportPlan Finish();

private:
    using Key = std::pair<std::size_t, std::string>;

    static Key KeyOf(const PlannedClip& clip) { return {clip.card, clip.name}; }

    void Want(const PlannedClip& clip);
    void WantUnread(std::size_t card);
    [[nodiscard]] bool IsWanted(const PlannedClip& clip) const;
    const CArray<JoinedTake>& Takes();
    [[nodiscard]] std::vector<PlannedClip> SegmentsOf(const JoinedTake& take) const;
    std::vector<PlannedClip> TakeOf(const PlannedClip& clip);
    void AddPartial(const JoinedTake& take);

    const CardScans& m_scans;
    std::optional<CArray<JoinedTake>> m_takes;
    std::set<Key> m_wanted;
    ImportPlan m_plan;
};

} // namespace nqp2::tool
