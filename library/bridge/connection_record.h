// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/channel_port.h"
#include "bridge/messages.h"

#include <cstdint>

namespace nqp2::bridge {

/// Numbers of the messages by which connections come and go.
inline constexpr std::uint32_t kConnectId = 50;   ///< also the id of a connection's channel
inline constexpr std::uint32_t kConnectedId = 51; ///< the answer on the server's channel
inline constexpr std::uint32_t kDisconnectId = 52;

/// What a worker asks for: the channel of a connection as the library opens it.
struct ConnectionRecord : WireMessage<ConnectionRecord> {
    static constexpr std::uint32_t kIds[] = {kConnectId, kConnectedId};
    std::uint32_t sendSize = 0;
    std::uint32_t receiveSize = 0;
    std::uint32_t sendTimeout = 0;    ///< milliseconds
    std::uint32_t receiveTimeout = 0; ///< milliseconds

    /// Sends the record; `abortFlag` ends the wait for a buffer. False when that fails.
    [[nodiscard]] bool Send(const ChannelPort& port, std::uint32_t messageId,
                            std::int32_t& abortFlag) const;
};

/// Opens the channel of a connection, sends the record on it and waits for the worker's answer
/// there. None when anything fails; what a channel may take is the table's business.
OwnedChannel OpenConnection(const ChannelPort& server, const ConnectionRecord& record,
                            std::int32_t& abortFlag);

} // namespace nqp2::bridge
