// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Export.h"

#include <cstdio>

namespace nqp2 {

/// Whether the stream is connected to a terminal.
NQP2_API bool IsTerminal(std::FILE* stream) noexcept;

/// Columns of the terminal behind the stream: the environment's COLUMNS when it is a number from
/// 1 to 10000, else what the terminal says, else 80.
NQP2_API int TerminalWidth(std::FILE* stream) noexcept;

/// Lets a write to a pipe whose reader has gone, and one beyond the limit of a file's size, fail
/// like any other write instead of ending the process. Process-wide; for programs, called once at
/// the start.
NQP2_API void LetWritesFail() noexcept;

/// Opens those of the descriptors 0 to 2 that the program was started without, so that no file or
/// channel gets their numbers: reading and writing them fails, as with closed ones. For programs,
/// called before anything else. False when it cannot be done.
NQP2_API bool OpenStandardStreams() noexcept;

} // namespace nqp2
