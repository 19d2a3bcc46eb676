// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/command.h"

#include <CLI/CLI.hpp>

namespace nqp2::tool {

void AddCardArgument(CLI::App& command, std::string& card) {
    command.add_option("CARD", card, "The card: a folder or a mapped drive")
        ->type_name("")
        ->required();
}

void SetExample(CLI::App& command, const std::string& example) {
    command.footer("--verbose and --drive serve every command: nqp2 --help\n\nExample: " + example);
}

} // namespace nqp2::tool
