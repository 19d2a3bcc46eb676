// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CardFinder.h"

#include <string>
#include <string_view>

namespace nqp2::catalogue {

/// What a card lies on, told such that it does not matter where that is mounted.
struct Medium {
    std::string key;    ///< the same each time it is seen; as StoredPath writes paths
    bool isOwn = false; ///< the card is the top of a volume: a card, not a copy in a folder
};

Medium MediumOf(const FoundCard& card);
/// The key of what would be a copy in that folder, there or not.
std::string KeyOfCopyAt(const std::string& folder);

/// A path as a text that every engine keeps: "%" and what is no UTF-8 as "%E4".
std::string StoredPath(std::string_view path);
std::string PathOfStored(std::string_view stored);

} // namespace nqp2::catalogue
