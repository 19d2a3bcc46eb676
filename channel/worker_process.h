// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/Channel.h"
#include "platform/descriptor.h"

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
    WorkerProcess(WorkerProcess&& other) noexcept = default;
    WorkerProcess& operator=(WorkerProcess&& other) noexcept = default;
    ~WorkerProcess() { End(); }

    /// Runs a program in a process group of its own, with standard error and nothing else that is
    /// open here. With `endsWithThread` it is ended when the calling thread ends.
    static WorkerStatus Start(const std::string& program, const std::vector<std::string>& arguments,
                              bool endsWithThread, WorkerProcess& process);

    /// False in a child that this process forked: the program is its parent's to end.
    [[nodiscard]] bool IsOurs() const;
    /// Waits that long; true when the process has ended by then.
    [[nodiscard]] bool HasEnded(int milliseconds) const;
    /// Asks it to end, makes it after two seconds, and takes leave of it as its parent.
    void End();

private:
    explicit WorkerProcess(platform::Descriptor process);

    platform::Descriptor m_process;
    pid_t m_starter = 0;
};

} // namespace nqp2::channel
