// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/channel_link.h"
#include "bridge/channel_port.h"
#include "bridge/message_ids.h"

#include <cstdint>
#include <span>

namespace nqp2::bridge {

/// The channel behind a proxy's holder; nothing can be asked on one without a table.
inline ChannelPort PortOf(const SysInterfaceTable* table, const ChannelHolder* holder) {
    const bool isOpen = IsUsable(table) && holder != nullptr && holder->link != nullptr;
    return isOpen ? ChannelPort{table, holder->link->handle} : ChannelPort{};
}

/// Sends a message in the buffer that the channel grants. One that does not fit goes out with
/// length 0 for the worker to refuse. False when the channel fails; the buffer is not given back
/// then. Both kept, hosts rely on it.
template <class Message>
bool SendMessage(const ChannelPort& port, std::int32_t* abortFlag, MessageId id,
                 const Message& message) {
    const std::span<unsigned char> buffer = port.GrantedBuffer(abortFlag);
    if (buffer.empty()) {
        return false;
    }
    const auto capacity = static_cast<std::int32_t>(buffer.size());
    return port.Send(Number(id), buffer, message.Save(buffer.data(), capacity));
}

/// One request and its reply, which takes the request's place in `message`; a reply that is too
/// short leaves it as it is. `onReply` is given the number of bytes restored, while what the
/// message points to in the received buffer is still there, and tells whether the reply is good.
/// False when the channel fails, also when anything but this request's reply arrives.
template <class Message, class OnReply>
bool Exchange(const ChannelPort& port, MessageId id, Message& message, OnReply onReply) {
    if (port.table == nullptr || !SendMessage(port, nullptr, id, message)) {
        return false;
    }
    ReceivedMessage reply(port, nullptr);
    return reply.Take(Number(id)) && onReply(message.Restore(reply.Bytes().data(), reply.Length()));
}

template <class Message>
bool Exchange(const ChannelPort& port, MessageId id, Message& message) {
    return Exchange(port, id, message, [](std::int32_t /*restored*/) { return true; });
}

} // namespace nqp2::bridge
