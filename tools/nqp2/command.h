// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/nqp2/console.h"

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace nqp2::tool {

/// What a chosen command does once all options are known. Throws Failure.
using Action = std::function<Status(Console&)>;

/// Adds a command to the program; the command puts its action into `chosen` when the user asks
/// for it. One such function a command, listed in main.cpp.
using AddCommand = void (*)(CLI::App& program, Action& chosen);

/// The positional argument CARD, the same for every command.
void AddCardArgument(CLI::App& command, std::string& card);
/// Ends the command's help with an example.
void SetExample(CLI::App& command, const std::string& example);

void AddClipsCommand(CLI::App& program, Action& chosen);
void AddClipCommand(CLI::App& program, Action& chosen);
void AddFormatCommand(CLI::App& program, Action& chosen);
void AddUmidCommand(CLI::App& program, Action& chosen);
void AddFreeNameCommand(CLI::App& program, Action& chosen);

} // namespace nqp2::tool
