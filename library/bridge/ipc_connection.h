// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/channel_port.h"
#include "bridge/connection_record.h"
#include "bridge/file_services.h"
#include "bridge/service_thread.h"
#include "channel/shared_flag.h"

#include <chrono>
#include <cstdint>
#include <thread>
#include <utility>

namespace nqp2::bridge {

/// What a server waits after something that it cannot use, lest it spin.
inline constexpr std::chrono::milliseconds kServerPause(100);

/// One connection of the worker: a thread that hands each request to the stub and sends the reply
/// back under the request's number, until the worker disconnects or is gone.
template <class Stub>
class IpcConnection {
public:
    IpcConnection(OwnedChannel channel, void* systemObject)
        : m_channel(std::move(channel)), m_stub(systemObject, m_channel.Port()) {}
    IpcConnection(const IpcConnection&) = delete;
    IpcConnection& operator=(const IpcConnection&) = delete;
    ~IpcConnection() { m_thread.Stop(m_stop); }

    void Start() {
        m_thread.Start([this] { Run(); });
    }
    [[nodiscard]] bool HasEnded() { return m_thread.HasEnded(); }

private:
    void Run() {
        if (!IsUsable(m_channel.Port().table)) {
            return;
        }
        channel::SetFlag(m_stop, 0);
        while (!channel::IsSet(m_stop)) {
            const Heard heard = HearOne();
            if (heard == Heard::Closed) {
                channel::SetFlag(m_stop, 1);
            } else if (heard == Heard::NothingOfUse && !channel::IsSet(m_stop)) {
                std::this_thread::sleep_for(kServerPause);
            }
        }
    }

    Heard HearOne() {
        ReceivedMessage request(m_channel.Port(), &m_stop);
        const bool hasData = request.Take();
        if (!request.HasArrived()) {
            return request.IsClosed() ? Heard::Closed : Heard::NothingOfUse;
        }
        if (request.Id() == kDisconnectId) {
            return Heard::Closed;
        }
        if (hasData) {
            Answer(request);
        }
        return Heard::Served;
    }

    void Answer(const ReceivedMessage& request) {
        const std::span<unsigned char> reply = m_channel.Port().GrantedBuffer(&m_stop);
        if (reply.empty()) {
            return;
        }
        const std::int32_t length = m_stub.Answer(request.Id(), {request.Bytes(), reply});
        // A reply that cannot be sent shows in the next receive: nothing else to be told.
        static_cast<void>(m_channel.Port().Send(request.Id(), reply, length));
    }

    OwnedChannel m_channel;
    std::int32_t m_stop = 0;
    Stub m_stub;
    ServiceThread m_thread;
};

} // namespace nqp2::bridge
