// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/records.h"

#include <string>
#include <vector>

namespace nqp2::catalogue {

/// The generations of the list of hashes that a copy has, in its own folder or in one of those that
/// it lies in, as of an AVCHD card whose whole folder was copied. Empty when there is none.
std::vector<GenerationRecord> GenerationsOf(const std::string& root);

} // namespace nqp2::catalogue
