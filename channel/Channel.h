// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "channel/SysInterface.h"
#include "platform/Export.h"

#include <cstdint>
#include <string>
#include <vector>

/// The channel functions that come with the library, for hosts without their own. A host:
///
///     nqp2::UseWorker({.program = "/usr/libexec/nqp2-worker"});
///     const nqp2::SystemInterface own = nqp2::HostInterface();
///     R8P2Parser_SetSysInterface(own.systemObject, own.table);
///
/// and a worker, whose arguments end in "--socket PATH":
///
///     nqp2::ListenForHosts(path);
///     const nqp2::SysInterfaceTable& table = *nqp2::WorkerInterface().table;
///     table.CreateChannel(20000, 0, 0, 0xFFFFFFFF, 0xFFFFFFFF); // waits for the next host
///
/// The functions here are safe from any thread, and so are the slots that open and close. On one
/// channel one thread at a time is between GetSendBuffer and SendPacket, and one between
/// ReceivePacket and ReleasePacket; these may be two.
namespace nqp2 {

/// Which worker a host uses: the one that listens on `socket`, else one that is started.
struct WorkerSettings {
    /// Path of the worker program. Empty: a worker must be listening already.
    std::string program = {};
    /// What the program is given before "--socket PATH".
    std::vector<std::string> arguments = {};
    /// Where the worker listens or is to listen, in a folder that nobody else can enter. Empty: a
    /// new place is made and removed again by LeaveWorker.
    std::string socket = {};
    /// How long a started worker may take until it listens.
    std::uint32_t startMilliseconds = 5000;
    /// The system ends the started worker when the thread that called UseWorker ends: for hosts
    /// that call it on a thread as long-lived as they are.
    bool endsWithThread = false;
};

struct [[nodiscard]] WorkerStatus {
    bool ready = false;
    std::string reason = {}; ///< for a person, when not ready

    explicit operator bool() const { return ready; }
};

/// The two pointers that R8P2Parser_SetSysInterface takes. Both live as long as the process.
struct SystemInterface {
    void* systemObject = nullptr; ///< never null; offers the worker no services
    SysInterfaceTable* table = nullptr;
};

/// Finds or starts the worker to which new channels of HostInterface lead. A worker that this
/// process started before is ended first. Channels that are open stay with their worker.
NQP2_API WorkerStatus UseWorker(const WorkerSettings& settings);

/// Ends the worker if this process started it: asks it to, and after two seconds makes it. Removes
/// what it left behind. New channels fail from here on.
NQP2_API void LeaveWorker();

/// The table of a host: slot 0 connects to the worker, slot 1 opens.
NQP2_API SystemInterface HostInterface() noexcept;

/// Begins to listen on a socket file of that name. Its folder must belong to the user and be closed
/// to everybody else. A file left by a worker that was killed is replaced; one on which somebody
/// listens is not. A process listens in one place at a time.
NQP2_API WorkerStatus ListenForHosts(const std::string& socket);

/// Removes the socket file; waiting CreateChannel calls return 0. Open channels stay open.
NQP2_API void StopListening();

/// The table of a worker: slot 0 waits (up to the receive time-out) for a host that connects with
/// that channel id, slot 1 for a channel that the host opens with that id beside the parent. Sizes
/// are the host's; what a worker passes for them is not used.
NQP2_API SystemInterface WorkerInterface() noexcept;

} // namespace nqp2
