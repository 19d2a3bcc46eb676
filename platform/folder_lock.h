// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/descriptor.h"
#include "platform/io_status.h"

#include <chrono>
#include <string>

/// Advisory locks on open files and folders. They belong to the open file, not to its process or
/// thread, and go when its last descriptor is closed.
namespace nqp2::platform {

enum class LockKind { Shared, Alone };

/// Locks an open file, waiting at most that long for those that hold it; Busy then. Any other
/// failure is that of a file system without locks.
IoStatus LockOpen(int file, LockKind kind, std::chrono::milliseconds patience);

/// Keeps other programs and threads that lock the same folder out for as long as it lives, so that
/// what one of them reads and writes back is not lost to another. It binds only those who ask, and
/// goes with its process, however that ends.
class FolderLock {
public:
    /// Waits until nobody else holds the folder (a POSIX path, taken exactly), at most that long.
    /// Where nothing can be locked, for want of such a folder, of the right to read it or of locks
    /// on its file system, it does not wait and keeps nobody out.
    explicit FolderLock(const std::string& folder,
                        std::chrono::milliseconds patience = std::chrono::seconds(5));

    /// False when somebody else held the folder to the end.
    explicit operator bool() const { return !m_busy; }

private:
    Descriptor m_folder;
    bool m_busy;
};

} // namespace nqp2::platform
