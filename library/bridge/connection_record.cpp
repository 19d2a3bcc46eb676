// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/connection_record.h"

#include <span>

namespace nqp2::bridge {

bool ConnectionRecord::Send(const ChannelPort& port, std::uint32_t messageId,
                            std::int32_t& abortFlag) const {
    const std::span<unsigned char> buffer = port.GrantedBuffer(&abortFlag);
    const std::int32_t length = Save(buffer.data(), static_cast<std::int32_t>(buffer.size()));
    return length > 0 && port.Send(messageId, buffer, length);
}

OwnedChannel OpenConnection(const ChannelPort& server, const ConnectionRecord& record,
                            std::int32_t& abortFlag) {
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
