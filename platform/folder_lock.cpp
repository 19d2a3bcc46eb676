// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/folder_lock.h"

#include "platform/disk_file_system.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>

namespace nqp2::platform {
namespace {

/// Whether somebody else has it; every other failure is that of a file system without locks.
bool IsHeldElsewhere(int folder) {
    while (flock(folder, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EINTR) {
            return errno == EWOULDBLOCK;
        }
    }
    return false;
}

} // namespace

FolderLock::FolderLock(const std::string& folder, std::chrono::milliseconds patience)
    : m_folder(open(SystemPath(folder), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
      m_busy(m_folder && IsHeldElsewhere(m_folder.Get())) {
    constexpr std::chrono::milliseconds kLongestPause{20};
    const auto deadline = std::chrono::steady_clock::now() + patience;
    std::chrono::milliseconds pause{1};
    while (m_busy && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(pause);
        pause = std::min(2 * pause, kLongestPause);
        m_busy = IsHeldElsewhere(m_folder.Get());
    }
}

} // namespace nqp2::platform
