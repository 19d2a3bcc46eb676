// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/outcome.h"
#include "offload/plan.h"

#include <string>

namespace nqp2::offload {

/// Makes the copy's folder and the mark in it by which it is known as unfinished. Throws
/// copy::Failure.
void BeginCopy(const Plan& plan, Target& target);

/// Ends a copy that holds everything: the card's own lists, the manifest, the chain, and last of
/// all the mark goes. What the copy holds beside the card is told in `copy`, as is why there is no
/// list. Actions of the plan's tree become those of this copy's list.
void SealCopy(Plan& plan, std::size_t target, CopyOutcome& copy);

} // namespace nqp2::offload
