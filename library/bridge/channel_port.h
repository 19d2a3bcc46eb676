// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/messages.h"
#include "NQP2ParserU/SysInterface.h"
#include "platform/process.h"

#include <cstdint>
#include <span>

namespace nqp2::bridge {

/// A channel together with the usable table that it came from. Owns nothing.
struct ChannelPort {
    const SysInterfaceTable* table = nullptr;
    ChannelHandle handle = 0;

    /// The buffer for the next message; empty when none was granted.
    std::span<unsigned char> GrantedBuffer(std::int32_t* abortFlag) const;
    /// Sends the first `length` bytes of the granted buffer. False when the channel refuses; the
    /// buffer is not given back then: kept, hosts rely on it.
    [[nodiscard]] bool Send(std::uint32_t id, std::span<unsigned char> buffer,
                            std::int32_t length) const;
};

/// What a loop that waits for messages makes of one.
enum class Heard { Served, NothingOfUse, Closed };

/// What one wait for a message brought. Whatever that was, it is released at the end of life.
class ReceivedMessage {
public:
    /// Waits; `abortFlag` may be null.
    ReceivedMessage(const ChannelPort& port, std::int32_t* abortFlag);
    ReceivedMessage(const ReceivedMessage&) = delete;
    ReceivedMessage& operator=(const ReceivedMessage&) = delete;
    ~ReceivedMessage();

    /// The channel is closed, or the worker gone.
    [[nodiscard]] bool IsClosed() const { return m_status == kChannelClosed; }
    /// A message came, with data or without.
    [[nodiscard]] bool HasArrived() const { return m_status == kChannelDone; }
    [[nodiscard]] std::uint32_t Id() const { return m_id; }
    /// Whether a message with data came, which is thereby taken: only what was taken is released
    /// with its buffer and length.
    bool Take();
    bool Take(std::uint32_t id) { return m_id == id && Take(); }
    /// The message's data; for taken messages.
    [[nodiscard]] std::span<unsigned char> Bytes() const { return {m_buffer, m_length}; }
    [[nodiscard]] std::int32_t Length() const { return static_cast<std::int32_t>(m_length); }

private:
    ChannelPort m_port;
    std::int32_t m_status = 0;
    std::uint32_t m_id = 0;
    unsigned char* m_buffer = nullptr;
    std::uint32_t m_length = 0;
    bool m_taken = false;
};

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

/// Closes the channel behind the field, if the table can.
void CloseThroughTable(const SysInterfaceTable* table, ChannelHandle& handle);

/// Opens a second channel beside `parent`; 0 on failure and when the table lacks the slot.
ChannelHandle OpenBeside(const ChannelPort& parent, std::uint32_t id, std::uint32_t sendSize,
                         std::uint32_t receiveSize, std::uint32_t sendTimeout,
                         std::uint32_t receiveTimeout);

/// A channel that is closed at the end of life by the process that opened it; one with handle 0 is
/// none.
class OwnedChannel {
public:
    OwnedChannel() = default;
    OwnedChannel(const SysInterfaceTable* table, ChannelHandle handle) : m_port{table, handle} {}
    OwnedChannel(OwnedChannel&& other) noexcept;
    OwnedChannel& operator=(OwnedChannel&& other) noexcept;
    ~OwnedChannel();

    [[nodiscard]] const ChannelPort& Port() const { return m_port; }
    explicit operator bool() const { return m_port.handle != 0; }

private:
    ChannelPort m_port;
    platform::Owner m_owner;
};

} // namespace nqp2::bridge
