// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/descriptor.h"

#include <memory>
#include <sys/types.h>

namespace nqp2::channel {

/// The process at the other end, shared by all channels that lead there.
class Peer {
public:
    explicit Peer(platform::Descriptor process) : m_process(std::move(process)) {}

    /// Becomes readable when the process has ended. A socket alone does not tell: a child that the
    /// process forked may hold it open. Negative where the system has no such descriptors.
    [[nodiscard]] int Watch() const { return m_process.Get(); }
    [[nodiscard]] bool HasEnded() const;

private:
    platform::Descriptor m_process;
};

/// The process of that number, which must be running. Null with errno on failure.
std::shared_ptr<const Peer> PeerWithNumber(pid_t number);

/// True when that many lead there that no honest peer can need more.
bool HasTooManyChannels(const std::shared_ptr<const Peer>& peer);

/// The process that connected this socket or listens behind it. Null when it belongs to another
/// user, is gone, or has too many channels.
std::shared_ptr<const Peer> PeerOf(int connectedSocket);

/// Becomes readable when the process has ended. Empty with errno when there is no such process.
platform::Descriptor OpenProcess(pid_t process);

/// Signals the process behind a descriptor of OpenProcess. False with errno, which is ESRCH when it
/// has ended and was waited for.
bool SignalProcess(int process, int signal);

} // namespace nqp2::channel
