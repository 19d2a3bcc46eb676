// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "manual/command_page.h"
#include "nqp2/completion/place.h"

#include <vector>

namespace nqp2::tool {

/// What may stand at a place.
struct Offers {
    /// What the shell itself completes.
    enum class Paths { None, Folders, Files } paths = Paths::None;
    std::vector<manual::Meaning> words; ///< and what each is
};

/// Reads the card for the names of its clips and lists. What cannot be read offers nothing.
Offers OffersAt(const Place& place);

} // namespace nqp2::tool
