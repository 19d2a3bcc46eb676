// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/verdict.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace nqp2::offload {
namespace {

using platform::MediumFacts;

constexpr std::size_t kCopiesForSafety = 2;

/// A condition of the card: the words for it when it is not met.
struct Condition {
    bool (*isMet)(const CardProof&);
    std::string (*missing)(const CardProof&);
};
constexpr Condition kConditions[] = {
    {[](const CardProof& card) { return card.partOf.empty(); },
     [](const CardProof& card) {
         return fmt::format("only a part of the card {} was copied", card.partOf);
     }},
    {[](const CardProof& card) { return card.leftOut == 0; },
     [](const CardProof& card) {
         return fmt::format("{} entries of the card were left out", card.leftOut);
     }},
    {[](const CardProof& card) { return card.unread == 0; },
     [](const CardProof& card) {
         return fmt::format("{} entries of the card could not be read", card.unread);
     }},
    {[](const CardProof& card) { return card.againstHistory == 0; },
     [](const CardProof& card) {
         return card.againstHistory == CardProof::kNotHeldAgainst
                    ? "the card was not held against its own list"
                    : fmt::format("{} faults against the card's own list", card.againstHistory);
     }},
    {[](const CardProof& card) { return card.isReadTwice; },
     [](const CardProof&) { return std::string("the card was not read a second time"); }},
    {[](const CardProof& card) { return !card.isReadTwice || card.readingsAgree; },
     [](const CardProof&) { return std::string("two readings of the card did not agree"); }},
    {[](const CardProof& card) { return card.isUnchanged; },
     [](const CardProof&) {
         return std::string("the card is not known to have stayed as it was");
     }},
};

bool IsKnown(const MediumFacts& medium) {
    return !medium.disks.empty();
}

/// Whether formatting the card, or its medium's failure, may take the copy along: a card of which
/// nothing is known may lie anywhere.
bool SharesMedium(const MediumFacts& target, const MediumFacts& card) {
    return !IsKnown(card) || (IsKnown(target) && !platform::AreApart(target, card));
}

/// The largest number of media that are apart from each other: tried one after the other, but for
/// choices that cannot become larger than the best so far.
class ApartMedia {
public:
    explicit ApartMedia(std::vector<const MediumFacts*> media) : m_media(std::move(media)) {}

    std::size_t Most() {
        Try(0);
        return m_most;
    }

private:
    void Try(std::size_t from) {
        m_most = std::max(m_most, m_chosen.size());
        for (std::size_t i = from; i < m_media.size(); ++i) {
            if (m_chosen.size() + m_media.size() - i <= m_most) {
                return;
            }
            if (IsApartFromChosen(*m_media[i])) {
                m_chosen.push_back(m_media[i]);
                Try(i + 1);
                m_chosen.pop_back();
            }
        }
    }

    [[nodiscard]] bool IsApartFromChosen(const MediumFacts& medium) const {
        return std::all_of(m_chosen.begin(), m_chosen.end(), [&](const MediumFacts* each) {
            return platform::AreApart(*each, medium);
        });
    }

    std::vector<const MediumFacts*> m_media;
    std::vector<const MediumFacts*> m_chosen;
    std::size_t m_most = 0;
};

/// Of proven copies. One whose medium is not known counts when it is the only one: it may be the
/// same as any other.
std::size_t CountIndependent(const CardProof& card, const std::vector<TargetProof>& targets) {
    std::vector<const MediumFacts*> media;
    bool isOneProven = false;
    for (const TargetProof& target : targets) {
        const bool counts = IsProven(target) && !SharesMedium(target.medium, card.medium);
        isOneProven |= counts;
        const bool isNew = std::none_of(media.begin(), media.end(), [&](const MediumFacts* each) {
            return each->disks == target.medium.disks;
        });
        if (counts && isNew && IsKnown(target.medium)) {
            media.push_back(&target.medium);
        }
    }
    return std::max<std::size_t>(isOneProven ? 1 : 0, ApartMedia(std::move(media)).Most());
}

/// Why a target does not count; "" when it does.
std::string WhyNotCounted(const CardProof& card, const TargetProof& target) {
    if (!target.holdsAll) {
        return "does not hold all";
    }
    if (!target.isSealed) {
        return "has no finished list";
    }
    if (!IsKnown(card.medium)) {
        return "cannot be told from the card's medium, of which nothing is known";
    }
    if (SharesMedium(target.medium, card.medium)) {
        return "is on the card's own medium";
    }
    return IsKnown(target.medium) ? "" : "is on a medium of which nothing is known";
}

std::string CopiesMissing(const CardProof& card, const std::vector<TargetProof>& targets,
                          std::size_t independent) {
    std::string why;
    for (const TargetProof& target : targets) {
        const std::string reason = WhyNotCounted(card, target);
        why += reason.empty() ? "" : fmt::format("; {} {}", target.folder, reason);
    }
    return fmt::format("{} proven {} on a disk of its own, where {} are needed{}", independent,
                       independent == 1 ? "copy" : "copies", kCopiesForSafety, why);
}

} // namespace

bool IsProven(const TargetProof& target) {
    return target.holdsAll && target.isSealed;
}

Verdict Judge(const CardProof& card, const std::vector<TargetProof>& targets) {
    Verdict verdict;
    verdict.independent = CountIndependent(card, targets);
    for (const Condition& condition : kConditions) {
        if (!condition.isMet(card)) {
            verdict.missing.push_back(condition.missing(card));
        }
    }
    if (verdict.independent < kCopiesForSafety) {
        verdict.missing.push_back(CopiesMissing(card, targets, verdict.independent));
    }
    verdict.isSafe = verdict.missing.empty();
    return verdict;
}

std::string VerdictText(const Verdict& verdict) {
    return verdict.isSafe
               ? fmt::format("safe to format: {} proven copies on disks of their own, the card "
                             "read twice, nothing left out",
                             verdict.independent)
               : fmt::format("NOT safe to format: {}", fmt::join(verdict.missing, "; "));
}

} // namespace nqp2::offload
