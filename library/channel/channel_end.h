// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/alertness.h"
#include "channel/link.h"
#include "NQP2ParserU/SysInterface.h"

#include <array>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace nqp2::channel {

/// Who connects opens sub-channels, who accepts takes them; sub-channels inherit that.
enum class Role { Opens, Takes };

struct TimeOuts {
    std::uint32_t send = 0; ///< milliseconds, as platform::Deadline takes them
    std::uint32_t receive = 0;
};

/// Message sizes of a channel as one end sees them.
struct Sizes {
    std::uint32_t send = 0;
    std::uint32_t receive = 0;
};

/// One end of an open channel, with the meaning of the slots. Any number of threads may be inside.
class ChannelEnd {
public:
    ChannelEnd(Link link, Role role, TimeOuts timeOuts);
    ChannelEnd(const ChannelEnd&) = delete;
    ChannelEnd& operator=(const ChannelEnd&) = delete;

    ChannelStatus GetSendBuffer(void** buffer, std::int32_t* capacity, std::int32_t* abortFlag);
    ChannelStatus Send(std::uint32_t messageId, const void* buffer, std::uint32_t length);
    ChannelStatus Receive(std::uint32_t* messageId, void** buffer, std::uint32_t* length,
                          std::int32_t* abortFlag);
    ChannelStatus Release(const void* buffer);

    /// Opens a sub-channel without waiting for the peer, or waits for the one that the peer opens
    /// with that id, as the role says. Sizes and time-outs of 0 are this channel's. Null on
    /// failure.
    std::shared_ptr<ChannelEnd> SubChannel(std::uint32_t channelId, Sizes sizes, TimeOuts timeOuts);

    /// Tells the host that opened it that it is taken; false when that one is gone.
    bool Acknowledge(std::uint32_t channelId);

    /// Ends all waiting on this end and tells the peer.
    void Close();
    /// It was closed, and every buffer that was handed out is back: received ones by Release,
    /// granted ones by Send, whatever these answer.
    [[nodiscard]] bool IsOver() const;

private:
    struct Message {
        std::uint32_t id;
        std::uint32_t slot;
        std::uint32_t length;
    };
    struct Offer {
        std::uint32_t id;
        Link link;
    };
    using Lock = std::unique_lock<std::mutex>;

    std::shared_ptr<ChannelEnd> Open(std::uint32_t channelId, Sizes sizes, TimeOuts timeOuts);
    std::shared_ptr<ChannelEnd> Take(std::uint32_t channelId, TimeOuts timeOuts);

    template <class Ready>
    ChannelStatus Await(Lock& lock, std::uint32_t timeOut, std::int32_t* abortFlag, Ready ready);
    /// Until a slot is granted.
    ChannelStatus AwaitSlot(Lock& lock, std::int32_t* abortFlag);
    /// Returns whether anything may have come.
    bool WaitForNews(Lock& lock, int milliseconds, const platform::Descriptor* bell);
    /// Reads one packet if one is there.
    bool ReadOne();
    /// False when no honest peer would have sent that.
    bool Process(ReceivedPacket& received);
    bool ProcessData(const Packet& packet);
    bool ProcessRelease(const Packet& packet);
    bool ProcessOffer(ReceivedPacket& received);
    bool ReleaseSlots(std::uint32_t slots);
    /// Whoever waits for a slot asks for the next Release packet, once all before it are read.
    void AskForRelease();
    void CountSlotWaiters(int change);
    /// One that may be granted.
    [[nodiscard]] std::optional<std::uint32_t> FreeSlot() const;
    void EndTraffic();

    const Link m_link;
    const Role m_role;
    const TimeOuts m_timeOuts;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isPolling = false; ///< one thread polls for all that wait
    bool m_isClosed = false;  ///< from this side
    bool m_isDead = false;    ///< no packet comes any more
    bool m_hasPeerEnded = false;
    Alertness m_alertness;

    // Slots as bits.
    static constexpr std::uint32_t BitOf(std::uint32_t slot) { return 1U << slot; }
    std::uint32_t m_arrived = 0; ///< hold messages, handed out or not
    std::uint32_t m_handedOut = 0;
    std::optional<std::uint32_t> m_granted;
    std::array<std::uint32_t, kMostSlots> m_sent{}; ///< messages so far in each slot
    int m_slotWaiters = 0;
    // Release packets, modulo 2^32.
    std::uint32_t m_asked = 0; ///< of the peer, ever
    std::uint32_t m_heard = 0; ///< that the peer sent
    std::uint32_t m_told = 0;  ///< sent to the peer
    bool m_isFilling = false;  ///< whoever was granted it may still be writing

    std::vector<Message> m_messages; ///< arrived, not handed out
    std::list<Offer> m_offers;
};

} // namespace nqp2::channel
