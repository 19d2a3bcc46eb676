// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/channel_end.h"
#include "NQP2ParserU/Channel.h"
#include "platform/descriptor.h"
#include "platform/process.h"

#include <memory>
#include <string>

/// How a host and a worker find each other: the host's line, and the file of a socket.
namespace nqp2::channel {

/// A host's lasting connection to its worker. Channels are offered on it, and by its end the worker
/// knows that the host is gone.
class Line {
public:
    Line(platform::Descriptor socket, std::shared_ptr<const Peer> worker)
        : m_socket(std::move(socket)), m_worker(std::move(worker)) {}
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;
    /// A child that the host forked leaves the line as it is.
    ~Line();

    /// Opens a channel and waits (five seconds at most) until the worker takes it. Null on failure.
    [[nodiscard]] std::shared_ptr<ChannelEnd> Connect(std::uint32_t channelId, Sizes sizes,
                                                      TimeOuts timeOuts) const;
    [[nodiscard]] int Socket() const { return m_socket.Get(); }

private:
    platform::Descriptor m_socket;
    std::shared_ptr<const Peer> m_worker;
    platform::Owner m_owner;
};

/// The line to the worker that listens there. Null with errno when there is none, or it is
/// another user's.
std::shared_ptr<const Line> LineTo(const std::string& path);

/// "WHAT: the system's words for errno". Call it before errno can change.
WorkerStatus Failure(const std::string& what);

/// Connects to the worker that listens there. Empty with errno without one; waits at most five
/// seconds for a listener that is slow to accept.
platform::Descriptor ConnectTo(const std::string& path);

/// Listens there. The folder must be a real one of the user's own with no rights for others.
WorkerStatus ListenOn(const std::string& path, platform::Descriptor& listener);

/// Removes the file of a socket on which no process listens any more.
void RemoveStaleSocket(const std::string& path);

} // namespace nqp2::channel
