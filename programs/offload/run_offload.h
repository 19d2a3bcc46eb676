// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/console.h"
#include "offload/arguments.h"
#include "offload/outcome.h"
#include "offload/plan.h"
#include "offload/second_reading.h"

namespace nqp2::tool {
class RunProgress;
}

namespace nqp2::offload {

/// Copies a whole card to its targets, proves the copies, seals them, and tells whether the card
/// may be formatted.
tool::Status RunOffload(tool::Console& console, const Arguments& arguments);

/// The same from a plan: what became of it. Targets that fail end for themselves. `farBehind`:
/// bytes that the second reading stays behind the first.
Outcome Offload(Plan& plan, const Arguments& arguments, tool::RunProgress& progress,
                std::uint64_t farBehind = SecondReading::kFarBehind);

/// What the outcome says about formatting the card.
Verdict JudgeOutcome(const Outcome& outcome);

/// The exit status that an outcome has.
tool::Status StatusOf(const Outcome& outcome, const Arguments& arguments);

} // namespace nqp2::offload
