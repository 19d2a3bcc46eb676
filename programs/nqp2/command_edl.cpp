// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command.h"
#include "nqp2/edl_commands.h"

#include <CLI/CLI.hpp>

namespace nqp2::tool {

void AddEdlCommand(CLI::App& program, Action& chosen) {
    CLI::App* group = AddCommandGroup(program, "edl", "Show and write edit lists");
    AddEdlListCommand(*group, chosen);
    AddEdlWriteCommand(*group, chosen);
    SetExample(*group, "nqp2 edl list /media/card");
}

} // namespace nqp2::tool
