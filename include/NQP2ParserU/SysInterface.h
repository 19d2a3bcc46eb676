// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <type_traits>

namespace nqp2 {

/// Names a channel; 0 names none.
using ChannelHandle = std::uint64_t;

/// What the slots answer, beside a handle. A table of another maker may use further negative
/// values.
enum ChannelStatus : std::int32_t {
    kChannelDone = 1,      ///< what was asked for is done
    kChannelMisuse = -1,   ///< a buffer, length or pointer that does not belong here
    kChannelTimedOut = -2, ///< the channel's own time-out passed
    kChannelAborted = -3,  ///< the abort flag was set while there was nothing to give
    kChannelClosed = -6,   ///< closed on either side, or the peer is gone; stays so
};

/// The functions through which the library reaches the worker process: ten slots in this order,
/// owned by the host and only read here. docs/channel.md describes what ours do in each slot.
///
/// Sizes and lengths are bytes, time-outs milliseconds; 0x7FFFFFFF and above mean no end. Abort
/// flags may be null; one that is not 0 ends waiting.
struct SysInterfaceTable {
    /// Slot 0. The handle of a new channel, 0 on failure.
    ChannelHandle (*CreateChannel)(std::uint32_t channelId, std::uint32_t sendSize,
                                   std::uint32_t receiveSize, std::uint32_t sendTimeout,
                                   std::uint32_t receiveTimeout);
    /// Slot 1. A second channel beside an open one, which may close before it; 0 on failure.
    ChannelHandle (*OpenSubChannel)(ChannelHandle parent, std::uint32_t channelId,
                                    std::uint32_t sendSize, std::uint32_t receiveSize,
                                    std::uint32_t sendTimeout, std::uint32_t receiveTimeout);
    /// Slot 2. 1 when a buffer was granted. It stays the channel's.
    std::int32_t (*GetSendBuffer)(ChannelHandle channel, void** buffer, std::int32_t* capacity,
                                  std::int32_t* abortFlag);
    /// Slot 3. Null, or whatever the host has there: never called.
    void (*Unused3)();
    /// Slot 4. Sends what the granted buffer holds; 1 when sent.
    std::int32_t (*SendPacket)(ChannelHandle channel, std::uint32_t messageId, void* buffer,
                               std::uint32_t length);
    /// Slot 5. 1 when a message arrived; its buffer may be written to until it is released.
    std::int32_t (*ReceivePacket)(ChannelHandle channel, std::uint32_t* messageId, void** buffer,
                                  std::uint32_t* length, std::int32_t* abortFlag);
    /// Slot 6. As slot 3.
    void (*Unused6)();
    /// Slot 7. Frees what slot 5 handed out; a null buffer frees all of it. Harmless when there is
    /// nothing to free.
    std::int32_t (*ReleasePacket)(ChannelHandle channel, void* buffer, std::uint32_t length);
    /// Slot 8. As slot 3.
    void (*Unused8)();
    /// Slot 9. Sets the field to 0 and closes the channel that it named.
    std::int32_t (*CloseChannel)(ChannelHandle* channel);
};

static_assert(std::is_standard_layout_v<SysInterfaceTable>);
static_assert(sizeof(SysInterfaceTable) == 10 * sizeof(void (*)()), "an array of ten pointers");

/// True when every slot is there without which nothing can be asked of a worker. Slots 1, 3, 6 and
/// 8 do not count: slot 1 is looked for where it is used.
inline bool IsUsable(const SysInterfaceTable* table) {
    return table != nullptr && table->CreateChannel != nullptr && table->GetSendBuffer != nullptr &&
           table->SendPacket != nullptr && table->ReceivePacket != nullptr &&
           table->ReleasePacket != nullptr && table->CloseChannel != nullptr;
}

} // namespace nqp2
