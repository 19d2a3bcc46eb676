// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/CardFinder.h"

#include "cards/card_marks.h"
#include "cards/card_search.h"
#include "NQP2ParserU/PathText.h"
#include "platform/case_fold.h"
#include "platform/file_system.h"
#include "platform/guard.h"
#include "platform/place.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace nqp2 {
namespace {

using platform::Place;

std::optional<FoundCard> CardIn(const Place& root, const CString& written, std::uint32_t kinds) {
    const std::vector<const cards::CardMark*> marks = cards::MarksIn(root, kinds);
    return marks.empty() ? std::nullopt
                         : std::optional(cards::CardAt(root, written, *marks.front()));
}

/// Whether a card of these kinds may have a folder of that name.
bool IsPartByName(const std::string& name, std::uint32_t kinds) {
    const std::string folded = platform::FoldNameCase(name);
    const auto marks = cards::CardMarks();
    const bool isList = folded == media::kUserData.Bytes() || folded == media::kEditLists.Bytes();
    return (cards::Holds(kinds, CardKind::P2) && isList) ||
           std::any_of(marks.begin(), marks.end(), [&](const cards::CardMark& mark) {
               return cards::Holds(kinds, mark.kind) && cards::FirstStep(mark) == folded;
           });
}

/// The folder's whole path without steps upward, if that leads to the same folder: links on the way
/// may lead elsewhere.
std::string WholePath(const Place& folder) {
    const std::string& asked = folder.OnDisk();
    const std::string full = PosixPath(platform::FullPath(InterfaceRoot(asked)));
    std::string whole =
        (std::filesystem::path(full) / "").lexically_normal().parent_path().native();
    platform::FileInfo one;
    platform::FileInfo other;
    const bool isSame = platform::Files().Stat(asked, one) &&
                        platform::Files().Stat(whole, other) && one.device == other.device &&
                        one.inode == other.inode;
    return isSame ? whole : std::string();
}

/// The card that a folder is a part of: the nearest.
std::optional<FoundCard> CardAbove(const Place& folder, std::uint32_t kinds) {
    for (std::string part = WholePath(folder); part.size() > 1;) {
        const std::string above = std::filesystem::path(part).parent_path().native();
        const CString root = InterfaceRoot(above);
        if (IsPartByName(platform::NamePart(part), kinds) && !root.IsEmpty()) {
            if (std::optional<FoundCard> card = CardIn(Place(root), root, kinds)) {
                return card;
            }
        }
        part = above;
    }
    return std::nullopt;
}

void LeadToCards(const CString& folder, std::uint32_t kinds, CardSearch& found) {
    constexpr CardSearchLimits kOneBelow = {1, 1'000};
    const Place place(media::WithDrive(folder));
    if (const std::optional<FoundCard> card = CardIn(place, folder, kinds)) {
        found.cards.Add(*card);
        return;
    }
    if (const std::optional<FoundCard> card = CardAbove(place, kinds)) {
        found.cards.Add(*card);
    } else {
        cards::SearchCards(folder, {kOneBelow, kinds, false}, found);
    }
    for (FoundCard& card : found.cards) {
        card.entered = true;
    }
}

} // namespace

bool FindCard(const CString& folder, CardSearch& found, std::uint32_t kinds) noexcept {
    return platform::Guarded(false, [&] {
        found = {};
        CardSearch led;
        LeadToCards(folder, kinds, led);
        found = std::move(led);
        return true;
    });
}

bool FindCards(const CString& folder, CardSearch& found, const CardSearchLimits& limits) noexcept {
    return platform::Guarded(false, [&] {
        cards::SearchCards(folder, {limits, kEveryCard}, found);
        return true;
    });
}

} // namespace nqp2
