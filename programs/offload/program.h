// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/console.h"

namespace nqp2::offload {

/// Does what the words of the command line say (arguments.h); what goes wrong is told on standard
/// error.
tool::Status RunProgram(int count, const char* const* words) noexcept;

} // namespace nqp2::offload
