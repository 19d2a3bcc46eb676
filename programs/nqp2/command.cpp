// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command.h"

#include <CLI/CLI.hpp>

namespace nqp2::tool {

CLI::Option* AddCardArgument(CLI::App& command, std::string& card) {
    return command.add_option("CARD", card, "The card: a folder or a mapped drive")
        ->type_name("")
        ->required();
}

void AddClipArguments(CLI::App& command, std::vector<std::string>& clips) {
    command.add_option("CLIP", clips, "Names of clips, in any letter case")
        ->type_name("")
        ->required();
}

CLI::App* AddCommandGroup(CLI::App& program, const std::string& name,
                          const std::string& description) {
    CLI::App* group = program.add_subcommand(name, description);
    group->require_subcommand(1);
    return group;
}

void SetExample(CLI::App& command, const std::string& example) {
    command.footer("--verbose and --drive serve every command: nqp2 --help\n\nExample: " + example);
}

} // namespace nqp2::tool
