// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/rendezvous.h"
#include "channel/slots.h"
#include "channel/worker_process.h"
#include "NQP2ParserU/Channel.h"
#include "platform/guard.h"

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace nqp2::channel {
namespace {

/// What this process uses of a worker.
struct Use {
    std::shared_ptr<const Line> line;
    WorkerProcess process; ///< that it started for this
    std::string socket;    ///< where that one listens as well; or empty
};

/// The worker of this process. Nothing is waited for under its lock. Never destroyed: threads may
/// outlive static objects.
class Worker {
public:
    static Worker& Instance() {
        static auto& worker = *new Worker;
        return worker;
    }

    WorkerStatus Begin(const WorkerSettings& settings) {
        Leave();
        Use found;
        const WorkerStatus status = Find(settings, found);
        if (status) {
            found = Exchange(std::move(found)); // another thread's, from meanwhile
        }
        End(std::move(found));
        return status;
    }

    void Leave() { End(Exchange({})); }

    std::shared_ptr<const Line> CurrentLine() {
        const std::lock_guard lock(m_mutex);
        return m_use.line;
    }

private:
    static WorkerStatus Find(const WorkerSettings& settings, Use& use) {
        use.line = LineTo(settings.socket);
        if (use.line != nullptr) {
            return {true, {}};
        }
        if (settings.program.empty()) {
            return Failure("no worker at '" + settings.socket + '\'');
        }
        std::vector<std::string> arguments = settings.arguments;
        if (!settings.socket.empty()) {
            arguments.insert(arguments.end(), {"--socket", settings.socket});
        }
        use.socket = settings.socket;
        WorkerStatus status = WorkerProcess::Start(settings.program, std::move(arguments),
                                                   settings.startMilliseconds, use.process);
        use.line = use.process.TheLine();
        return status;
    }

    Use Exchange(Use use) {
        const std::lock_guard lock(m_mutex);
        std::swap(m_use, use);
        return use;
    }

    /// A worker that does not end is left to the system, and waited for when it has ended.
    void End(Use use) {
        use.line.reset();
        const bool hasEnded = use.process.End();
        if (!use.socket.empty()) {
            RemoveStaleSocket(use.socket); // what a worker leaves that was killed
        }
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_lost, [](const WorkerProcess& process) { return process.HasLeft(); });
        if (!hasEnded) {
            m_lost.push_back(std::move(use.process));
        }
    }

    std::mutex m_mutex;
    Use m_use;
    std::vector<WorkerProcess> m_lost;
};

ChannelHandle ConnectChannel(std::uint32_t channelId, std::uint32_t sendSize,
                             std::uint32_t receiveSize, std::uint32_t sendTimeout,
                             std::uint32_t receiveTimeout) {
    return platform::Guarded<ChannelHandle>(0, [&]() -> ChannelHandle {
        const std::shared_ptr<const Line> line = Worker::Instance().CurrentLine();
        return line != nullptr ? AddChannel(line->Connect(channelId, {sendSize, receiveSize},
                                                          {sendTimeout, receiveTimeout}))
                               : 0;
    });
}

} // namespace
} // namespace nqp2::channel

namespace nqp2 {

WorkerStatus UseWorker(const WorkerSettings& settings) {
    return platform::Guarded(WorkerStatus{false, "out of memory"},
                             [&] { return channel::Worker::Instance().Begin(settings); });
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
