// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>
#include <sys/stat.h>

/// The system's block devices by their names in /sys ("sda", "loop0").
namespace nqp2::platform {

/// Whether a whole device holds its bytes itself, and when the power is gone: not one in memory,
/// nor one whose bytes lie elsewhere, out of sight.
bool IsDisk(std::string_view device);

/// Whether a loop device ("loop0") has this very file behind it. False also when the system does
/// not tell: the path that it writes of may lead to another file by now, or from elsewhere.
bool IsBehindLoop(std::string_view device, const struct stat& file);

} // namespace nqp2::platform
