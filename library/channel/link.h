// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/packet_socket.h"
#include "channel/peer.h"
#include "channel/segment.h"

#include <memory>
#include <optional>

namespace nqp2::channel {

/// What one end of a channel is made of.
struct Link {
    platform::Descriptor socket;
    std::shared_ptr<const Peer> peer;
    Segment send;
    Segment receive;
};

/// The memory of both directions, not yet shared.
struct SharedMemory {
    Segment send;
    Segment receive;
    platform::Descriptor sendFile;
    platform::Descriptor receiveFile;
};

/// Nothing when a size is 0 or above kMaxMessageSize, or the system has no room.
std::optional<SharedMemory> MakeMemory(std::uint32_t sendSize, std::uint32_t receiveSize);

/// The packet that describes the memory to the peer.
Packet Describe(PacketKind kind, std::uint32_t channelId, const SharedMemory& memory);

/// The end that an Offer describes; its last two descriptors are the memory. Nothing when
/// the memory is not what the packet promises.
std::optional<Link> AcceptLink(ReceivedPacket& received, platform::Descriptor socket,
                               std::shared_ptr<const Peer> peer);

} // namespace nqp2::channel
