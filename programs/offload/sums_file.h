// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/outcome.h"
#include "offload/plan.h"

namespace nqp2::offload {

/// Writes NAME.md5 beside a copy, as md5sum reads it from the folder that holds both. An older one
/// with other content is set aside.
void WriteSums(const Plan& plan, std::size_t target, CopyOutcome& copy);

} // namespace nqp2::offload
