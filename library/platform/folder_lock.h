// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/io_status.h"

#include <chrono>

/// Advisory locks on open files and folders. They belong to the open file, not to its process or
/// thread, and go when its last descriptor is closed.
namespace nqp2::platform {

enum class LockKind { Shared, Alone };

/// Locks an open file, waiting at most that long for those that hold it; Busy then. Any other
/// failure is that of a file system without locks.
IoStatus LockOpen(int file, LockKind kind, std::chrono::milliseconds patience);

} // namespace nqp2::platform
