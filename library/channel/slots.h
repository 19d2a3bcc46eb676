// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/SysInterface.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace nqp2::channel {

class ChannelEnd;

using CreateChannelSlot = decltype(SysInterfaceTable::CreateChannel);

/// The table that both ends share but for the way in which a first channel comes about.
SysInterfaceTable TableWith(CreateChannelSlot createChannel);

/// The number by which callers of the slots know the channel; 0 for null. No number is used twice
/// in a process, so that a call on a channel that another thread has just closed finds nothing; nor
/// in processes that fork: a child finds none of its parent's, which it could only spoil.
ChannelHandle AddChannel(std::shared_ptr<ChannelEnd> channel);

// Flags of 32 bits that a slot watches through a pointer while another thread sets them. They order
// nothing: what belongs to them is handed over under a lock or by the end of a thread.

inline std::int32_t FlagValue(std::int32_t& flag) {
    return std::atomic_ref(flag).load(std::memory_order_relaxed);
}

inline bool IsSet(std::int32_t& flag) {
    return FlagValue(flag) != 0;
}

inline void SetFlag(std::int32_t& flag, std::int32_t value) {
    std::atomic_ref(flag).store(value, std::memory_order_relaxed);
}

/// Sets an abort flag, and wakes whoever waits with it in a slot of ours.
void RaiseFlag(std::int32_t& flag);

} // namespace nqp2::channel
