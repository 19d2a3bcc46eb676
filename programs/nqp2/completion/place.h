// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "manual/command_page.h"

#include <string>
#include <vector>

namespace nqp2::tool {

/// Where on the command line the word stands that is to be completed.
struct Place {
    const manual::CommandPage* command = nullptr;
    /// The option whose value it is, or the argument; null where no argument is left.
    const manual::Entry* entry = nullptr;
    std::vector<const manual::Entry*> options; ///< all that may stand there
    std::vector<std::string> drives;           ///< that were given so far: "E=/media"
    std::string card;                          ///< the first argument; "" before it
    std::string begun;                         ///< what the user has typed of it
    bool areCards = false;                     ///< the arguments that follow are cards too
};

/// Follows the words behind the program's name, of which the last is the one to complete. The page
/// outlives the place.
Place FindPlace(const manual::CommandPage& program, const std::vector<std::string>& words);

} // namespace nqp2::tool
