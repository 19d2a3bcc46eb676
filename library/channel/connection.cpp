// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/connection.h"

#include "channel/rendezvous.h"
#include "platform/wait.h"

#include <cerrno>
#include <sys/socket.h>

namespace nqp2::channel {
namespace {

using platform::Deadline;

/// A line on which many channels are being opened may have no room for a moment.
bool Offer(int line, const Packet& offer, std::span<const int> descriptors,
           const Deadline& deadline) {
    constexpr int kPause = 2; // milliseconds
    Traffic traffic = SendPacketOn(line, offer, descriptors);
    while (traffic == Traffic::Nothing && !deadline.HasPassed()) {
        platform::Wait({}, deadline.Left(kPause));
        traffic = SendPacketOn(line, offer, descriptors);
    }
    return traffic == Traffic::Done;
}

bool IsAcknowledged(int socket, const Peer& peer, std::uint32_t channelId,
                    const Deadline& deadline) {
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

Line::~Line() {
    if (m_owner.IsThisProcess()) {
        // Children that the host forked may hold copies.
        shutdown(m_socket.Get(), SHUT_RDWR);
    }
}

std::shared_ptr<ChannelEnd> Line::Connect(std::uint32_t channelId, Sizes sizes,
                                          TimeOuts timeOuts) const {
    auto memory = MakeMemory(sizes.send, sizes.receive);
    auto ends = MakeSocketPair();
    if (!memory || !ends) {
        return nullptr;
    }
    const Deadline deadline(kTakeTime);
    const int descriptors[] = {ends->second.Get(), memory->sendFile.Get(),
                               memory->receiveFile.Get()};
    const bool isOffered = Offer(m_socket.Get(), Describe(PacketKind::Offer, channelId, *memory),
                                 descriptors, deadline);
    // The end of the worker, or its refusal, must show on the other one.
    ends->second = {};
    if (!isOffered || !IsAcknowledged(ends->first.Get(), *m_worker, channelId, deadline)) {
        return nullptr;
    }
    return std::make_shared<ChannelEnd>(
        Link{std::move(ends->first), m_worker, std::move(memory->send), std::move(memory->receive)},
        Role::Opens, timeOuts);
}

std::shared_ptr<const Line> LineTo(const std::string& path) {
    platform::Descriptor socket = ConnectTo(path);
    if (!socket) {
        return nullptr;
    }
    // Who answers later was alive now, so the number that the system names is still its own.
    std::shared_ptr<const Peer> worker = PeerOf(socket.Get());
    if (worker == nullptr || SendPacketOn(socket.Get(), Packet()) != Traffic::Done) {
        errno = EACCES;
        return nullptr;
    }
    return std::make_shared<const Line>(std::move(socket), std::move(worker));
}

} // namespace nqp2::channel
