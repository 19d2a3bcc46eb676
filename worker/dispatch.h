// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/operations.h"

#include <cstdint>

namespace nqp2::worker {

/// Runs the request of that number and writes the answer; returns its length. 0, which the library
/// takes for a failure, for an unknown number, a damaged request and when memory gives out.
std::int32_t Dispatch(Operations& operations, std::uint32_t id, unsigned char* request,
                      std::int32_t length, unsigned char* reply, std::int32_t capacity) noexcept;

} // namespace nqp2::worker
