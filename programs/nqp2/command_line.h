// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/command.h"

#include <memory>

namespace nqp2::tool {

/// What the user typed. Keeps the options of all commands.
class CommandLine {
public:
    CommandLine();
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// The program itself, to which commands are added.
    [[nodiscard]] Command Program();
    /// The action of the chosen command; empty when help or the version was asked for, which it
    /// prints. Throws Failure for what is not understood.
    Action Parse(int count, const char* const* arguments, Console& console);

private:
    std::unique_ptr<CommandLineState> m_state;
};

} // namespace nqp2::tool
