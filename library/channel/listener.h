// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/channel_end.h"
#include "NQP2ParserU/Channel.h"
#include "platform/wait.h"

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace nqp2::channel {

/// Where hosts reach a worker: on the line to the one that started it, and at a socket file. A
/// thread of its own reads what they want, so that one that says nothing holds up no other.
class Listener {
public:
    /// Null, with the reason in `status`, when no host could reach it. With the line to its own
    /// host it does without a socket file that cannot be had; the reason is in `status` all the
    /// same.
    static std::unique_ptr<Listener> Start(const ListenSettings& settings, WorkerStatus& status);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// The next channel that a host opens with that id; null after the time-out or Stop.
    std::shared_ptr<ChannelEnd> Take(std::uint32_t channelId, TimeOuts timeOuts);
    /// Ends all waiting and removes the socket file.
    void Stop();

private:
    /// A host's line.
    struct HostLine {
        platform::Descriptor socket;
        std::shared_ptr<const Peer> peer;
        platform::Deadline deadline; ///< by which it says that it is one
        bool isGreeted;
    };
    /// A channel that no caller has taken.
    struct Offer {
        std::uint32_t channelId;
        Link link;
        platform::Deadline deadline; ///< after which its host has given up
    };

    Listener(const ListenSettings& settings, platform::Descriptor wake);

    bool AdoptHost(int descriptor);
    void Run();
    std::vector<pollfd> Watched();
    void Accept();
    /// Reads what has come and drops who is gone.
    void Hear();
    bool HearLine(HostLine& line);
    bool HearPacket(HostLine& line, ReceivedPacket& received);
    [[nodiscard]] bool IsFull() const;
    /// Neither a host nor a channel of one is left.
    bool IsAlone();
    void Wake();
    std::shared_ptr<ChannelEnd> Accept(Link link, std::uint32_t channelId, TimeOuts timeOuts);

    std::string m_path; ///< of the socket file; empty when there is none
    void (*const m_whenAlone)();
    platform::Descriptor m_socket;
    const platform::Descriptor m_wake;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isStopped = false;
    bool m_endsAlone = false; ///< a host started this process, which is not to outlive it
    std::list<HostLine> m_lines;
    std::list<Offer> m_offers;
    std::vector<std::weak_ptr<ChannelEnd>> m_taken; ///< kept while the last one is waited for
    std::thread m_thread;
};

} // namespace nqp2::channel
