// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/card_identity.h"
#include "platform/folder.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::offload {

/// In which a copy that is not finished says so, beside the lists of hashes.
inline constexpr std::string_view kMarkFile = ".nqp2-offload.json";
/// Its path below the copy.
std::string MarkPath();

/// What a copy in the making says of itself.
struct UnfinishedMark {
    CardIdentity identity;
    /// Manifests that were there when the copy was begun or gone on with, as paths below it: they
    /// are not from a run that was not finished. Nothing: it does not say.
    std::optional<std::vector<std::string>> lists = std::nullopt;
};

/// As the text of a file, and back; all empty when the text is none.
std::string MarkText(const UnfinishedMark& mark);
UnfinishedMark MarkInText(const std::string& text);

/// The mark of a copy; nothing when it has none.
std::optional<UnfinishedMark> MarkIn(platform::Folder& copy);

/// The manifests of a copy that are in these folders of it, as paths below it. Throws copy::Failure
/// when that cannot be told.
std::vector<std::string> ManifestsIn(platform::Folder& copy,
                                     const std::vector<std::string>& folders);

} // namespace nqp2::offload
