// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <cstdint>

/// Flags of 32 bits that a channel watches through a pointer while another thread sets them. They
/// order nothing: what belongs to them is handed over under a lock or by the end of a thread.
namespace nqp2::channel {

inline std::int32_t FlagValue(std::int32_t& flag) {
    return std::atomic_ref(flag).load(std::memory_order_relaxed);
}

inline bool IsSet(std::int32_t& flag) {
    return FlagValue(flag) != 0;
}

inline void SetFlag(std::int32_t& flag, std::int32_t value) {
    std::atomic_ref(flag).store(value, std::memory_order_relaxed);
}

} // namespace nqp2::channel
