// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/SysInterface.h"

#include <cstdint>
#include <string>
#include <vector>

/// @file
/// The channel functions that come with the library, for hosts without their own. A host:
///
///     nqp2::UseWorker({.program = "/usr/libexec/nqp2-worker"});
///     const nqp2::SystemInterface own = nqp2::HostInterface();
///     R8P2Parser_SetSysInterface(own.systemObject, own.table);
///
/// and a worker, whose arguments end in "--host NUMBER":
///
///     nqp2::ListenForHosts({.hostDescriptor = number, .whenAlone = end});
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
    /// What the program is given before "--socket PATH", if there is one, and "--host NUMBER".
    std::vector<std::string> arguments = {};
    /// Where the worker listens or is to listen for other hosts, in a folder that no other user can
    /// enter. Empty: a worker of this process's own is started, and needs no file.
    std::string socket = {};
    /// How long a started worker may take until it is ready.
    std::uint32_t startMilliseconds = 5000;
};

/// What became of beginning with a worker, on either side.
struct [[nodiscard]] WorkerStatus {
    bool ready = false;      ///< whether it can be used
    std::string reason = {}; ///< for a person, when not ready or not wholly

    /// The same as `ready`.
    explicit operator bool() const { return ready; }
};

/// The two pointers that R8P2Parser_SetSysInterface takes. Both live as long as the process.
struct SystemInterface {
    void* systemObject = nullptr;       ///< never null; offers the worker no services
    SysInterfaceTable* table = nullptr; ///< the ten functions; never null
};

/// Finds or starts the worker to which new channels of HostInterface lead. A worker that this
/// process started before is ended first. Channels that are open stay with their worker. A started
/// worker ends when the last host is gone that uses it, however that ended.
NQP2_API WorkerStatus UseWorker(const WorkerSettings& settings);

/// Ends the worker if this process started it: asks it to, and after two seconds makes it. One that
/// the system holds even then is given up after two more. New channels fail from here on.
NQP2_API void LeaveWorker();

/// The table of a host: slot 0 connects to the worker, slot 1 opens.
NQP2_API SystemInterface HostInterface() noexcept;

/// How hosts reach a worker.
struct ListenSettings {
    /// The NUMBER of "--host NUMBER": the line to the host that started this process. Negative:
    /// none.
    int hostDescriptor = -1;
    /// A file for other hosts to connect to. Its folder must belong to the user and be closed to
    /// everybody else. A file left by a worker that was killed is replaced; one on which another
    /// process listens is not. Empty: none.
    std::string socket = {};
    /// Called once, on a thread of the library, when a host had started this process and now
    /// neither a host nor an open channel of one is left. May be null.
    void (*whenAlone)() = nullptr;
};

/// Begins to listen. A socket file that cannot be had is no failure when there is the line to a
/// host; the status then has the reason. A process listens once at a time.
NQP2_API WorkerStatus ListenForHosts(const ListenSettings& settings);
/// The same for a socket file alone.
inline WorkerStatus ListenForHosts(const std::string& socket) {
    return ListenForHosts({-1, socket, nullptr});
}

/// Removes the socket file; waiting CreateChannel calls return 0. Open channels stay open.
NQP2_API void StopListening();

/// The table of a worker: slot 0 waits (up to the receive time-out) for a host that connects with
/// that channel id, slot 1 for a channel that the host opens with that id beside the parent. Sizes
/// are the host's; what a worker passes for them is not used.
NQP2_API SystemInterface WorkerInterface() noexcept;

} // namespace nqp2
