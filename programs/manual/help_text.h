// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "manual/command_page.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::manual {

/// What a terminal is at least wide.
inline constexpr std::size_t kHelpWidth = 80;

/// What `--help` prints of a command.
std::string HelpText(const CommandPage& page);
/// The lines that tell how it is called and which commands it has.
std::string ShortHelp(const CommandPage& page);

/// "nqp2 import [OPTIONS] --to FOLDER CARD [CLIP...]"
std::string Synopsis(const CommandPage& page);
/// The commands below one that help names, each with its purpose.
std::vector<Meaning> ListedCommands(const CommandPage& page);
/// What an entry means, with all that restricts it.
std::string WholeMeaning(const Entry& entry);
/// Paragraphs filled to a width, every line with so many blanks before it.
std::string Filled(std::string_view text, std::size_t indent, std::size_t width = kHelpWidth);

} // namespace nqp2::manual
