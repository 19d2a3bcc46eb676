// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/rewrap_run.h"

#include <string>
#include <vector>

namespace nqp2::tool {

class Console;

/// A run as JSON; before it has begun, what it would do.
void PrintRewrap(Console& console, const RewrapRun& run, const std::vector<Loss>& losses);

/// What would be done, for a person.
void PrintPlans(Console& console, const RewrapRun& run);
/// A file that was written, for a person.
void PrintRewrapped(Console& console, const RewrappedFile& file);

/// The path of the system that a request names.
std::string PathIn(const CString& path);

} // namespace nqp2::tool
