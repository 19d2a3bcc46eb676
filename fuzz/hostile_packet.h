// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace nqp2::fuzz {

/// The size of the memory that comes with some packets.
inline constexpr std::uint32_t kSegmentSize = 4096;

/// Bytes that describe a packet: one for what the target does with it, one for its length, one for
/// each of up to three descriptors, one for how many, two of padding, and the packet.
inline constexpr std::size_t kPacketStep = 40;

/// Sends what the bytes describe, with good, bad and no descriptors.
void SendHostilePacket(int socket, std::span<const std::uint8_t, kPacketStep> step);

} // namespace nqp2::fuzz
