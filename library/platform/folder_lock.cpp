// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/folder_lock.h"

#include "platform/system_status.h"

#include <algorithm>
#include <cerrno>
#include <sys/file.h>
#include <thread>

namespace nqp2::platform {

IoStatus LockOpen(int file, LockKind kind, std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds kLongestPause{20};
    const auto deadline = std::chrono::steady_clock::now() + patience;
    const int operation = (kind == LockKind::Alone ? LOCK_EX : LOCK_SH) | LOCK_NB;
    std::chrono::milliseconds pause{1};
    while (flock(file, operation) != 0) {
        if (errno == EINTR) {
            continue;
        }
        if (errno != EWOULDBLOCK) {
            return SystemStatus(errno);
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return {IoError::Busy, "somebody else is using it"};
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(2 * pause, kLongestPause);
    }
    return {};
}

} // namespace nqp2::platform
