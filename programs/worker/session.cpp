// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/session.h"

#include "bridge/messages.h"
#include "platform/guard.h"

#include <functional>
#include <optional>
#include <thread>
#include <utility>

namespace nqp2::worker {
namespace {

using bridge::MessageId;

void TakeCallback(ChannelLine& line, ProgressLink& progress, std::uint32_t id,
                  unsigned char* buffer, std::int32_t length) {
    bridge::ProgressMessage answer;
    if (id == Number(MessageId::RegisterProgress)) {
        progress.Attach(line);
    } else if (id == Number(MessageId::Progress) && answer.Restore(buffer, length) != 0) {
        progress.Answered(answer.abort != 0);
    }
}

/// Whatever is thrown there, running out of memory included, ends what it does and no more.
void RunQuietly(const std::function<void()>& work) {
    platform::Guarded(false, [&] {
        work();
        return true;
    });
}

/// A thread that is waited for at the end. Throws when the system has none to give.
class JoinedThread {
public:
    explicit JoinedThread(std::function<void()> work)
        : m_thread([run = std::move(work)] { RunQuietly(run); }) {}
    JoinedThread(const JoinedThread&) = delete;
    JoinedThread& operator=(const JoinedThread&) = delete;
    ~JoinedThread() { m_thread.join(); }

private:
    std::thread m_thread;
};

} // namespace

void Session::ServeRequests() {
    // The reply's buffer is asked for when the work is done: a host that leaves meanwhile, or an
    // end of the worker, finds nothing of it in use.
    const auto answer = [&](std::uint32_t id, unsigned char* request, std::int32_t length) {
        m_requests.Send(id, Dispatch(m_operations, id, request, length));
    };
    while (m_requests.Receive(answer)) {
    }
}

void Session::ServeCallbacks() {
    if (!m_callbacks.TakeBeside(m_requests, bridge::kProxyChannelId, kNoTimeout)) {
        return;
    }
    const auto take = [&](std::uint32_t id, unsigned char* buffer, std::int32_t length) {
        TakeCallback(m_callbacks, m_progress, id, buffer, length);
    };
    std::optional<JoinedThread> server;
    RunQuietly([&] { // a session does without
        server.emplace([this] {
            if (m_server.TakeBeside(m_callbacks, bridge::kRequestServerId, kNoTimeout)) {
                m_server.DropAll();
            }
        });
    });
    while (m_callbacks.Receive(take)) {
    }
    EndCallbacks();
}

/// A transfer that is under way learns here that the host has gone.
void Session::EndCallbacks() {
    m_progress.Detach();
    m_callbacks.Close();
}

void Session::Serve() {
    const JoinedThread callbacks([this] {
        RunQuietly([this] { ServeCallbacks(); });
        EndCallbacks();
    });
    ServeRequests();
    Stop();
}

void Session::Stop() {
    m_progress.Stop();
    m_requests.Close();
    m_callbacks.Close();
    m_server.Close();
}

} // namespace nqp2::worker
