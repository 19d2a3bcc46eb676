// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/request_server.h"

#include "channel/abort_bell.h"
#include "channel/slots.h"
#include "platform/guard.h"

#include <algorithm>

namespace nqp2::bridge {
namespace {

using channel::IsSet;

constexpr std::chrono::milliseconds kStopStep(40);
/// What a server waits after something that it cannot use: it must not spin.
constexpr std::chrono::milliseconds kPause(100);
constexpr std::uint32_t kMessageSize = 10240;
constexpr std::uint32_t kNoTimeout = 0xFFFFFFFF;
constexpr std::int32_t kAnnouncementBytes = 10;
constexpr std::size_t kMostConnections = 16; ///< each costs the host a thread and two channels

/// Calls `hearOne` until the flag is set or the channel closed.
template <class HearOne>
void HearUntil(std::int32_t& stop, HearOne hearOne) {
    const channel::RungFlag isRung(stop);
    while (!IsSet(stop)) {
        const Heard heard = hearOne();
        if (heard == Heard::Closed) {
            return;
        }
        if (heard == Heard::NothingOfUse && !IsSet(stop)) {
            std::this_thread::sleep_for(kPause);
        }
    }
}

bool SendRecord(const ChannelPort& port, std::uint32_t messageId, const ConnectionRecord& record,
                std::int32_t& stop) {
    const std::span<unsigned char> buffer = port.GrantedBuffer(&stop);
    const std::int32_t length =
        record.Save(buffer.data(), static_cast<std::int32_t>(buffer.size()));
    return length > 0 && port.Send(messageId, buffer, length);
}

/// Opens the channel of a connection, sends the record on it and waits for the worker's answer
/// there. None when anything fails; what a channel may take is the table's business.
OwnedChannel OpenConnection(const ChannelPort& server, const ConnectionRecord& record,
                            std::int32_t& stop) {
    OwnedChannel channel(server.table,
                         OpenBeside(server, kConnectId, record.sendSize, record.receiveSize,
                                    record.sendTimeout, record.receiveTimeout));
    if (!channel || !SendRecord(channel.Port(), kConnectId, record, stop)) {
        return {};
    }
    ReceivedMessage answer(channel.Port(), &stop);
    return answer.Take(kConnectId) ? std::move(channel) : OwnedChannel();
}

} // namespace

void ForgetThreadOfParent(std::thread thread) {
    // It can neither be joined nor detached, nor destroyed unless it was. Never destroyed, then.
    static auto& threads = *new std::list<std::thread>;
    threads.push_back(std::move(thread));
}

void ServiceThread::Stop(std::int32_t& stopFlag) {
    if (!m_thread.joinable()) {
        return;
    }
    if (!m_owner.IsThisProcess()) {
        ForgetThreadOfParent(std::move(m_thread));
        return;
    }
    do {
        channel::RaiseFlag(stopFlag);
    } while (!WaitForEnd(kStopStep));
    m_thread.join();
}

bool ServiceThread::HasEnded() {
    const std::lock_guard guard(m_lock);
    return m_hasEnded;
}

void ServiceThread::MarkEnded() {
    const std::lock_guard guard(m_lock);
    m_hasEnded = true;
    m_end.notify_all();
}

bool ServiceThread::WaitForEnd(std::chrono::milliseconds limit) {
    std::unique_lock guard(m_lock);
    return m_end.wait_for(guard, limit, [this] { return m_hasEnded; });
}

/// One connection of the worker: a thread that answers each request under the request's number,
/// until the worker disconnects or is gone.
class RequestConnection {
public:
    explicit RequestConnection(OwnedChannel channel)
        : m_channel(std::move(channel)),
          // Sizes and time-outs of 0 mean those of the connection.
          m_notifications(m_channel.Port().table,
                          OpenBeside(m_channel.Port(), kConnectId, 0, 0, 0, 0)) {
        m_thread.Start([this] { Run(); });
    }
    RequestConnection(const RequestConnection&) = delete;
    RequestConnection& operator=(const RequestConnection&) = delete;
    ~RequestConnection() { m_thread.Stop(m_stop); }

