// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace nqp2::mhl {

/// Deeper or longer paths are not taken from a manifest, and cannot be recorded.
inline constexpr std::size_t kMaxPathParts = 256;
inline constexpr std::size_t kMaxPathBytes = std::size_t{32} * 1024;

/// What keeps the name of a file or folder out of a manifest ("is no UTF-8"); "" when nothing does.
std::string NameFault(std::string_view name);

/// The same for a path from a manifest ("leads out of the folder"), without a slash at its end.
std::string PathFault(std::string_view path);

} // namespace nqp2::mhl
