// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/completion/offers.h"

#include "manual/help_text.h"
#include "nqp2/clip_columns.h"
#include "nqp2/code_types.h"
#include "nqp2/completion/card_names.h"

#include "NQP2ParserU/CodeType.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string_view>

namespace nqp2::tool {
namespace {

using manual::Meaning;
using Paths = Offers::Paths;

constexpr int kMostStandards = 16; ///< numbers beyond have no name

std::vector<Meaning> Named(const std::vector<std::string>& names) {
    std::vector<Meaning> words;
    for (const std::string& name : names) {
        words.push_back({name, ""});
    }
    return words;
}

std::vector<Meaning> CodeTypeOffers(const Place& place) {
    const bool isRecorded = place.command->name == "nqp2 record";
    return Named(CodeTypeNames(isRecorded ? CodeTypes::Recorded : CodeTypes::Any));
}
std::vector<Meaning> Standards(const Place& /*place*/) {
    std::vector<std::string> names;
    for (int value = 0; value < kMostStandards; ++value) {
        const std::string name = StandardName(static_cast<eP2_VIDEO_STANDARD>(value));
        if (!name.empty()) {
            names.push_back(name);
        }
    }
    return Named(names);
}
std::vector<Meaning> ColumnOffers(const Place& /*place*/) {
    std::vector<Meaning> offers = {{"default", "what fits"}, {"all", "every field"}};
    const std::vector<Meaning> names = Named(ColumnNames());
    offers.insert(offers.end(), names.begin(), names.end());
    return offers;
}
std::vector<Meaning> ClipOffers(const Place& place) {
    return ClipNamesOf(place.card);
}
std::vector<Meaning> ListOffers(const Place& place) {
    return ListNamesOf(place.card);
}

/// By what an argument or a value is called.
constexpr struct {
    std::string_view value;
    Paths paths;
    std::vector<Meaning> (*words)(const Place&);
} kKinds[] = {{"CARD", Paths::Folders, nullptr},
              {"FOLDER", Paths::Folders, nullptr},
              {"LETTER=FOLDER", Paths::Folders, nullptr},
              {"FILE", Paths::Files, nullptr},
              {"PAGE", Paths::Files, nullptr},
              {"PATH", Paths::Files, nullptr},
              {"PICTURE", Paths::Files, nullptr},
              {"STREAM", Paths::Files, nullptr},
              {"CLIP", Paths::None, ClipOffers},
              {"COLUMNS", Paths::None, ColumnOffers},
              {"LIST", Paths::None, ListOffers},
              {"STANDARD", Paths::None, Standards},
              {"TYPE", Paths::None, CodeTypeOffers}};

/// Those that begin with what was typed, in any letter case.
void KeepBegun(std::vector<Meaning>& words, const std::string& begun) {
    const auto isOther = [&begun](const Meaning& word) {
        const auto isSame = [](unsigned char one, unsigned char other) {
            return std::toupper(one) == std::toupper(other);
        };
        return word.name.size() < begun.size() ||
               !std::equal(begun.begin(), begun.end(), word.name.begin(), isSame);
    };
    words.erase(std::remove_if(words.begin(), words.end(), isOther), words.end());
}

Offers OffersFor(const manual::Entry& entry, const Place& place) {
    Offers offers;
    for (const std::string& word : entry.words) {
        offers.words.push_back({word, ""});
    }
    const bool isArgument = entry.value.empty();
    const std::string& value = isArgument ? entry.names.front() : entry.value;
    const std::string_view kind = isArgument && place.areCards ? "CARD" : std::string_view(value);
    const auto* const row = std::find_if(std::begin(kKinds), std::end(kKinds),
                                         [kind](const auto& each) { return each.value == kind; });
    if (row != std::end(kKinds) && entry.words.empty()) {
        offers.paths = row->paths;
        offers.words = row->words == nullptr ? offers.words : row->words(place);
    }
    return offers;
}

std::vector<Meaning> OptionOffers(const Place& place) {
    std::vector<Meaning> names;
    for (const manual::Entry* option : place.options) {
        names.push_back({option->names.back(), option->meaning});
        // It has a line in a list of its own width.
        std::replace(names.back().text.begin(), names.back().text.end(), '\n', ' ');
    }
    return names;
}

} // namespace

Offers OffersAt(const Place& place) {
    Offers offers;
    const bool isValue = place.entry != nullptr && !place.entry->value.empty();
    if (!isValue && place.begun.starts_with('-')) {
        offers.words = OptionOffers(place);
    } else if (!place.command->commands.empty() && !isValue) {
        offers.words = manual::ListedCommands(*place.command);
    } else if (place.entry != nullptr) {
        offers = OffersFor(*place.entry, place);
    }
    KeepBegun(offers.words, place.begun);
    return offers;
}

} // namespace nqp2::tool
