// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/plan.h"

namespace nqp2::offload {

/// Copies the lists of hashes that the card brings, its own and those of folders below it, proven
/// as all that is copied. A list that goes on in the copy already stays as it is there. Throws a
/// copy::Failure.
void CopyLists(const Plan& plan, const Target& target);

} // namespace nqp2::offload
