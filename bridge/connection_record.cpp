// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/connection_record.h"

#include <algorithm>

namespace nqp2::bridge {

namespace {

// What a worker can make this process map for one direction.
constexpr std::uint32_t kMaxSize = 64U << 20U;

constexpr std::uint32_t ConnectionRecord::*kFields[] = {
    &ConnectionRecord::sendSize, &ConnectionRecord::receiveSize, &ConnectionRecord::sendTimeout,
    &ConnectionRecord::receiveTimeout};

} // namespace

std::optional<ConnectionRecord> ConnectionRecord::FromBytes(std::span<const unsigned char> bytes) {
    if (bytes.size() < kBytes) {
        return std::nullopt;
    }
    ConnectionRecord record;
    auto next = bytes.begin();
    for (const auto field : kFields) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            record.*field |= static_cast<std::uint32_t>(*next++) << shift;
        }
    }
    return record;
}

bool ConnectionRecord::Send(const ChannelPort& port, std::uint32_t messageId,
                            std::int32_t& abortFlag) const {
    const std::span<unsigned char> buffer = port.GrantedBuffer(&abortFlag);
    if (buffer.size() < kBytes) {
        return false;
    }
    auto next = buffer.begin();
    for (const auto field : kFields) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            *next++ = static_cast<unsigned char>(this->*field >> shift);
        }
    }
    return port.Send(messageId, buffer, kBytes);
}

OwnedChannel OpenConnection(const ChannelPort& server, const ConnectionRecord& record,
                            std::int32_t& abortFlag) {
    if (std::max(record.sendSize, record.receiveSize) > kMaxSize) {
        return {};
    }
    OwnedChannel channel(server.table,
                         OpenBeside(server, kConnectId, record.sendSize, record.receiveSize,
                                    record.sendTimeout, record.receiveTimeout));
    if (!channel || !record.Send(channel.Port(), kConnectId, abortFlag)) {
        return {};
    }
    ReceivedMessage answer(channel.Port(), &abortFlag);
    return answer.Take(kConnectId) ? std::move(channel) : OwnedChannel();
}

} // namespace nqp2::bridge
