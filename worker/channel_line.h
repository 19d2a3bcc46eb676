// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/SysInterface.h"

#include <atomic>
#include <cstdint>

namespace nqp2::worker {

/// One open channel of the worker's table, closed at the end. Ending it from another thread lets
/// every wait on it return.
class ChannelLine {
public:
    ChannelLine(const SysInterfaceTable& table, ChannelHandle handle)
        : m_table(table), m_handle(handle) {}
    ChannelLine(const ChannelLine&) = delete;
    ChannelLine& operator=(const ChannelLine&) = delete;
    ~ChannelLine() { Close(); }

    [[nodiscard]] bool IsOpen() const { return m_handle != 0; }
    void Close() {
        ChannelHandle handle = m_handle.exchange(0);
        if (handle != 0) {
            m_table.CloseChannel(&handle);
        }
    }

    /// The channel that the library opens beside this one with that id, on the same table; not open
    /// when the library does not within `timeout` milliseconds.
    [[nodiscard]] ChannelLine TakeSubChannel(std::uint32_t id, std::uint32_t timeout) const {
        return {m_table, m_table.OpenSubChannel(m_handle, id, 0, 0, timeout, timeout)};
    }

    /// Waits for a message and hands it to `take` (id, bytes, length), whose buffer is the channel's
    /// until it returns. False when none will come any more.
    template <class Take>
    bool Receive(Take&& take) {
        std::uint32_t id = 0;
        void* buffer = nullptr;
        std::uint32_t length = 0;
        const ChannelHandle handle = m_handle;
        if (m_table.ReceivePacket(handle, &id, &buffer, &length, nullptr) != kChannelDone) {
            return false;
        }
        take(id, static_cast<unsigned char*>(buffer), static_cast<std::int32_t>(length));
        m_table.ReleasePacket(handle, buffer, length);
        return true;
    }

    /// Sends what `fill` (buffer, capacity) writes; it returns the number of bytes.
    template <class Fill>
    bool Send(std::uint32_t id, Fill&& fill) {
        void* buffer = nullptr;
        std::int32_t capacity = 0;
        const ChannelHandle handle = m_handle;
        if (m_table.GetSendBuffer(handle, &buffer, &capacity, nullptr) != kChannelDone) {
            return false;
        }
        const std::int32_t length = fill(static_cast<unsigned char*>(buffer), capacity);
        return m_table.SendPacket(handle, id, buffer, static_cast<std::uint32_t>(length)) ==
               kChannelDone;
    }

    template <class Message>
    bool SendMessage(std::uint32_t id, const Message& message) {
        return Send(id, [&](unsigned char* buffer, std::int32_t capacity) {
            return message.Save(buffer, capacity);
        });
    }

private:
    const SysInterfaceTable& m_table;
    std::atomic<ChannelHandle> m_handle;
};

/// Time-out of waits that end only with the channel.
inline constexpr std::uint32_t kNoTimeout = 0xFFFFFFFF;

} // namespace nqp2::worker
