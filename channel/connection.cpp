// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/connection.h"

#include "channel/rendezvous.h"
#include "platform/wait.h"

namespace nqp2::channel {
namespace {

constexpr std::uint32_t kTakeTime = 5000;

bool IsAcknowledged(int socket, const Peer& peer, std::uint32_t channelId) {
    const platform::Deadline deadline(kTakeTime);
    ReceivedPacket received;
    while (true) {
        const bool hasEnded = peer.HasEnded();
        const Traffic traffic = ReceivePacketFrom(socket, received);
        if (traffic != Traffic::Nothing) {
            return traffic == Traffic::Done && received.packet.kind == PacketKind::Acknowledge &&
                   received.packet.id == channelId;
        }
        if (hasEnded || deadline.HasPassed()) {
            return false;
        }
        pollfd watched[] = {{socket, POLLIN, 0}, {peer.Watch(), POLLIN, 0}};
        platform::Wait(watched, deadline.Left());
    }
}

} // namespace

std::shared_ptr<ChannelEnd> Connect(const std::string& path, std::uint32_t channelId, Sizes sizes,
                                    TimeOuts timeOuts) {
    platform::Descriptor socket = ConnectTo(path);
    // Known before the answer is read: who answers was alive then, so the number was still its own.
    std::shared_ptr<const Peer> peer = socket ? PeerOf(socket.Get()) : nullptr;
    auto memory = peer != nullptr ? MakeMemory(sizes.send, sizes.receive) : std::nullopt;
    if (!memory) {
        return nullptr;
    }
    const int files[] = {memory->sendFile.Get(), memory->receiveFile.Get()};
    const Packet hello = Describe(PacketKind::Hello, channelId, *memory);
    if (SendPacketOn(socket.Get(), hello, files) != Traffic::Done ||
        !IsAcknowledged(socket.Get(), *peer, channelId)) {
        return nullptr;
    }
    return std::make_shared<ChannelEnd>(Link{std::move(socket), std::move(peer),
                                             std::move(memory->send), std::move(memory->receive)},
                                        Role::Opens, timeOuts);
}

} // namespace nqp2::channel
