// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/channel_end.h"

#include "channel/abort_bell.h"
#include "channel/slots.h"
#include "platform/wait.h"

#include <algorithm>
#include <chrono>
#include <sys/socket.h>
#include <thread>

namespace nqp2::channel {
namespace {

constexpr int kAbortSlice = 20; ///< milliseconds until a host's abort flag is looked at again

bool AsksToAbort(std::int32_t* abortFlag) {
    return abortFlag != nullptr && IsSet(*abortFlag);
}

/// 0 means the parent's value.
std::uint32_t Or(std::uint32_t value, std::uint32_t parents) {
    return value != 0 ? value : parents;
}

} // namespace

ChannelEnd::ChannelEnd(Link link, Role role, TimeOuts timeOuts)
    : m_link(std::move(link)), m_role(role), m_timeOuts(timeOuts) {
    m_messages.reserve(m_link.receive.SlotCount());
}

ChannelStatus ChannelEnd::GetSendBuffer(void** buffer, std::int32_t* capacity,
                                        std::int32_t* abortFlag) {
    Lock lock(m_mutex);
    const ChannelStatus status = AwaitSlot(lock, abortFlag);
    if (status != kChannelDone) {
        return status;
    }
    m_isFilling = true;
    *buffer = m_link.send.Slot(*m_granted);
    *capacity = static_cast<std::int32_t>(m_link.send.MessageSize());
    return kChannelDone;
}

ChannelStatus ChannelEnd::Send(std::uint32_t messageId, const void* buffer, std::uint32_t length) {
    const Lock lock(m_mutex);
    m_isFilling = m_isFilling && buffer != m_link.send.Slot(*m_granted);
    if (m_isClosed || m_isDead) {
        return kChannelClosed;
    }
    if (!m_granted || buffer != m_link.send.Slot(*m_granted) ||
        length > m_link.send.MessageSize()) {
        return kChannelMisuse;
    }
    Packet packet;
    packet.kind = PacketKind::Data;
    packet.id = messageId;
    packet.slot = *m_granted;
    packet.length = length;
    switch (SendPacketOn(m_link.socket.Get(), packet)) {
    case Traffic::Done:
        break;
    case Traffic::Nothing:
        return kChannelTimedOut;
    case Traffic::Ended:
    case Traffic::Lost:
        return kChannelClosed;
    }
    ++m_sent[*m_granted];
    m_granted.reset();
    m_alertness.Begin();
    return kChannelDone;
}

ChannelStatus ChannelEnd::Receive(std::uint32_t* messageId, void** buffer, std::uint32_t* length,
                                  std::int32_t* abortFlag) {
    Lock lock(m_mutex);
    const ChannelStatus status =
        Await(lock, m_timeOuts.receive, abortFlag, [this] { return !m_messages.empty(); });
    if (status != kChannelDone) {
        return status;
    }
    const Message message = m_messages.front();
    m_messages.erase(m_messages.begin());
    m_handedOut |= BitOf(message.slot);
    *messageId = message.id;
    *buffer = m_link.receive.Slot(message.slot);
    *length = message.length;
    return kChannelDone;
}

ChannelStatus ChannelEnd::Release(const void* buffer) {
    const Lock lock(m_mutex);
    std::uint32_t slots = m_handedOut;
    if (buffer != nullptr) {
        const std::optional<std::uint32_t> slot = m_link.receive.SlotAt(buffer);
        slots &= slot ? BitOf(*slot) : 0;
        if (slots == 0) {
            return kChannelMisuse;
        }
    }
    return ReleaseSlots(slots) && !m_isClosed ? kChannelDone : kChannelClosed;
}

std::shared_ptr<ChannelEnd> ChannelEnd::SubChannel(std::uint32_t channelId, Sizes sizes,
                                                   TimeOuts timeOuts) {
    const TimeOuts resolved{Or(timeOuts.send, m_timeOuts.send),
                            Or(timeOuts.receive, m_timeOuts.receive)};
    return m_role == Role::Opens ? Open(channelId, sizes, resolved) : Take(channelId, resolved);
}

std::shared_ptr<ChannelEnd> ChannelEnd::Open(std::uint32_t channelId, Sizes sizes,
                                             TimeOuts timeOuts) {
    auto memory = MakeMemory(Or(sizes.send, m_link.send.MessageSize()),
                             Or(sizes.receive, m_link.receive.MessageSize()));
    auto ends = MakeSocketPair();
    if (!memory || !ends) {
        return nullptr;
    }
    const Packet packet = Describe(PacketKind::Offer, channelId, *memory);
    const int descriptors[] = {ends->second.Get(), memory->sendFile.Get(),
                               memory->receiveFile.Get()};
    // On a socket pair the system names the process that made it: the peer is the parent's.
    auto channel =
        std::make_shared<ChannelEnd>(Link{std::move(ends->first), m_link.peer,
                                          std::move(memory->send), std::move(memory->receive)},
                                     m_role, timeOuts);
    const Lock lock(m_mutex);
    const bool offered = !m_isClosed && !m_isDead && !IsCrowded(m_link.socket.Get()) &&
                         SendPacketOn(m_link.socket.Get(), packet, descriptors) == Traffic::Done;
    return offered ? channel : nullptr;
}

std::shared_ptr<ChannelEnd> ChannelEnd::Take(std::uint32_t channelId, TimeOuts timeOuts) {
    Lock lock(m_mutex);
    const auto wanted = [&] {
        return std::find_if(m_offers.begin(), m_offers.end(),
                            [&](const Offer& offer) { return offer.id == channelId; });
    };
    const ChannelStatus status =
        Await(lock, timeOuts.receive, nullptr, [&] { return wanted() != m_offers.end(); });
    if (status != kChannelDone) {
        return nullptr;
    }
    const auto offer = wanted();
    auto channel = std::make_shared<ChannelEnd>(std::move(offer->link), m_role, timeOuts);
    m_offers.erase(offer);
    return channel;
}

bool ChannelEnd::Acknowledge(std::uint32_t channelId) {
    Packet packet;
    packet.kind = PacketKind::Acknowledge;
    packet.id = channelId;
    return SendPacketOn(m_link.socket.Get(), packet) == Traffic::Done;
}

bool ChannelEnd::IsOver() const {
    const Lock lock(m_mutex);
    return m_isClosed && m_handedOut == 0 && !m_isFilling;
}

void ChannelEnd::Close() {
    const Lock lock(m_mutex);
    m_isClosed = true;
    shutdown(m_link.socket.Get(), SHUT_RDWR);
    m_changed.notify_all();
}

ChannelStatus ChannelEnd::AwaitSlot(Lock& lock, std::int32_t* abortFlag) {
    // A buffer that was granted and not sent is granted again: requests drop it when they fail. The
    // peer can change its notes at any time: what they say is looked at once.
    const auto hasSlot = [this] {
        if (!m_granted && !m_isClosed && !m_isDead) {
            m_granted = FreeSlot();
        }
        return m_granted && !m_isClosed && !m_isDead;
    };
    if (!hasSlot()) {
        // A peer that answers before it releases is about to, if it only may run.
        lock.unlock();
        std::this_thread::yield();
        lock.lock();
    }
    if (hasSlot()) {
        return kChannelDone;
    }
    // However it ends, in want of memory too: else each later release would cost a system call.
    const struct Waiting {
        explicit Waiting(ChannelEnd& waits) : end(waits) { end.CountSlotWaiters(1); }
        Waiting(const Waiting&) = delete;
        Waiting& operator=(const Waiting&) = delete;
        ~Waiting() { end.CountSlotWaiters(-1); }
        ChannelEnd& end;
    } waiting(*this);
    return Await(lock, m_timeOuts.send, abortFlag, hasSlot);
}

/// What is there is given before anything else is looked at: a flag that is set already ends
/// waiting and refuses nothing that needs no wait. A closed end gives nothing: else it
/// might never be over.
template <class Ready>
ChannelStatus ChannelEnd::Await(Lock& lock, std::uint32_t timeOut, std::int32_t* abortFlag,
                                Ready ready) {
    const platform::Deadline deadline(timeOut);
    std::shared_ptr<const platform::Descriptor> bell; // kept from look to look, until it rings
    bool mayHaveNews = true;
    while (!m_isClosed) {
        // While a thread polls, it alone reads: it would sleep on when another had taken from the
        // socket what it waits for.
        while (mayHaveNews && !ready() && !m_isPolling && ReadOne()) {
        }
        if (ready()) {
            return kChannelDone;
        }
        if (m_isDead) {
            break;
        }
        if (m_isPolling && IsReadable(m_link.socket.Get())) {
            // It is about to read, and tells us.
            m_changed.wait_for(lock, std::chrono::milliseconds(kAbortSlice));
            mayHaveNews = true;
            continue;
        }
        if (abortFlag != nullptr) {
            bell = AbortBell();
        }
        if (AsksToAbort(abortFlag)) {
            return kChannelAborted;
        }
        if (deadline.HasPassed()) {
            return kChannelTimedOut;
        }
        // Who polls for all may have no bell.
        const bool mustLook =
            abortFlag != nullptr && (m_isPolling || bell == nullptr || !IsRungFor(abortFlag));
        mayHaveNews = WaitForNews(lock, deadline.Left(mustLook ? kAbortSlice : -1), bell.get());
    }
    return kChannelClosed;
}

} // namespace nqp2::channel
