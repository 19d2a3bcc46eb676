// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// What a channel's end reads from its socket, and what it tells of the slots.

#include "channel/channel_end.h"
#include "platform/wait.h"

#include <bit>
#include <sys/socket.h>

namespace nqp2::channel {
namespace {

constexpr std::size_t kMaxOffers = 64;

} // namespace

bool ChannelEnd::WaitForNews(Lock& lock, int milliseconds, const platform::Descriptor* bell) {
    if (m_isPolling) {
        if (milliseconds < 0) {
            m_changed.wait(lock);
        } else {
            m_changed.wait_for(lock, std::chrono::milliseconds(milliseconds));
        }
        return true;
    }
    m_isPolling = true;
    const Alertness::Clock::time_point alertUntil = m_alertness.Until();
    lock.unlock();
    pollfd watched[] = {{m_link.socket.Get(), POLLIN, 0},
                        {m_link.peer->Watch(), POLLIN, 0},
                        {bell != nullptr ? bell->Get() : -1, POLLIN, 0}};
    const auto isWatching = [&] {
        return alertUntil != Alertness::kNotAtAll && Alertness::Clock::now() < alertUntil;
    };
    const bool hasWatched = isWatching();
    bool hasNews = false;
    while (!hasNews && isWatching()) {
        hasNews = platform::Wait(watched, 0) != 0;
    }
    const bool hasPaid = hasNews;
    if (!hasNews) {
        hasNews = platform::Wait(watched, milliseconds) != 0;
    }
    lock.lock();
    if (hasWatched) {
        m_alertness.Learn(alertUntil, hasPaid);
    }
    m_isPolling = false;
    m_hasPeerEnded = m_hasPeerEnded || watched[1].revents != 0;
    m_changed.notify_all();
    return hasNews;
}

bool ChannelEnd::ReadOne() {
    if (m_isDead) {
        return false;
    }
    ReceivedPacket received;
    const Traffic traffic = ReceivePacketFrom(m_link.socket.Get(), received);
    if (traffic == Traffic::Nothing && !m_hasPeerEnded) {
        return false;
    }
    if (traffic == Traffic::Lost) {
        return true; // a sub-channel for which there is no room: its other end finds it closed
    }
    if (traffic != Traffic::Done || !Process(received)) {
        EndTraffic();
        return false;
    }
    return true;
}

bool ChannelEnd::Process(ReceivedPacket& received) {
    switch (received.packet.kind) {
    case PacketKind::Data:
        return ProcessData(received.packet);
    case PacketKind::Release:
        return ProcessRelease(received.packet);
    case PacketKind::Offer:
        return ProcessOffer(received);
    case PacketKind::Hello:
    case PacketKind::Acknowledge:
        break;
    }
    return false;
}

bool ChannelEnd::ProcessData(const Packet& packet) {
    if (packet.slot >= m_link.receive.SlotCount() || (m_arrived & BitOf(packet.slot)) != 0 ||
        packet.length > m_link.receive.MessageSize()) {
        return false;
    }
    m_arrived |= BitOf(packet.slot);
    m_messages.push_back({packet.id, packet.slot, packet.length});
    return true;
}

/// That the slot is free stands in the notes; the packet ends the wait for it.
bool ChannelEnd::ProcessRelease(const Packet& packet) {
    if (packet.slot >= m_link.send.SlotCount() || m_heard == m_asked) {
        return false;
    }
    ++m_heard;
    AskForRelease();
    return true;
}

/// A wait that the notes end, a time-out or a flag may leave a packet unread, or on its way. No
/// further one is asked for before that is read: packets cannot fill the queue, however many
/// waits end so, and whoever waits next reads it and asks again before falling asleep.
void ChannelEnd::AskForRelease() {
    if (m_slotWaiters > 0) {
        m_asked = m_heard + 1;
    }
    m_link.send.NoteWanted(m_slotWaiters > 0 ? m_asked : m_heard);
}

void ChannelEnd::CountSlotWaiters(int change) {
    m_slotWaiters += change;
    AskForRelease();
}

bool ChannelEnd::ReleaseSlots(std::uint32_t slots) {
    m_handedOut &= ~slots;
    m_arrived &= ~slots;
    bool told = !m_isDead;
    for (; slots != 0; slots &= slots - 1) {
        Packet packet;
        packet.kind = PacketKind::Release;
        packet.slot = static_cast<std::uint32_t>(std::countr_zero(slots));
        m_link.receive.NoteRelease(packet.slot);
        if (m_link.receive.WantedPackets() != m_told + 1) {
            continue;
        }
        ++m_told;
        const Traffic traffic = SendPacketOn(m_link.socket.Get(), packet);
        if (traffic == Traffic::Nothing) {
            // The peer might wait for ever. The queue has room for all that an honest peer can
            // cause (see IsCrowded).
            EndTraffic();
        }
        told = told && traffic == Traffic::Done;
    }
    return told;
}

std::optional<std::uint32_t> ChannelEnd::FreeSlot() const {
    for (std::uint32_t slot = 0; slot < m_link.send.SlotCount(); ++slot) {
        if (m_link.send.ReleasesOf(slot) == m_sent[slot]) {
            return slot;
        }
    }
    return std::nullopt;
}

bool ChannelEnd::ProcessOffer(ReceivedPacket& received) {
    if (m_role != Role::Takes || !IsPacketSocket(received.descriptors[0].Get())) {
        return false;
    }
    if (m_offers.size() == kMaxOffers || HasTooManyChannels(m_link.peer)) {
        return true; // refused: the peer finds the sub-channel closed
    }
    auto link = AcceptLink(received, std::move(received.descriptors[0]), m_link.peer);
    if (link) {
        m_offers.push_back({received.packet.id, std::move(*link)});
    }
    return link.has_value();
}

/// Memory stays until the handle is closed: messages that arrived are still given.
void ChannelEnd::EndTraffic() {
    m_isDead = true;
    shutdown(m_link.socket.Get(), SHUT_RDWR);
    m_changed.notify_all();
}

} // namespace nqp2::channel
