// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/moved_card.h"

#include "catalogue/card_choice.h"
#include "catalogue/medium.h"
#include "catalogue/words.h"
#include "platform/file_system.h"
#include "platform/host_name.h"

#include <filesystem>
#include <vector>

namespace nqp2::catalogue {
namespace {

/// Whether what the card lay on is there, and the card is not.
bool IsGone(const CardRecord& card) {
    const std::string place = PathOfStored(card.place);
    platform::FileInfo info;
    if (platform::Files().Stat(place, info).error != platform::IoError::NotFound ||
        KeyOfCopyAt(place) != card.mediumKey) {
        return false;
    }
    // A file system without a name may have been taken away: that leaves an empty folder.
    std::vector<platform::FolderEntry> beside;
    const std::string above = std::filesystem::path(place).parent_path().native();
    return platform::Files().List(above, beside) && !beside.empty();
}

} // namespace

std::optional<CardRecord> MovedCard(Connection& connection, const std::string& state) {
    for (CardRecord& card : CardsInState(connection, state)) {
        if (card.isMedium == 0 && card.host == KeptText(platform::HostName()) && IsGone(card)) {
            return {std::move(card)};
        }
    }
    return std::nullopt;
}

} // namespace nqp2::catalogue