    [[nodiscard]] bool HasEnded() { return m_thread.HasEnded(); }

private:
    void Run() {
        channel::SetFlag(m_stop, 0);
        HearUntil(m_stop, [this] { return HearOne(); });
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

    /// A host's services would be asked here; without them every reply has length 0.
    void Answer(const ReceivedMessage& request) {
        const std::span<unsigned char> reply = m_channel.Port().GrantedBuffer(&m_stop);
        if (!reply.empty()) {
            // A reply that cannot be sent shows in the next receive: nothing else to be told.
            static_cast<void>(m_channel.Port().Send(request.Id(), reply, 0));
        }
    }

    OwnedChannel m_channel;
    OwnedChannel m_notifications; ///< on which notifications would go to the worker
    std::int32_t m_stop = 0;
    ServiceThread m_thread;
};

std::unique_ptr<RequestServer> RequestServer::Start(const SysInterfaceTable* table,
                                                    ChannelHandle parent) {
    return platform::Guarded(std::unique_ptr<RequestServer>(), [&] {
        std::unique_ptr<RequestServer> server(new RequestServer(table, parent));
        server->m_thread.Start([raw = server.get()] { raw->Run(); });
        return server;
    });
}

RequestServer::RequestServer(const SysInterfaceTable* table, ChannelHandle parent)
    : m_table(table), m_parent(parent) {}

RequestServer::~RequestServer() {
    m_thread.Stop(m_stop);
    m_connections.clear();
}

void RequestServer::Run() {
    channel::SetFlag(m_stop, 0);
    if (!IsUsable(m_table)) {
        return;
    }
    m_channel = OwnedChannel(m_table, Open());
    if (m_channel && Announce()) {
        HearUntil(m_stop, [this] { return HearOne(); });
    }
}

ChannelHandle RequestServer::Open() const {
    return m_parent != 0 ? OpenBeside({m_table, m_parent}, kRequestServerId, kMessageSize,
                                      kMessageSize, kNoTimeout, kNoTimeout)
                         : m_table->CreateChannel(kRequestServerId, kMessageSize, kMessageSize,
                                                  kNoTimeout, kNoTimeout);
}

/// Tells the worker that the server is there, by a message without meaning of its own. False when
/// the channel has no buffer for it.
bool RequestServer::Announce() {
    const std::span<unsigned char> buffer = m_channel.Port().GrantedBuffer(&m_stop);
    if (buffer.size() < kAnnouncementBytes) {
        return false;
    }
    std::fill_n(buffer.begin(), kAnnouncementBytes, static_cast<unsigned char>(0));
    // If that fails, so does the first receive.
    static_cast<void>(m_channel.Port().Send(kRequestServerId, buffer, kAnnouncementBytes));
    return true;
}

Heard RequestServer::HearOne() {
    ReceivedMessage request(m_channel.Port(), &m_stop);
    if (!request.Take() || request.Id() != kConnectId) {
        return request.IsClosed() ? Heard::Closed : Heard::NothingOfUse;
    }
    // A connection that fails, for want of memory too, is not the end of the server.
    platform::Guarded(false, [&] { return Accept(request); });
    return Heard::Served;
}

/// Opens what the worker asks for and answers it; with zeros when that fails, when the record is
/// not whole and when there are enough connections, so that a worker does not wait for one that
/// never comes.
bool RequestServer::Accept(const ReceivedMessage& request) {
    ConnectionRecord record;
    OwnedChannel channel;
    if (HasRoom() && record.Restore(request.Bytes().data(), request.Length()) > 0) {
        channel = OpenConnection(m_channel.Port(), record, m_stop);
    }
    const ConnectionRecord answer = channel ? record : ConnectionRecord();
    if (!SendRecord(m_channel.Port(), kConnectedId, answer, m_stop) || !channel) {
        return false;
    }
    m_connections.push_back(std::make_unique<RequestConnection>(std::move(channel)));
    return true;
}

/// A worker may come and go for as long as it likes: what has ended makes room.
bool RequestServer::HasRoom() {
    m_connections.remove_if([](const auto& each) { return each->HasEnded(); });
    return m_connections.size() < kMostConnections;
}

} // namespace nqp2::bridge
