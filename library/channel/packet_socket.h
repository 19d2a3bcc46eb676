// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/packet.h"
#include "platform/descriptor.h"

#include <array>
#include <optional>
#include <span>
#include <utility>

/// Packets over sockets that keep message borders. Nothing here blocks.
namespace nqp2::channel {

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
