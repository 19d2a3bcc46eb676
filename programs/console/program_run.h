// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/console.h"

namespace nqp2::tool {

/// What a program does with the words of its command line.
using ProgramWork = Status (*)(int count, const char* const* words, Console& console);

/// Does it, with sound standard streams; what goes wrong is told on standard error in one line, by
/// objects of JSON if these are asked for. Where there is no memory, that is told without any.
Status RunProgram(ProgramWork work, int count, const char* const* words,
                  bool asksForObjects) noexcept;

} // namespace nqp2::tool
