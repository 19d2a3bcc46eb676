// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/card_contents.h"
#include "offload/folder_index.h"
#include "offload/mhl/manifest.h"

#include <string>
#include <vector>

namespace nqp2::offload {

/// What tells one card from another, wherever it is mounted.
struct CardIdentity {
    std::string serial; ///< of the card, as its clips tell it, or of its volume; "" unknown
    std::string clips;  ///< digest of the identifiers of its clips; "" when they have none
    std::string files;  ///< digest of its index: paths, sizes, times

    /// Whether these are of one card in one state. Serial numbers may be told from time to time
    /// only: those of volumes do not reach every program.
    [[nodiscard]] bool IsSame(const CardIdentity& other) const {
        return clips == other.clips && files == other.files;
    }
    /// Whether these may be of one card that has changed.
    [[nodiscard]] bool IsOtherState(const CardIdentity& other) const {
        return !IsSame(other) && ((!clips.empty() && clips == other.clips) ||
                                  (!serial.empty() && serial == other.serial));
    }
};

CardIdentity IdentityOf(const GivenFolder& given, const FolderIndex& index);

/// As entries of a hash list, and back: members that are not among them stay empty.
std::vector<mhl::MetadataEntry> EntriesOf(const CardIdentity& identity);
CardIdentity IdentityIn(const std::vector<mhl::MetadataEntry>& entries);

} // namespace nqp2::offload
