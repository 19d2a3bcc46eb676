// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/medium.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::offload {

/// What is known of a copy when a run has ended. Everything speaks against it until it is set.
struct TargetProof {
    std::string folder;           ///< of the copy, for sentences
    platform::MediumFacts medium; ///< that it lies on
    bool holdsAll = false;        ///< every file arrived and was read back from there
    bool isSealed = false;        ///< its list is on the medium, chain and all
};

/// What is known of the card. Everything speaks against it until it is set.
struct CardProof {
    static constexpr std::uint64_t kNotHeldAgainst = ~std::uint64_t{0};

    platform::MediumFacts medium;
    std::string partOf;        ///< the card of which no more than a part was given
    std::uint64_t leftOut = 1; ///< links and names that no list can hold
    std::uint64_t unread = 1;  ///< files and folders that could not be read
    /// Files that are not what the card's own list says.
    std::uint64_t againstHistory = kNotHeldAgainst;
    bool isReadTwice = false;
    bool readingsAgree = false;
    bool isUnchanged = false; ///< its index was the same at the end as at the beginning
};

/// Whether a card may be formatted, and what is missing for it, each as a part of a sentence.
struct Verdict {
    bool isSafe = false;
    std::vector<std::string> missing;
    std::size_t independent = 0; ///< proven copies of which no single failure takes two
};

/// Safe are two proven copies on different disks that are not the card's own, of a card that was
/// read twice the same, whole, and did not change.
Verdict Judge(const CardProof& card, const std::vector<TargetProof>& targets);

/// Whether a copy holds everything and is sealed.
bool IsProven(const TargetProof& target);

/// "safe to format: ..." or "NOT safe to format: ...".
std::string VerdictText(const Verdict& verdict);

} // namespace nqp2::offload
