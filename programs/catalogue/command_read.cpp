// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_choice.h"
#include "catalogue/card_details.h"
#include "catalogue/card_store.h"
#include "catalogue/catalogue_json.h"
#include "catalogue/catalogue_output.h"
#include "catalogue/commands.h"
#include "catalogue/search.h"
#include "catalogue/search_page.h"
#include "console/json_output.h"

#include <fmt/core.h>

namespace nqp2::catalogue {

using tool::Console;
using tool::Status;

Status RunCards(Console& console, Connection& connection, const Arguments& arguments) {
    const std::vector<CardRecord> cards = AllCards(connection);
    if (arguments.json) {
        tool::PrintJson(console,
                        Document("nqp2-catalog-cards", {{"cards", ListOfEach(cards, CardValue)}}));
    } else {
        PrintCards(console, cards);
    }
    return tool::kDone;
}

Status RunSearch(Console& console, Connection& connection, const Arguments& arguments) {
    const std::vector<FoundClip> clips = Search(connection, arguments.search);
    if (!arguments.page.empty()) {
        WriteSearchPage(console, arguments.page, arguments.search, clips);
    } else if (arguments.json) {
        tool::PrintJson(console,
                        Document("nqp2-catalog-search", {{"clips", ListOfEach(clips, ClipValue)}}));
    } else {
        PrintClips(console, clips);
    }
    return tool::kDone;
}

Status RunShow(Console& console, Connection& connection, const Arguments& arguments) {
    const std::string& name = arguments.search.words;
    const std::vector<CardRecord> cards = CardsNamed(connection, name);
    const std::vector<FoundClip> clips = ClipsNamed(connection, name);
    if (cards.empty() && clips.empty()) {
        throw tool::Failure(name, "is not in the catalogue", "");
    }
    if (arguments.json) {
        const tool::List shown = ListOfEach(
            cards, [&](const CardRecord& card) { return CardDetailsValue(connection, card); });
        tool::PrintJson(console,
                        Document("nqp2-catalog-show",
                                 {{"cards", shown}, {"clips", ListOfEach(clips, ClipValue)}}));
        return tool::kDone;
    }
    for (const CardRecord& card : cards) {
        PrintCardDetails(console, connection, card);
    }
    PrintClips(console, clips);
    return tool::kDone;
}

Status RunRemove(Console& console, Connection& connection, const Arguments& arguments) {
    std::vector<CardRecord> removed;
    for (const std::string& name : arguments.cards) {
        const std::vector<CardRecord> cards = CardsNamed(connection, name);
        if (cards.size() != 1) {
            throw tool::Failure(name,
                                cards.empty() ? "is not in the catalogue" : "is not one card alone",
                                cards.empty() ? "" : "give its number");
        }
        RemoveCard(connection, cards.front().id);
        removed.push_back(cards.front());
    }
    if (arguments.json) {
        tool::PrintJson(
            console, Document("nqp2-catalog-remove", {{"cards", ListOfEach(removed, CardValue)}}));
        return tool::kDone;
    }
    for (const CardRecord& card : removed) {
        console.WriteLine(fmt::format("{}: removed", NameOf(card)));
    }
    return tool::kDone;
}

} // namespace nqp2::catalogue
