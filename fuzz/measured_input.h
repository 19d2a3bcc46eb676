// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>

namespace nqp2::fuzz {

/// What a target does with an input; each target defines it. Returns 0.
int TestInput(const std::uint8_t* data, std::size_t size);

/// The most memory that an input has taken so far beside what was in use before it, in bytes.
std::size_t MostMemory();

} // namespace nqp2::fuzz
