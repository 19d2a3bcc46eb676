// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/io_status.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

/// What all writers of files on disk have in common.
namespace nqp2::platform {

inline constexpr std::string_view kTemporaryPrefix = ".nqp2-";
inline constexpr std::string_view kTemporaryEnding = ".part"; ///< of a file in the making
inline constexpr std::string_view kLockEnding = ".lock";      ///< of the file behind a NameLock

/// A fresh hidden name of a file in the making, which no card scan may enumerate; empty, with the
/// reason in errno, when there is no randomness.
std::string TemporaryName();

/// Whether a name is one of those that writers leave behind when they are killed.
bool IsLeftoverName(std::string_view name);

/// Whether this process may make a file that long. Beyond the limit of its user the system would
/// not just refuse: it would send a signal that ends the host. To be asked before each step that
/// makes a file longer.
bool FitsFileSizeLimit(std::uint64_t end);
/// That limit; the largest number without one.
std::uint64_t MostFileSize();

/// Whether an open file still has that name in the folder (it was not removed or replaced).
bool HasName(int file, int folder, const char* name);

/// Advisory locks on open files and folders. They belong to the open file, not to its process or
/// thread, and go when its last descriptor is closed.
enum class LockKind { Shared, Alone };

/// Locks an open file, waiting at most that long for those that hold it; Busy then. Any other
/// failure is that of a file system without locks.
IoStatus LockOpen(int file, LockKind kind, std::chrono::milliseconds patience);

/// Brings an open file, or the names of an open folder, onto the medium.
IoStatus FlushToMedium(int file);

} // namespace nqp2::platform
