// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/io_status.h"

#include <string>
#include <string_view>

/// What all writers of files on disk have in common.
namespace nqp2::platform {

inline constexpr std::string_view kTemporaryPrefix = ".nqp2-";

/// A fresh hidden name with that ending, which no card scan may enumerate; empty, with the reason
/// in errno, when there is no randomness.
std::string TemporaryName(std::string_view ending);

/// Brings an open file onto its medium.
IoStatus FlushToMedium(int file);

/// Brings the changed names of a folder, open as a path at least, onto its medium.
IoStatus FlushFolder(int folder);

} // namespace nqp2::platform
