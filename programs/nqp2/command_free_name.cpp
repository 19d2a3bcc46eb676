// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/command.h"

#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

Status RunFreeName(Console& console, const std::string& argument) {
    const Card card(argument);
    ReadyParser parser;
    DiskFormat format;
    // A folder that is no card has every name free: ask first whether it is one.
    if (parser->GetDiskFormat(card.Root(), format) != 0) {
        card.ThrowUnreadable();
    }
    CString name;
    if (parser->CheckName(name, card.Root()) == 0) {
        throw Failure(card.Folder(), "no clip name is free", "every candidate is taken");
    }
    console.WriteLine(BytesFromText(name));
    return kDone;
}

} // namespace

void AddFreeNameCommand(CLI::App& program, Action& chosen) {
    const auto card = std::make_shared<std::string>();
    CLI::App* command =
        program.add_subcommand("free-name", "Print the next clip name that is free on a card");
    AddCardArgument(*command, *card);
    SetExample(*command, "nqp2 free-name /media/card");
    command->callback([card, &chosen] {
        chosen = [card](Console& console) { return RunFreeName(console, *card); };
    });
}

} // namespace nqp2::tool
