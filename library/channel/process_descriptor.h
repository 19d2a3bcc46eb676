// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/descriptor.h"

#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

/// The system's calls on processes as descriptors. Called by number: the C library's header declares
/// them only since 2.36, and there not for C++.
namespace nqp2::channel {

/// Becomes readable when the process has ended. Empty with errno when there is no such process.
inline platform::Descriptor OpenProcess(pid_t process) {
    return platform::Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0U)));
}

/// False with errno, which is ESRCH when the process has ended and was waited for.
inline bool SignalProcess(int process, int signal) {
    return syscall(SYS_pidfd_send_signal, process, signal, nullptr, 0U) == 0;
}

} // namespace nqp2::channel
