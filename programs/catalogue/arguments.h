// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/search.h"

#include <string>
#include <vector>

namespace nqp2::catalogue {

/// What nqp2 asks for. What was not given is empty.
struct Arguments {
    std::string operation;          ///< as the command is called
    std::string database;           ///< as the user wrote it
    std::vector<std::string> cards; ///< whole paths to add; what names cards elsewhere
    std::string label;
    SearchOptions search;
    std::string page; ///< file that shows what was found; "-" for standard output
    bool isRecursive = false;
    bool json = false;
    bool lines = false; ///< of JSON
    bool csv = false;
};

/// Reads the program's arguments: the operation, then "key=value" texts. Throws tool::Failure of
/// wrong usage for what it does not know.
Arguments ReadArguments(int count, const char* const* words);

} // namespace nqp2::catalogue
