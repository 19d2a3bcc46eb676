// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/slots.h"

#include "channel/abort_bell.h"
#include "channel/channel_end.h"
#include "platform/guard.h"
#include "platform/process.h"

#include <atomic>
#include <mutex>
#include <unordered_map>

namespace nqp2::channel {
namespace {

struct Table {
    std::mutex mutex;
    ChannelHandle last = 0;
    std::unordered_map<ChannelHandle, std::shared_ptr<ChannelEnd>> channels;
};

/// Never destroyed: threads of the library may outlive static objects.
Table& Channels() {
    static auto& table = *new Table;
    return table;
}

constexpr unsigned kCounterBits = 40; ///< the process is above the count

ChannelHandle ProcessPart() {
    return static_cast<ChannelHandle>(platform::ProcessNumber()) << kCounterBits;
}

/// Null when there is none, or no longer.
std::shared_ptr<ChannelEnd> FindChannel(ChannelHandle handle) {
    // Before the lock, which a thread of the parent may have held when the child was forked.
    if (handle >> kCounterBits != ProcessPart() >> kCounterBits) {
        return nullptr;
    }
    Table& table = Channels();
    const std::lock_guard lock(table.mutex);
    const auto found = table.channels.find(handle);
    return found != table.channels.end() ? found->second : nullptr;
}

/// Forgets the channel once it is closed and no buffer of it is held any more.
void ForgetIfOver(ChannelHandle handle, const ChannelEnd& channel) {
    if (!channel.IsOver()) {
        return;
    }
    Table& table = Channels();
    const std::lock_guard lock(table.mutex);
    table.channels.erase(handle); // the caller holds it still
}

/// Runs an operation on an open channel; one that is closed, or never was, is no fault.
template <class Operation>
std::int32_t OnChannel(ChannelHandle handle, Operation&& operation) {
    return platform::Guarded<std::int32_t>(kChannelMisuse, [&]() -> std::int32_t {
        const std::shared_ptr<ChannelEnd> channel = FindChannel(handle);
        return channel != nullptr ? operation(*channel) : kChannelClosed;
    });
}

/// The same for what gives a buffer back: it may have been the last of a closed channel.
template <class Operation>
std::int32_t GivingBack(ChannelHandle handle, Operation&& operation) {
    return OnChannel(handle, [&](ChannelEnd& channel) {
        const ChannelStatus status = operation(channel);
        ForgetIfOver(handle, channel);
        return status;
    });
}

ChannelHandle OpenSubChannel(ChannelHandle parent, std::uint32_t channelId, std::uint32_t sendSize,
                             std::uint32_t receiveSize, std::uint32_t sendTimeout,
                             std::uint32_t receiveTimeout) {
    return platform::Guarded<ChannelHandle>(0, [&]() -> ChannelHandle {
        const std::shared_ptr<ChannelEnd> channel = FindChannel(parent);
        return channel != nullptr
                   ? AddChannel(channel->SubChannel(channelId, {sendSize, receiveSize},
                                                    {sendTimeout, receiveTimeout}))
                   : 0;
    });
}

std::int32_t GetSendBuffer(ChannelHandle handle, void** buffer, std::int32_t* capacity,
                           std::int32_t* abortFlag) {
    if (buffer == nullptr || capacity == nullptr) {
        return kChannelMisuse;
    }
    return OnChannel(handle, [&](ChannelEnd& channel) {
        return channel.GetSendBuffer(buffer, capacity, abortFlag);
    });
}

std::int32_t SendPacket(ChannelHandle handle, std::uint32_t messageId, void* buffer,
                        std::uint32_t length) {
    return GivingBack(handle,
                      [&](ChannelEnd& channel) { return channel.Send(messageId, buffer, length); });
}

std::int32_t ReceivePacket(ChannelHandle handle, std::uint32_t* messageId, void** buffer,
                           std::uint32_t* length, std::int32_t* abortFlag) {
    if (messageId == nullptr || buffer == nullptr || length == nullptr) {
        return kChannelMisuse;
    }
    return OnChannel(handle, [&](ChannelEnd& channel) {
        return channel.Receive(messageId, buffer, length, abortFlag);
    });
}

std::int32_t ReleasePacket(ChannelHandle handle, void* buffer, std::uint32_t) {
    return GivingBack(handle, [&](ChannelEnd& channel) { return channel.Release(buffer); });
}

std::int32_t CloseChannel(ChannelHandle* field) {
    if (field == nullptr) {
        return kChannelMisuse;
    }
    // Of two threads that close one field, one finds the handle.
    const ChannelHandle handle = std::atomic_ref(*field).exchange(0);
    GivingBack(handle, [](ChannelEnd& channel) {
        channel.Close();
        return kChannelDone;
    });
    return kChannelDone;
}

} // namespace

ChannelHandle AddChannel(std::shared_ptr<ChannelEnd> channel) {
    if (channel == nullptr) {
        return 0;
    }
    Table& table = Channels();
    const std::lock_guard lock(table.mutex);
    const ChannelHandle handle = ProcessPart() | ++table.last;
    table.channels.emplace(handle, std::move(channel));
    return handle;
}

void RaiseFlag(std::int32_t& flag) {
    SetFlag(flag, 1);
    RingAbortBell();
}

SysInterfaceTable TableWith(CreateChannelSlot createChannel) {
    SysInterfaceTable table{};
    table.CreateChannel = createChannel;
    table.OpenSubChannel = OpenSubChannel;
    table.GetSendBuffer = GetSendBuffer;
    table.SendPacket = SendPacket;
    table.ReceivePacket = ReceivePacket;
    table.ReleasePacket = ReleasePacket;
    table.CloseChannel = CloseChannel;
    return table;
}

} // namespace nqp2::channel
