// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/value.h"
#include "offload/outcome.h"
#include "offload/plan.h"

namespace nqp2::offload {

/// The document of a run; of a dry one, without an outcome, what would be done. Both outlive it.
tool::Record OffloadRecord(const Plan& plan, const Outcome* outcome);

/// The word for what a target holds before the run: "new", "unfinished", "finished".
const char* StateWord(TargetState state);

} // namespace nqp2::offload
