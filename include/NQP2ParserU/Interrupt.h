// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Export.h"

namespace nqp2 {

/// Lets the first Ctrl-C (SIGINT) from now on, and the first SIGTERM, set a flag instead of ending
/// the process; the second one ends it, and so do five seconds in which the process has not ended
/// by itself (SIGALRM). Leaves a signal alone that is ignored already. Process-wide; for programs.
NQP2_API void CatchInterrupt() noexcept;

/// Whether such a first one has come. From any thread.
NQP2_API bool WasInterrupted() noexcept;

} // namespace nqp2
