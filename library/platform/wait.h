// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <poll.h>
#include <span>
#include <sys/file.h>

/// Waits that last as long as they shall, however many signals the host handles meanwhile.
namespace nqp2::platform {

/// The end of a wait on the monotonic clock.
class Deadline {
public:
    /// From 0x7FFFFFFF milliseconds up there is no end.
    explicit Deadline(std::uint32_t milliseconds)
        : m_isFinite(milliseconds < 0x7FFFFFFF),
          m_end(m_isFinite ? Clock::now() + std::chrono::milliseconds(milliseconds)
                           : Clock::time_point()) {}

    [[nodiscard]] bool HasPassed() const { return m_isFinite && Clock::now() >= m_end; }

    /// What is left in whole milliseconds as Wait takes it (-1: no end), at most `limit` unless
    /// that is negative.
    [[nodiscard]] int Left(int limit = -1) const;

private:
    using Clock = std::chrono::steady_clock;

    bool m_isFinite;
    Clock::time_point m_end;
};

/// The call's result; one that a signal cut short is made again.
template <class Call>
auto Restarted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// poll() for that long (-1: without end). The number of descriptors that have news, 0 when the
/// time is over. -1 when the system cannot tell, after a pause of a millisecond at most: the caller
/// looks for itself.
int Wait(std::span<pollfd> watched, int milliseconds);

/// Whether that has happened on one descriptor by now; waits that long (-1: without end).
bool HasNews(int descriptor, short events, int milliseconds = 0);

/// Has a file's lock (flock) within that time; false with errno when not, EWOULDBLOCK when another
/// else has it.
bool LockWithin(int descriptor, const Deadline& deadline, int operation = LOCK_EX);

} // namespace nqp2::platform
