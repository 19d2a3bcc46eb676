// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/history.h"

#include <string>
#include <vector>

namespace nqp2::tool {
class Console;
}

namespace nqp2::offload {

struct Arguments;
struct Inspection;

/// What became of the wish for a generation.
struct Added {
    bool isWished = false;
    std::vector<mhl::AddedGeneration> generations; ///< the folder's own is the last one
    std::string whyNot;                            ///< empty when all is well
};

/// Prints what was found, as text or JSON.
void Print(tool::Console& console, const Arguments& arguments, const Inspection& inspection,
           const Added& added);

} // namespace nqp2::offload
