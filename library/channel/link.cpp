// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/link.h"

namespace nqp2::channel {

std::optional<SharedMemory> MakeMemory(std::uint32_t sendSize, std::uint32_t receiveSize) {
    if (sendSize == 0 || receiveSize == 0 || sendSize > kMaxMessageSize ||
        receiveSize > kMaxMessageSize) {
        return std::nullopt;
    }
    platform::Descriptor sendFile;
    platform::Descriptor receiveFile;
    std::optional<Segment> send = Segment::Make(sendSize, sendFile);
    std::optional<Segment> receive = Segment::Make(receiveSize, receiveFile);
    if (!send || !receive) {
        return std::nullopt;
    }
    return SharedMemory{std::move(*send), std::move(*receive), std::move(sendFile),
                        std::move(receiveFile)};
}

Packet Describe(PacketKind kind, std::uint32_t channelId, const SharedMemory& memory) {
    Packet packet;
    packet.kind = kind;
    packet.id = channelId;
    packet.sendSize = memory.send.MessageSize();
    packet.receiveSize = memory.receive.MessageSize();
    packet.sendSlots = memory.send.SlotCount();
    packet.receiveSlots = memory.receive.SlotCount();
    return packet;
}

std::optional<Link> AcceptLink(ReceivedPacket& received, platform::Descriptor socket,
                               std::shared_ptr<const Peer> peer) {
    const Packet& packet = received.packet;
    const std::size_t first = DescriptorsWith(packet.kind) - 2;
    // What the peer sends on is what this end receives on.
    std::optional<Segment> receive = Segment::Map(received.descriptors[first], packet.sendSize);
    std::optional<Segment> send = Segment::Map(received.descriptors[first + 1], packet.receiveSize);
    if (!send || !receive) {
        return std::nullopt;
    }
    return Link{std::move(socket), std::move(peer), std::move(*send), std::move(*receive)};
}

} // namespace nqp2::channel
