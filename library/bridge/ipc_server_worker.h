// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/channel_port.h"
#include "bridge/connection_record.h"
#include "bridge/ipc_connection.h"
#include "bridge/service_thread.h"
#include "channel/shared_flag.h"
#include "platform/guard.h"

#include <algorithm>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace nqp2::bridge {

/// Lets the worker ask the host for services: listens on a channel of its own, and gives each
/// connection that the worker asks for a channel, a stub and a thread. The stub is made from the
/// host's system object and the connection's channel, and answers requests (see
/// CNQFileManageX64Stub).
template <class Stub>
class CKVIPCServerWorker {
public:
    /// `parent` is the channel beside which the server's is opened; 0 for a channel that stands
    /// alone. Parent and table must outlive the server.
    CKVIPCServerWorker(std::uint32_t channelId, void* systemObject, const SysInterfaceTable* table,
                       ChannelHandle parent)
        : m_systemObject(systemObject), m_table(table), m_parent(parent), m_channelId(channelId) {}
    CKVIPCServerWorker(const CKVIPCServerWorker&) = delete;
    CKVIPCServerWorker& operator=(const CKVIPCServerWorker&) = delete;
    /// Stops and waits for all threads of the server, then closes its channels. In a process that
    /// was forked from the server's it does neither.
    ~CKVIPCServerWorker() {
        m_thread.Stop(m_stop);
        m_connections.clear();
    }

    /// Starts the server's thread; to be called once. Throws when the system has none to give.
    void Start() {
        m_thread.Start([this] { Run(); });
    }

private:
    using Connection = IpcConnection<Stub>;

    static constexpr std::uint32_t kMessageSize = 10240;
    static constexpr std::uint32_t kNoTimeout = 0xFFFFFFFF;
    static constexpr std::int32_t kAnnouncementBytes = 10;

    void Run() {
        channel::SetFlag(m_stop, 0);
        if (!IsUsable(m_table)) {
            return;
        }
        m_channel = OwnedChannel(m_table, Open());
        if (m_channel && Announce()) {
            Listen();
        }
        channel::SetFlag(m_stop, 1);
    }

    ChannelHandle Open() const {
        return m_parent != 0 ? OpenBeside({m_table, m_parent}, m_channelId, kMessageSize,
                                          kMessageSize, kNoTimeout, kNoTimeout)
                             : m_table->CreateChannel(m_channelId, kMessageSize, kMessageSize,
                                                      kNoTimeout, kNoTimeout);
    }

    /// Tells the worker that the server is there, by a message without meaning of its own. False
    /// when the channel has no buffer for it.
    bool Announce() {
        const std::span<unsigned char> buffer = m_channel.Port().GrantedBuffer(&m_stop);
        if (buffer.size() < kAnnouncementBytes) {
            return false;
        }
        std::fill_n(buffer.begin(), kAnnouncementBytes, static_cast<unsigned char>(0));
        // If that fails, so does the first receive.
        static_cast<void>(m_channel.Port().Send(m_channelId, buffer, kAnnouncementBytes));
        return true;
    }

    void Listen() {
        while (!channel::IsSet(m_stop)) {
            const Heard heard = HearOne();
            if (heard == Heard::Closed) {
                return;
            }
            if (heard == Heard::NothingOfUse && !channel::IsSet(m_stop)) {
                std::this_thread::sleep_for(kServerPause);
            }
        }
    }

    Heard HearOne() {
        ReceivedMessage request(m_channel.Port(), &m_stop);
        if (!request.Take() || request.Id() != kConnectId) {
            return request.IsClosed() ? Heard::Closed : Heard::NothingOfUse;
        }
        // A connection that fails, memory giving out included, is not the end of the server.
        platform::Guarded(false, [&] { return Accept(request); });
        return Heard::Served;
    }

    /// Opens what the worker asks for and answers it; with zeros when that fails, when the record is
    /// not whole and when there are enough connections, so that a worker does not wait for one that
    /// never comes.
    bool Accept(const ReceivedMessage& request) {
        ConnectionRecord record;
        OwnedChannel channel;
        if (HasRoom() && record.Restore(request.Bytes().data(), request.Length()) > 0) {
            channel = OpenConnection(m_channel.Port(), record, m_stop);
        }
        const ConnectionRecord answer = channel ? record : ConnectionRecord();
        if (!answer.Send(m_channel.Port(), kConnectedId, m_stop) || !channel) {
            return false;
        }
        Add(std::make_shared<Connection>(std::move(channel), m_systemObject));
        return true;
    }

    /// Each connection costs the host a thread and two channels.
    bool HasRoom() {
        constexpr std::size_t kMostConnections = 16;
        const std::lock_guard guard(m_lock);
        // A worker may come and go for as long as it likes: what has ended makes room.
        m_connections.remove_if([](const auto& each) { return each->HasEnded(); });
        return m_connections.size() < kMostConnections;
    }

    void Add(std::shared_ptr<Connection> connection) {
        connection->Start();
        const std::lock_guard guard(m_lock);
        m_connections.push_back(std::move(connection));
    }

    std::list<std::shared_ptr<Connection>> m_connections;
    std::mutex m_lock; ///< of the connections
    void* m_systemObject;
    const SysInterfaceTable* m_table;
    OwnedChannel m_channel;
    ChannelHandle m_parent;
    std::int32_t m_stop = 0;
    std::uint32_t m_channelId;
    ServiceThread m_thread;
};

} // namespace nqp2::bridge
