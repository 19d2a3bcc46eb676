// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/command.h"
#include "nqp2/ingest_commands.h"

#include <CLI/CLI.hpp>

namespace nqp2::tool {

void AddIngestCommand(CLI::App& program, Action& chosen) {
    CLI::App* group =
        AddCommandGroup(program, "ingest", "Show and change what was taken in from a card");
    AddIngestListCommand(*group, chosen);
    AddIngestAddCommand(*group, chosen);
    AddIngestRemoveCommand(*group, chosen);
    SetExample(*group, "nqp2 ingest list /media/card");
}

} // namespace nqp2::tool
