// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace nqp2::channel {

/// The end of a wait on the monotonic clock.
class Deadline {
public:
    /// From 0x7FFFFFFF milliseconds up there is no end.
    explicit Deadline(std::uint32_t milliseconds)
        : m_isFinite(milliseconds < 0x7FFFFFFF),
          m_end(Clock::now() + std::chrono::milliseconds(m_isFinite ? milliseconds : 0)) {}

    [[nodiscard]] bool HasPassed() const { return m_isFinite && Clock::now() >= m_end; }

    /// What is left in whole milliseconds as poll() takes it (-1: no end), at most `limit` unless
    /// that is negative.
    [[nodiscard]] int Left(int limit = -1) const {
        if (!m_isFinite) {
            return limit;
        }
        const auto left =
            std::max(std::chrono::ceil<std::chrono::milliseconds>(m_end - Clock::now()),
                     std::chrono::milliseconds(0));
        const auto count = static_cast<int>(left.count());
        return limit < 0 ? count : std::min(count, limit);
    }

private:
    using Clock = std::chrono::steady_clock;

    bool m_isFinite;
    Clock::time_point m_end;
};

} // namespace nqp2::channel
