// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

/// The system's block devices by their names in /sys ("sda", "loop0").
namespace nqp2::platform {

/// Whether a whole device holds its bytes itself, and when the power is gone: not one in memory,
/// nor one whose bytes lie elsewhere, out of sight.
bool IsDisk(std::string_view device);

} // namespace nqp2::platform
