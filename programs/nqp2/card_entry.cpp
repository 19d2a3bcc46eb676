// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card_entry.h"

#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>

namespace nqp2::tool {
namespace {

/// The first of the cards, and how many there are more.
std::string NamesOf(const CArray<FoundCard>& cards) {
    constexpr std::int64_t kShown = 4;
    std::string names;
    for (std::int64_t i = 0; i < std::min(kShown, cards.GetSize()); ++i) {
        names += (names.empty() ? "" : ", ") + Card(cards[i]).Folder();
    }
    return cards.GetSize() <= kShown
               ? names
               : fmt::format("{} and {} more", names, cards.GetSize() - kShown);
}

void RequireOne(const Card& card, const CardSearch& search, const CardEntry& entry) {
    if (search.cards.GetSize() > 1) {
        throw Failure(card.Folder(), fmt::format("leads to {} cards", search.cards.GetSize()),
                      fmt::format("{}: {}", entry.several, NamesOf(search.cards)));
    }
    if (WasCutShort(search)) {
        throw Failure(card.Folder(), "holds too many folders to look for a card in",
                      "give the card itself");
    }
}

/// Whether what is asked for is in the folder itself, which need not be a card's then. What is in
/// CONTENTS belongs to its card.
bool HoldsOwn(const Card& card, const CardEntry& entry) {
    const std::filesystem::path folder = card.Folder();
    return entry.own != nullptr && card.HoldsFolder(entry.own) &&
           TextFromBytes(folder.filename().native()).CompareNoCase(L"CONTENTS") != 0;
}

} // namespace

Card EnterCard(Console& console, const std::string& argument, const CardEntry& entry) {
    Card card(argument);
    CardSearch search;
    if (!FindCard(card.Root(), search, entry.kinds)) {
        throw Failure(card.Folder(), "cannot be read", "out of memory");
    }
    if (search.cards.IsEmpty() || (search.cards[0].entered && HoldsOwn(card, entry)) ||
        (search.cards.GetSize() > 1 && entry.takesAny)) {
        return card;
    }
    RequireOne(card, search, entry);
    const std::string given = card.Folder();
    card.Take(search.cards[0]);
    if (search.cards[0].entered) {
        if (std::filesystem::path(card.Folder()).parent_path() == given) {
            card.TakeTop();
        }
        console.Message(fmt::format("nqp2: {}: took the card at {}", given, card.Folder()));
    }
    return card;
}

} // namespace nqp2::tool
