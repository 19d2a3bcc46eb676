// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <bit>
#include <chrono>
#include <cstdint>

namespace nqp2::platform {

/// Tells a slow medium from a quick one by the last 64 reads.
class ReadPace {
public:
    /// What is taken for true until the reads tell.
    enum class Guess { Quick, Slow };
    explicit ReadPace(Guess guess) : m_slowReads(guess == Guess::Slow ? ~std::uint64_t{0} : 0) {}

    void Add(bool isSlow) { m_slowReads = m_slowReads << 1U | std::uint64_t{isSlow}; }
    /// So many were slow that reading ahead pays.
    [[nodiscard]] bool IsSlow() const { return std::popcount(m_slowReads) >= 4; }
    /// So few that it pays no longer.
    [[nodiscard]] bool IsQuick() const { return std::popcount(m_slowReads) <= 1; }
    /// So few that it may be a quick one on a busy machine, which stretches some reads, not most.
    [[nodiscard]] bool IsInDoubt() const { return std::popcount(m_slowReads) < 32; }

private:
    std::uint64_t m_slowReads; ///< one bit each, the last read lowest
};

/// Times one read.
class ReadWatch {
public:
    /// A file in the system's cache takes a few microseconds, one that comes from a medium some
    /// tens at the least; reading ahead costs a few microseconds a file.
    [[nodiscard]] bool IsSlow() const {
        return std::chrono::steady_clock::now() - m_start > std::chrono::microseconds(25);
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

/// How often the calling thread gave up its processor to wait for something. What another thread
/// took from it does not count, so that a busy machine is not taken for a slow medium.
std::int64_t WaitsOfThread();

} // namespace nqp2::platform
