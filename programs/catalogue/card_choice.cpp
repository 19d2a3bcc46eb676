// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_choice.h"

#include "catalogue/medium.h"
#include "catalogue/words.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"
#include "platform/host_name.h"

#include <fmt/core.h>

#include <charconv>
#include <new>

namespace nqp2::catalogue {
namespace {

std::vector<CardRecord> SelectCards(Connection& connection, const std::string& condition,
                                    const Parameters& parameters) {
    static const std::string kSelect = "SELECT id, " + NamesOf(kCardColumns) + " FROM card ";
    std::vector<CardRecord> cards;
    connection.Run(kSelect + condition + " ORDER BY id", parameters, [&](const Row& row) {
        CardRecord& card = cards.emplace_back();
        card.id = row.Number(0);
        ReadValues(row, 1, kCardColumns, card);
    });
    return cards;
}

/// The number that a text is; 0 for none.
std::int64_t NumberIn(const std::string& text) {
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    return std::from_chars(text.data(), end, number).ptr == end ? number : 0;
}

} // namespace

std::vector<CardRecord> AllCards(Connection& connection) {
    return SelectCards(connection, "", {});
}

std::vector<CardRecord> CardsNamed(Connection& connection, const std::string& name) {
    const std::string text = KeptText(name);
    std::vector<CardRecord> cards =
        SelectCards(connection, "WHERE label = $1 OR serial = $2 OR volume = $3 OR place = $4",
                    {text, text, text, StoredPath(name)});
    if (const std::int64_t number = NumberIn(name); cards.empty() && number != 0) {
        cards = SelectCards(connection, "WHERE id = $1", {number});
    }
    return cards;
}

std::vector<CardRecord> CardsInState(Connection& connection, const std::string& state) {
    return SelectCards(connection, "WHERE state = $1", {state});
}

FoundCard CardAt(tool::Console& console, const std::string& path) {
    CardSearch search;
    if (!FindCard(InterfaceRoot(path), search)) {
        throw std::bad_alloc();
    }
    if (search.cards.IsEmpty()) {
        throw tool::Failure(path, "is no card",
                            search.skipped.IsEmpty() ? "" : BytesFromText(search.skipped[0].text));
    }
    if (search.cards.GetSize() > 1) {
        throw tool::Failure(path, fmt::format("leads to {} cards", search.cards.GetSize()),
                            "give one of them, or all with --recursive");
    }
    if (search.cards[0].entered) {
        console.Message(
            fmt::format("nqp2: {}: took the card at {}", path, PosixPath(search.cards[0].root)));
    }
    return search.cards[0];
}

std::vector<FoundCard> CardsBelow(const std::string& path, std::vector<std::string>& problems) {
    CardSearch search;
    if (!FindCards(InterfaceRoot(path), search)) {
        throw std::bad_alloc();
    }
    for (const SkippedFile& each : search.skipped) {
        problems.push_back(fmt::format("{}: {}", PosixPath(each.path), BytesFromText(each.text)));
    }
    if (search.cards.IsEmpty()) {
        throw tool::Failure(path, "holds no card", problems.empty() ? "" : problems.front());
    }
    std::vector<FoundCard> found;
    for (const FoundCard& card : search.cards) {
        found.push_back(card);
    }
    return found;
}

std::optional<FoundCard> ReachedAgain(const CardRecord& card) {
    if (card.host != KeptText(platform::HostName())) {
        return std::nullopt;
    }
    CardSearch search;
    if (!FindCard(InterfaceRoot(PathOfStored(card.place)), search)) {
        throw std::bad_alloc();
    }
    for (const FoundCard& found : search.cards) {
        if (!found.entered && MediumOf(found).key == card.mediumKey) {
            return found;
        }
    }
    return std::nullopt;
}

} // namespace nqp2::catalogue
