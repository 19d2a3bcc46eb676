// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/packet.h"
#include "channel/peer.h"
#include "platform/descriptor.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace nqp2::channel {

/// The memory of one direction of a channel: slots of one size in a memory file that both
/// processes map, and a page of notes behind them. The file can neither shrink nor grow, so that no
/// access can miss it.
class Segment {
public:
    /// Makes the memory for messages of 1 to kMaxMessageSize bytes; `file` becomes what the peer
    /// maps. Nothing on failure. Pages cost memory only once they are written to.
    static std::optional<Segment> Make(std::uint32_t messageSize, platform::Descriptor& file);

    /// Maps what a peer made. Nothing when the file is not exactly that, or could still be cut.
    static std::optional<Segment> Map(const platform::Descriptor& file, std::uint32_t messageSize);

    Segment(Segment&& other) noexcept
        : m_begin(std::exchange(other.m_begin, nullptr)), m_messageSize(other.m_messageSize) {}
    Segment& operator=(Segment&&) = delete;
    ~Segment();

    [[nodiscard]] std::uint32_t MessageSize() const { return m_messageSize; }
    [[nodiscard]] std::uint32_t SlotCount() const;
    [[nodiscard]] std::byte* Slot(std::uint32_t number) const;
    /// The slot that begins there.
    [[nodiscard]] std::optional<std::uint32_t> SlotAt(const void* address) const;

    // The notes: each is written by one end only, and what a peer writes there out of turn costs
    // its own messages.

    /// By the receiving end: the slot may be written again.
    void NoteRelease(std::uint32_t slot) const;
    /// How often that has been noted, modulo 2^32.
    [[nodiscard]] std::uint32_t ReleasesOf(std::uint32_t slot) const;
    /// By the sending end: how many Release packets it wants in all, modulo 2^32. One more than it
    /// has read while it waits for a slot, so that never two are unread.
    void NoteWanted(std::uint32_t packets) const;
    [[nodiscard]] std::uint32_t WantedPackets() const;

private:
    [[nodiscard]] std::atomic_ref<std::uint32_t> Note(std::uint32_t number) const;

    Segment(std::byte* begin, std::uint32_t messageSize)
        : m_begin(begin), m_messageSize(messageSize) {}

    std::byte* m_begin;
    std::uint32_t m_messageSize;
};

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
