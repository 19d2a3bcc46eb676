// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/stop_watch.h"

#include "NQP2ParserU/CString.h"
#include "platform/diagnostics.h"

#include <cstdint>

namespace nqp2::avchd {

void StopWatch::Report(const wchar_t* called) const {
    const auto passed = std::chrono::steady_clock::now() - m_start;
    const std::int64_t milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(passed).count();
    CString text;
    text.Format(L"\n===Call %s Cost %d", called, milliseconds);
    platform::OutputDebugStringW(text);
}

} // namespace nqp2::avchd
