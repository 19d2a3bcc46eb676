// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>

namespace nqp2::avchd {

/// Tells the debugger output how long something took.
class StopWatch {
public:
    /// Writes the milliseconds since construction beside the name of what was called.
    void Report(const wchar_t* called) const;

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace nqp2::avchd
