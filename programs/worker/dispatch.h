// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/operations.h"

#include <cstdint>
#include <functional>

namespace nqp2::worker {

/// Writes an answer to a buffer of that capacity and returns its length. 0, which the library takes
/// for a failure, stands for an unknown number, a damaged request, and running out of memory.
using Answer = std::function<std::int32_t(unsigned char* reply, std::int32_t capacity)>;

/// Runs the request of that number. Its bytes must stay until the answer is written.
Answer Dispatch(Operations& operations, std::uint32_t id, unsigned char* request,
                std::int32_t length) noexcept;

} // namespace nqp2::worker
