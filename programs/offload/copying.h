// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/outcome.h"
#include "offload/plan.h"
#include "offload/second_reading.h"

#include <chrono>

namespace nqp2::tool {
class RunProgress;
}

namespace nqp2::offload {

using Clock = std::chrono::steady_clock;
double SecondsSince(Clock::time_point begin);

/// Copies the card to all targets: media first, then metadata, then the folders' times. Targets of
/// `outcome` that have ended already get nothing. Hashes go into the plan's tree. Ctrl-C ends it,
/// as `outcome` then tells; nothing half-written has a real name. `again`: takes what was read, and
/// reads while the targets are waited for; null: the card is read once.
void CopyCard(Plan& plan, tool::RunProgress& progress, SecondReading* again, Outcome& outcome);

/// Reads what is left of the second reading, and says what came of it.
void ReadCardAgain(const Plan& plan, tool::RunProgress& progress, SecondReading& again,
                   Outcome& outcome);

} // namespace nqp2::offload
