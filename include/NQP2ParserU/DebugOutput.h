// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"

#include <functional>

namespace nqp2 {

/// Takes one text of the library, on the thread on which it arises.
using TextSink = std::function<void(const CString&)>;

/// Sets where the library's debugger output goes; an empty sink (the start) drops it.
/// Returns the sink that was set before. Safe from any thread.
NQP2_API TextSink SetDebugOutput(TextSink sink) noexcept;

/// Sets where message boxes go; an empty sink (the start) prints them on standard error.
/// Returns the sink that was set before.
NQP2_API TextSink SetMessageBoxSink(TextSink sink) noexcept;

} // namespace nqp2
