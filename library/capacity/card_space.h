// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <cstdint>
#include <optional>

namespace nqp2::capacity {

/// Free bytes of the card with that root; 0 when they cannot be asked for; nothing when it has no
/// contents folder.
std::optional<std::int64_t> FreeBytes(const CString& root);

} // namespace nqp2::capacity
