// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/console.h"

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace nqp2::tool {

/// What a chosen command does once all options are known. Throws Failure.
using Action = std::function<Status(Console&)>;

/// Adds a command to the program; the command puts its action into `chosen` when the user asks
/// for it. One such function a command, listed in main.cpp.
using AddCommand = void (*)(CLI::App& program, Action& chosen);

/// The positional argument CARD, the same for every command, required.
CLI::Option* AddCardArgument(CLI::App& command, std::string& card);
/// The positional arguments CLIP, one or more, behind the card.
void AddClipArguments(CLI::App& command, std::vector<std::string>& clips);
/// A command that consists of commands of its own; the caller adds these.
CLI::App* AddCommandGroup(CLI::App& program, const std::string& name,
                          const std::string& description);
/// Ends the command's help with an example.
void SetExample(CLI::App& command, const std::string& example);

void AddClipsCommand(CLI::App& program, Action& chosen);
void AddClipCommand(CLI::App& program, Action& chosen);
void AddFormatCommand(CLI::App& program, Action& chosen);
void AddUmidCommand(CLI::App& program, Action& chosen);
void AddFreeNameCommand(CLI::App& program, Action& chosen);
void AddSpaceCommand(CLI::App& program, Action& chosen);
void AddEdlCommand(CLI::App& program, Action& chosen);
void AddIngestCommand(CLI::App& program, Action& chosen);
void AddPlaylistsCommand(CLI::App& program, Action& chosen);
void AddImportCommand(CLI::App& program, Action& chosen);
void AddExportCommand(CLI::App& program, Action& chosen);
void AddDeleteCommand(CLI::App& program, Action& chosen);
void AddIconCommand(CLI::App& program, Action& chosen);
void AddSerialCommand(CLI::App& program, Action& chosen);
void AddBaseInfoCommand(CLI::App& program, Action& chosen);
void AddRtExportCommand(CLI::App& program, Action& chosen);
void AddLastErrorCommand(CLI::App& program, Action& chosen);

} // namespace nqp2::tool
