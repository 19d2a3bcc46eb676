// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/descriptor.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

/// What travels on a channel's socket. Message bytes never do: they lie in the segments.
namespace nqp2::channel {

enum class PacketKind : std::uint32_t {
    Hello = 1,   ///< first packet of a host that connects: this is its line
    Acknowledge, ///< the channel was taken; on a line, the worker is ready
    Data,        ///< a message lies in a slot
    Release,     ///< a slot may be written again: for a sender that waits for that
    Offer,       ///< a channel on a line, a sub-channel on a channel: socket and both memories
};

/// 32 bytes in the machine's own byte order: both ends run on one machine.
struct Packet {
    PacketKind kind = PacketKind::Hello;
    std::uint32_t id = 0;       ///< of the message, or of the channel in Acknowledge and Offer
    std::uint32_t slot = 0;     ///< of Data and Release
    std::uint32_t length = 0;   ///< of Data: bytes of the message
    std::uint32_t sendSize = 0; ///< of Offer, as its sender sees the directions
    std::uint32_t receiveSize = 0;
    std::uint32_t sendSlots = 0;
    std::uint32_t receiveSlots = 0;
};
static_assert(sizeof(Packet) == 32);

/// The largest message of any channel: what a peer can make this process map.
inline constexpr std::uint32_t kMaxMessageSize = 64U << 20U;

inline constexpr std::uint32_t kMostSlots = 4;

/// Small channels take several messages, so that a peer may answer before it releases.
constexpr std::uint32_t SlotsFor(std::uint32_t messageSize) {
    return messageSize <= 65536 ? kMostSlots : 1;
}

/// How many descriptors travel with a packet of that kind.
constexpr std::size_t DescriptorsWith(PacketKind kind) {
    return kind == PacketKind::Offer ? 3 : 0;
}
inline constexpr std::size_t kMaxDescriptors = 3;

/// Milliseconds that a host waits until the worker has taken a channel.
inline constexpr std::uint32_t kTakeTime = 5000;

/// The packet that arrived as these bytes with so many descriptors; nothing when no honest peer
/// would have sent it. Slot and length depend on the channel and are checked there.
std::optional<Packet> ReadPacket(std::span<const std::byte> bytes, std::size_t descriptorCount);

enum class Traffic {
    Done,
    Nothing, ///< none has arrived, or the peer's queue is full
    Ended,   ///< no packet will come or go any more: closed, or what came was no packet
    Lost,    ///< one has arrived, but this process had no room for its descriptors
};

struct ReceivedPacket {
    Packet packet;
    std::array<platform::Descriptor, kMaxDescriptors> descriptors;
};

/// Sends a packet with copies of the descriptors, DescriptorsWith(packet.kind) of them.
Traffic SendPacketOn(int socket, const Packet& packet, std::span<const int> descriptors = {});
/// Descriptors of what is no packet are closed.
Traffic ReceivePacketFrom(int socket, ReceivedPacket& received);

/// A connected pair; empty on failure.
std::optional<std::pair<platform::Descriptor, platform::Descriptor>> MakeSocketPair();
/// True for a socket such as MakeSocketPair makes.
bool IsPacketSocket(int socket);
/// True when something has arrived, be it the end.
bool IsReadable(int socket);
/// True when so much is waiting for the peer that only answers to it should still be sent.
bool IsCrowded(int socket);

} // namespace nqp2::channel
