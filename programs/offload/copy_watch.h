// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/outcome.h"
#include "offload/plan.h"

#include <cstddef>
#include <string>

namespace nqp2::offload {

/// Keeps the state in which a file of the card arrived in a copy.
void NoteArrival(const Target& target, const std::string& path, std::size_t node,
                 CopyOutcome& copy);

/// Whether the path still leads to what was begun: a medium that is pulled leaves an empty folder
/// of its name, which takes files as well.
bool IsStillThere(const Plan& plan, const Target& target);

/// Looks whether everything of the card is still there as it arrived; else the copy is not whole
/// any more, and has ended.
void LookAgain(const Plan& plan, const Target& target, CopyOutcome& copy);

} // namespace nqp2::offload
