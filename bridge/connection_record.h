// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/channel_port.h"

#include <cstdint>
#include <optional>
#include <span>

namespace nqp2::bridge {

/// Numbers of the messages by which connections come and go.
inline constexpr std::uint32_t kConnectId = 50;   ///< also the id of a connection's channel
inline constexpr std::uint32_t kConnectedId = 51; ///< the answer on the server's channel
inline constexpr std::uint32_t kDisconnectId = 52;

/// What a worker asks for: the channel of a connection as the library opens it.
struct ConnectionRecord {
    static constexpr std::size_t kBytes = 16;

    std::uint32_t sendSize = 0;
    std::uint32_t receiveSize = 0;
    std::uint32_t sendTimeout = 0;    ///< milliseconds
    std::uint32_t receiveTimeout = 0; ///< milliseconds

    /// Nothing when there are fewer bytes than a record takes.
    static std::optional<ConnectionRecord> FromBytes(std::span<const unsigned char> bytes);
    /// Sends the record; `abortFlag` ends the wait for a buffer. False when that fails.
    [[nodiscard]] bool Send(const ChannelPort& port, std::uint32_t messageId,
                            std::int32_t& abortFlag) const;
};

/// Opens the channel of a connection, sends the record on it and waits for the worker's answer
/// there. None when anything fails or the worker asks for more memory than any channel may take.
OwnedChannel OpenConnection(const ChannelPort& server, const ConnectionRecord& record,
                            std::int32_t& abortFlag);

} // namespace nqp2::bridge
