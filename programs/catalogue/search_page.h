// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/search.h"
#include "console/console.h"

#include <string>
#include <vector>

namespace nqp2::catalogue {

/// Writes what was found as a page, one file, in the place of what that was; to standard output
/// for "-". Throws tool::Failure when it cannot be written or would lie on a card.
void WriteSearchPage(tool::Console& console, const std::string& file, const SearchOptions& options,
                     const std::vector<FoundClip>& clips);

} // namespace nqp2::catalogue
