// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/channel_line.h"

namespace nqp2::worker {

/// The peer of a host's request server: connects, asks once whether the host offers services,
/// disconnects, and stays until the host closes the channel.
class HostTalk {
public:
    explicit HostTalk(const SysInterfaceTable& table, ChannelHandle server = 0)
        : m_server(table, server), m_connection(table) {}

    /// Takes the server's channel, which the host opens beside that one, and talks there.
    void ServeBeside(const ChannelLine& parent);
    void Serve();
    /// Lets either end soon. From any thread.
    void Stop() {
        m_server.Close();
        m_connection.Close();
    }

private:
    ChannelLine m_server;
    ChannelLine m_connection;
};

} // namespace nqp2::worker
