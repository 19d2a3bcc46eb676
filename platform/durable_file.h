// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/io_status.h"

#include <string>
#include <string_view>

/// What all writers of files on disk have in common.
namespace nqp2::platform {

inline constexpr std::string_view kTemporaryPrefix = ".nqp2-";
inline constexpr std::string_view kReplacementEnding = ".tmp"; ///< of a file's new content

/// A fresh hidden name with that ending, which no card scan may enumerate; empty, with the reason
/// in errno, when there is no randomness.
std::string TemporaryName(std::string_view ending);

/// Locks a new temporary file, which tells others that its writer lives. False when it was taken
/// for abandoned and removed before the lock stood. Where files cannot be locked, none ever is.
bool ClaimTemporary(int file);

/// Whether nobody who lives claims the file.
bool IsAbandoned(int file);

/// Brings an open file onto its medium.
IoStatus FlushToMedium(int file);

/// Brings the changed names of a folder, open as a path at least, onto its medium.
IoStatus FlushFolder(int folder);

} // namespace nqp2::platform
