// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/wait.h"

#include <algorithm>
#include <thread>

namespace nqp2::platform {

int Deadline::Left(int limit) const {
    if (!m_isFinite) {
        return limit;
    }
    const auto left = std::max(std::chrono::ceil<std::chrono::milliseconds>(m_end - Clock::now()),
                               std::chrono::milliseconds(0));
    const auto count = static_cast<int>(left.count());
    return limit < 0 ? count : std::min(count, limit);
}

int Wait(std::span<pollfd> watched, int milliseconds) {
    const auto pollFor = [&](int left) { return poll(watched.data(), watched.size(), left); };
    if (milliseconds == 0) {
        return Restarted([&] { return pollFor(0); });
    }
    const Deadline deadline(static_cast<std::uint32_t>(milliseconds));
    const int count = Restarted([&] { return pollFor(deadline.Left()); });
    if (count < 0) {
        const int error = errno;
        std::this_thread::sleep_for(std::chrono::milliseconds(deadline.Left(1)));
        errno = error;
    }
    return count;
}

bool HasNews(int descriptor, short events, int milliseconds) {
    pollfd watched{descriptor, events, 0};
    return Wait({&watched, 1}, milliseconds) > 0;
}

bool LockWithin(int descriptor, const Deadline& deadline, int operation) {
    constexpr std::chrono::milliseconds kLongestPause{20};
    std::chrono::milliseconds pause{1};
    // Not a waiting flock: nothing would end that.
    while (Restarted([&] { return flock(descriptor, operation | LOCK_NB); }) != 0) {
        if (errno != EWOULDBLOCK || deadline.HasPassed()) {
            return false;
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(2 * pause, kLongestPause);
    }
    return true;
}

} // namespace nqp2::platform
