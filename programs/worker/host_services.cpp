// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/host_services.h"

#include "bridge/messages.h"

namespace nqp2::worker {
namespace {

using bridge::ConnectionRecord;

constexpr std::uint32_t kServiceQuery = 5001;
constexpr std::uint32_t kPatience =
    5000; // milliseconds; a host that does not answer has no services

constexpr ConnectionRecord kWanted = {{}, 10240, 10240, kNoTimeout, kNoTimeout};

/// Waits for the message of that id; other ones are dropped.
bool Await(ChannelLine& line, std::uint32_t wanted) {
    bool came = false;
    const auto look = [&](std::uint32_t id, unsigned char*, std::int32_t) { came = id == wanted; };
    while (!came && line.Receive(look)) {
    }
    return came;
}

/// The host asks on the new channel before it answers on its own: in the other order both would wait.
bool Connect(ChannelLine& server, ChannelLine& connection) {
    return Await(connection, bridge::kConnectId) &&
           connection.SendMessage(bridge::kConnectId, kWanted) &&
           Await(server, bridge::kConnectedId);
}

void AskOnce(ChannelLine& connection) {
    const ConnectionRecord nothing;
    if (connection.SendMessage(kServiceQuery, nothing)) {
        // An answer without content says that there are none; nothing here needs them.
        static_cast<void>(Await(connection, kServiceQuery));
    }
    connection.SendMessage(bridge::kDisconnectId, nothing);
}

} // namespace

void HostTalk::ServeBeside(const ChannelLine& parent) {
    if (m_server.TakeBeside(parent, bridge::kRequestServerId, kNoTimeout)) {
        Serve();
    }
}

void HostTalk::Serve() {
    if (!Await(m_server, bridge::kRequestServerId) ||
        !m_server.SendMessage(bridge::kConnectId, kWanted)) {
        return;
    }
    if (m_connection.TakeBeside(m_server, bridge::kConnectId, kPatience)) {
        if (Connect(m_server, m_connection)) {
            AskOnce(m_connection);
        }
        m_connection.Close();
    }
    while (m_server.Receive([](std::uint32_t, unsigned char*, std::int32_t) {})) {
    }
}

} // namespace nqp2::worker
