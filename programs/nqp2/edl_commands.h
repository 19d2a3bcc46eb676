// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/command.h"

namespace nqp2::tool {

/// The commands of `nqp2 edl`.
void AddEdlListCommand(CLI::App& group, Action& chosen);
void AddEdlWriteCommand(CLI::App& group, Action& chosen);

} // namespace nqp2::tool
