// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/SysInterface.h"

#include <cstdint>
#include <mutex>

namespace nqp2::worker {

/// One channel of the worker's table, closed at the end. Closing it from another thread lets every
/// wait on it return; the buffers that are in use stay.
class ChannelLine {
public:
    explicit ChannelLine(const SysInterfaceTable& table, ChannelHandle handle = 0)
        : m_table(table), m_handle(handle) {}
    ChannelLine(const ChannelLine&) = delete;
    ChannelLine& operator=(const ChannelLine&) = delete;
    ~ChannelLine() { Close(); }

    [[nodiscard]] bool IsOpen() const { return Handle() != 0; }
    void Close() {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
        if (m_handle != 0) {
            m_table.CloseChannel(&m_handle);
        }
    }

    /// Becomes the channel that the library opens beside `parent` with that id. False when the
    /// library does not within `timeout` milliseconds, and when this was closed before.
    bool TakeBeside(const ChannelLine& parent, std::uint32_t id, std::uint32_t timeout) {
        ChannelHandle taken = m_table.OpenSubChannel(parent.Handle(), id, 0, 0, timeout, timeout);
        const std::lock_guard lock(m_mutex);
        if (m_isClosed && taken != 0) {
            m_table.CloseChannel(&taken);
        }
        m_handle = taken;
        return taken != 0;
    }

    /// Waits for a message and hands it to `take` (id, bytes, length), whose buffer is the
    /// channel's until it returns. False when none will come any more.
    template <class Take>
    bool Receive(Take&& take) {
        std::uint32_t id = 0;
        void* buffer = nullptr;
        std::uint32_t length = 0;
        const ChannelHandle handle = Handle();
        if (m_table.ReceivePacket(handle, &id, &buffer, &length, nullptr) != kChannelDone) {
            return false;
        }
        const Held held{m_table, handle, buffer, length};
        take(id, static_cast<unsigned char*>(buffer), static_cast<std::int32_t>(length));
        return true;
    }

    /// Receives, and drops, whatever comes until none will come any more.
    void DropAll() {
        while (Receive([](std::uint32_t, const unsigned char*, std::int32_t) {})) {
        }
    }

    /// Sends what `fill` (buffer, capacity) writes; it returns the number of bytes.
    template <class Fill>
    bool Send(std::uint32_t id, Fill&& fill) {
        void* buffer = nullptr;
        std::int32_t capacity = 0;
        const ChannelHandle handle = Handle();
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
    /// A received buffer, which goes back however its use ends.
    struct Held {
        const SysInterfaceTable& table;
        ChannelHandle channel;
        void* buffer;
        std::uint32_t length;
        ~Held() { table.ReleasePacket(channel, buffer, length); }
    };

    [[nodiscard]] ChannelHandle Handle() const {
        const std::lock_guard lock(m_mutex);
        return m_handle;
    }

    const SysInterfaceTable& m_table;
    mutable std::mutex m_mutex;
    ChannelHandle m_handle;
    bool m_isClosed = false;
};

/// Time-out of waits that end only with the channel.
inline constexpr std::uint32_t kNoTimeout = 0xFFFFFFFF;

} // namespace nqp2::worker
