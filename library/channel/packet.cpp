// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/packet.h"

#include <cstring>

namespace nqp2::channel {
namespace {

bool IsKnown(PacketKind kind) {
    return kind >= PacketKind::Hello && kind <= PacketKind::Offer;
}

bool IsDirection(std::uint32_t size, std::uint32_t slots) {
    return size > 0 && size <= kMaxMessageSize && slots == SlotsFor(size);
}

} // namespace

std::optional<Packet> ReadPacket(std::span<const std::byte> bytes, std::size_t descriptorCount) {
    Packet packet;
    if (bytes.size() != sizeof(packet)) {
        return std::nullopt;
    }
    std::memcpy(&packet, bytes.data(), sizeof(packet));
    if (!IsKnown(packet.kind) || descriptorCount != DescriptorsWith(packet.kind)) {
        return std::nullopt;
    }
    if (descriptorCount > 0 && !(IsDirection(packet.sendSize, packet.sendSlots) &&
                                 IsDirection(packet.receiveSize, packet.receiveSlots))) {
        return std::nullopt;
    }
    return packet;
}

} // namespace nqp2::channel
