// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace nqp2::copy {

/// Tells a thread that waits that something has moved on.
class Bell {
public:
    [[nodiscard]] std::uint64_t Rings() {
        const std::lock_guard guard(m_lock);
        return m_rings;
    }
    void Ring() {
        {
            const std::lock_guard guard(m_lock);
            ++m_rings;
        }
        m_rung.notify_one();
    }
    /// Until it has rung more often than that, or for that long.
    void Await(std::uint64_t rings, std::chrono::milliseconds patience) {
        std::unique_lock lock(m_lock);
        m_rung.wait_for(lock, patience, [&] { return m_rings != rings; });
    }

private:
    std::mutex m_lock;
    std::condition_variable m_rung;
    std::uint64_t m_rings = 0;
};

} // namespace nqp2::copy
