// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/comparison.h"

namespace nqp2::offload {

/// Leaves of the folders with other hashes than recorded those of which nothing else tells why: no
/// file below them is another one than in the newest generation, which made the hashes.
void KeepUnexplainedFolders(const mhl::History& history, const mhl::Tree& present,
                            mhl::Comparison& comparison);

} // namespace nqp2::offload
