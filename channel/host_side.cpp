// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/Channel.h"
#include "channel/connection.h"
#include "channel/handle_table.h"
#include "channel/rendezvous.h"
#include "channel/slots.h"
#include "channel/worker_process.h"
#include "platform/guard.h"

#include <cerrno>
#include <mutex>
#include <unistd.h>

namespace nqp2::channel {
namespace {

/// False with errno when nobody listens there, or somebody else's process does.
bool IsOwnWorkerAt(const std::string& path) {
    const platform::Descriptor socket = ConnectTo(path);
    if (socket && PeerOf(socket.Get()) == nullptr) {
        errno = EACCES;
        return false;
    }
    return static_cast<bool>(socket);
}

/// The worker of this process. Never destroyed: threads may outlive static objects.
class Worker {
public:
    static Worker& Instance() {
        static auto& worker = *new Worker;
        return worker;
    }

    WorkerStatus Use(const WorkerSettings& settings) {
        const std::lock_guard lock(m_changing);
        LeaveLocked();
        if (IsOwnWorkerAt(settings.socket)) {
            SetPath(settings.socket);
            return {true, {}};
        }
        if (settings.program.empty()) {
            return Failure("no worker at '" + settings.socket + '\'');
        }
        m_place = settings.socket.empty() ? MakeSocketPlace() : SocketPlace{settings.socket, {}};
        WorkerStatus status = m_place.path.empty() ? Failure("no place for a worker's socket")
                                                   : StartLocked(settings);
        if (status) {
            SetPath(m_place.path);
        } else {
            LeaveLocked();
        }
        return status;
    }

    void Leave() {
        const std::lock_guard lock(m_changing);
        LeaveLocked();
    }

    std::string Path() {
        const std::lock_guard lock(m_pathMutex);
        return m_path;
    }

private:
    WorkerStatus StartLocked(const WorkerSettings& settings) {
        std::vector<std::string> arguments = settings.arguments;
        arguments.insert(arguments.end(), {"--socket", m_place.path});
        WorkerStatus status =
            WorkerProcess::Start(settings.program, arguments, settings.endsWithThread, m_process);
        return status ? AwaitListening(settings) : status;
    }

    WorkerStatus AwaitListening(const WorkerSettings& settings) {
        constexpr int kPause = 2; // milliseconds; the pidfd cuts it short
        const Deadline deadline(settings.startMilliseconds);
        while (true) {
            // Asked first: another host's worker may have taken the place, and this one ended.
            const bool hasEnded = m_process.HasEnded(0);
            if (IsOwnWorkerAt(m_place.path)) {
                return {true, {}};
            }
            if (hasEnded) {
                return {false, settings.program + ": ended before it listened"};
            }
            if (deadline.HasPassed()) {
                return {false, settings.program + ": did not listen in time"};
            }
            static_cast<void>(m_process.HasEnded(deadline.Left(kPause)));
        }
    }

    void LeaveLocked() {
        SetPath({});
        if (m_process.IsOurs()) {
            m_process.End();
            // What a worker leaves that was killed.
            RemoveStaleSocket(m_place.path);
        }
        if (!m_place.madeFolder.empty()) {
            rmdir(m_place.madeFolder.c_str());
        }
        m_place = {};
    }

    void SetPath(const std::string& path) {
        const std::lock_guard lock(m_pathMutex);
        m_path = path;
    }

    std::mutex m_changing;
    WorkerProcess m_process;
    SocketPlace m_place;
    std::mutex m_pathMutex; ///< of its own, so that opening a channel never waits for a start
    std::string m_path;
};

ChannelHandle ConnectChannel(std::uint32_t channelId, std::uint32_t sendSize,
                             std::uint32_t receiveSize, std::uint32_t sendTimeout,
                             std::uint32_t receiveTimeout) {
    return platform::Guarded<ChannelHandle>(0, [&] {
        return AddChannel(Connect(Worker::Instance().Path(), channelId, {sendSize, receiveSize},
                                  {sendTimeout, receiveTimeout}));
    });
}

} // namespace
} // namespace nqp2::channel

namespace nqp2 {

WorkerStatus UseWorker(const WorkerSettings& settings) {
    return platform::Guarded(WorkerStatus{false, "out of memory"},
                             [&] { return channel::Worker::Instance().Use(settings); });
}

void LeaveWorker() {
    platform::Guarded(false, [] { // paths take memory
        channel::Worker::Instance().Leave();
        return true;
    });
}

SystemInterface HostInterface() noexcept {
    static int noServices = 0;
    static SysInterfaceTable table = channel::TableWith(channel::ConnectChannel);
    return {&noServices, &table};
}

} // namespace nqp2
