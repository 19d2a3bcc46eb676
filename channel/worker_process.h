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

    [[nodiscard]] bool HasStarted() const { return static_cast<bool>(m_process); }
    /// Waits that long; true when the process has ended by then.
    [[nodiscard]] bool HasEnded(int milliseconds) const;
    /// Asks it to end, makes it after two seconds, and takes leave of it as its parent.
    void End();

private:
    explicit WorkerProcess(platform::Descriptor process) : m_process(std::move(process)) {}

    platform::Descriptor m_process;
};

} // namespace nqp2::channel
