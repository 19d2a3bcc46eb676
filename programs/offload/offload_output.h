// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/arguments.h"
#include "offload/outcome.h"
#include "offload/plan.h"

#include <string>

namespace nqp2::tool {
class Console;
}

namespace nqp2::offload {

/// Prints what would be copied where, and what the card is, as text or JSON.
void PrintPlan(tool::Console& console, const Arguments& arguments, const Plan& plan);

/// Prints what became of a run, as text or JSON; the verdict comes last.
void PrintOutcome(tool::Console& console, const Arguments& arguments, const Plan& plan,
                  const Outcome& outcome);

/// Writes the document of the run into the file that was asked for. Why it cannot; "" when it is
/// written or none was asked for.
std::string WriteLog(const Arguments& arguments, const Plan& plan, const Outcome& outcome);

} // namespace nqp2::offload
