// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

/// Where the library's fixed diagnostic texts go (DebugOutput.h sets the sinks).
namespace nqp2::platform {

/// Writes one text to the debugger output; costs next to nothing while no sink is set.
void OutputDebugStringW(const wchar_t* text);
/// Shows a text to the person in front of the program.
void MessageBoxW(const wchar_t* text);

} // namespace nqp2::platform
