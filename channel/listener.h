// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/Channel.h"
#include "channel/channel_end.h"
#include "platform/wait.h"

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace nqp2::channel {

/// Where a worker listens. A thread of its own accepts connections and reads what they ask for, so
/// that one that says nothing holds up no other.
class Listener {
public:
    /// Null, with the reason in `status`, when it cannot listen there.
    static std::unique_ptr<Listener> Start(const std::string& path, WorkerStatus& status);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// The next host that connects with that id; null after the time-out or Stop.
    std::shared_ptr<ChannelEnd> Take(std::uint32_t channelId, TimeOuts timeOuts);
    /// Ends all waiting and removes the socket file.
    void Stop();

private:
    /// A connection that no caller has taken.
    struct Visitor {
        platform::Descriptor socket;
        std::shared_ptr<const Peer> peer;
        platform::Deadline deadline;
        std::uint32_t channelId = 0;
        std::optional<Link> link; ///< once it has said what it wants; holds the socket then
    };
    using Visitors = std::list<Visitor>;

    Listener(std::string path, platform::Descriptor socket, platform::Descriptor wake);

    void Run();
    void Accept();
    void Hear();
    /// False when the visitor is to be dropped.
    static bool HearOne(Visitor& visitor);
    void Wake();

    const std::string m_path;
    platform::Descriptor m_socket;
    const platform::Descriptor m_wake;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isStopped = false;
    Visitors m_visitors; ///< only the thread adds
    std::thread m_thread;
};

} // namespace nqp2::channel
