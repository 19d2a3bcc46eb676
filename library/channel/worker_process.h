// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/rendezvous.h"
#include "NQP2ParserU/Channel.h"
#include "platform/descriptor.h"
#include "platform/process.h"
#include "platform/wait.h"

#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace nqp2::channel {

/// A program that this process started. Signals of the host are not touched, and no child but this
/// one is ever waited for.
class WorkerProcess {
public:
    /// No process.
    WorkerProcess() = default;

    /// Runs a program in a process group of its own, with standard error, one end of a fresh line
    /// and nothing else that is open here, and waits until it says on the line that it is ready.
    static WorkerStatus Start(const std::string& program, std::vector<std::string> arguments,
                              std::uint32_t patience, WorkerProcess& process);

    /// The line to the program; null when none was started.
    [[nodiscard]] const std::shared_ptr<const Line>& TheLine() const { return m_line; }
    /// Hangs up, asks the program to end, makes it after two seconds, and waits two more. False
    /// when it has not ended even then. In a child that this process forked it only forgets it.
    bool End();
    /// Waits, as its parent, for a program that has ended; false when it has not.
    [[nodiscard]] bool HasLeft() const;

private:
    WorkerStatus Await(const std::string& program, const platform::Deadline& deadline) const;
    /// Waits that long; true when the process has ended by then.
    [[nodiscard]] bool HasEnded(int milliseconds) const;
    void Signal(int signal) const;
    /// Its number is its own while it is one.
    [[nodiscard]] bool IsRunningChild() const;

    pid_t m_number = 0;
    /// None where the system has no such descriptors.
    std::shared_ptr<const Peer> m_peer;
    std::shared_ptr<const Line> m_line;
    platform::Owner m_owner;
};

} // namespace nqp2::channel
