// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Export.h"

namespace nqp2 {

/// Lets the first Ctrl-C (SIGINT), SIGTERM or SIGHUP (a terminal that is closed) from now on set a
/// flag instead of ending the process; the second one ends it, and so do five seconds in which the
/// process has not ended by itself (SIGALRM). Does nothing about a signal that is ignored already.
/// Process-wide; for programs.
NQP2_API void CatchInterrupt() noexcept;

/// Whether that first signal has come. From any thread.
NQP2_API bool WasInterrupted() noexcept;

} // namespace nqp2
