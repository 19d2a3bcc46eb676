// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/command.h"

#include <CLI/CLI.hpp>

#include <map>
#include <string>
#include <vector>

namespace nqp2::tool {

/// What is told of a command beside its options.
struct CommandTexts {
    std::vector<std::string> notes;
    std::vector<manual::Meaning> files;
    std::vector<manual::Meaning> statuses;
    std::vector<std::string> examples;
    bool isListed = true;
};

/// All that the commands' makers have said, and what the user chose.
struct CommandLineState {
    CLI::App app;
    std::map<const CLI::App*, CommandTexts> texts;
    Action chosen;
};

/// How the words that an option takes stand in the description of its check: other checks have
/// words for people there.
inline constexpr char kWordMark = '|';

/// The group of an option that is required under this or an older name: who asks for it is the
/// command.
inline constexpr const char* kOneOfNames = "OneOfNames";

/// A command and those below it; `before` is the name of what it belongs to, with a blank.
manual::CommandPage PageOf(const CommandLineState& state, const CLI::App& command,
                           const std::string& before);

} // namespace nqp2::tool
