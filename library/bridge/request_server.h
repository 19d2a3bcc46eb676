// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/channel_port.h"
#include "platform/process.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace nqp2::bridge {

/// For a process that was forked from the thread's: takes it as it is, for it is not there.
void ForgetThreadOfParent(std::thread thread);

/// A thread that serves until its stop flag is set.
class ServiceThread {
public:
    ServiceThread() = default;
    ServiceThread(const ServiceThread&) = delete;
    ServiceThread& operator=(const ServiceThread&) = delete;

    /// Runs `body` once; nothing that it throws leaves the thread. Throws std::system_error when
    /// the system has no thread to give.
    template <class Body>
    void Start(Body body) {
        m_hasEnded = false;
        m_thread = std::thread([this, run = std::move(body)] {
            const EndMark mark(*this);
            RunQuietly(run);
        });
    }

    /// Sets the flag until the thread ends, which clears it when it begins. Returns at once when
    /// none was started, or by another process of which this is a fork: the thread is not here.
    void Stop(std::int32_t& stopFlag);

    [[nodiscard]] bool HasEnded();

private:
    /// Tells of the end of the thread, however it comes.
    class EndMark {
    public:
        explicit EndMark(ServiceThread& thread) : m_owner(thread) {}
        EndMark(const EndMark&) = delete;
        EndMark& operator=(const EndMark&) = delete;
        ~EndMark() { m_owner.MarkEnded(); }

    private:
        ServiceThread& m_owner;
    };

    template <class Body>
    static void RunQuietly(const Body& body) noexcept {
        try {
            body();
        } catch (...) { // out of memory: the service ends, the host goes on
        }
    }
    void MarkEnded();
    bool WaitForEnd(std::chrono::milliseconds limit);

    std::mutex m_lock;
    std::condition_variable m_end;
    bool m_hasEnded = true;
    std::thread m_thread;
    platform::Owner m_owner;
};

class RequestConnection;

/// Lets the worker ask the host for services: listens on a channel of its own, and gives each
/// connection that the worker asks for a channel and a thread.
class RequestServer {
public:
    /// A running server beside `parent` (0: on a channel of its own); null without memory or
    /// threads. Parent and table must outlive it.
    static std::unique_ptr<RequestServer> Start(const SysInterfaceTable* table,
                                                ChannelHandle parent);
    RequestServer(const RequestServer&) = delete;
    RequestServer& operator=(const RequestServer&) = delete;
    /// Stops and waits for all threads of the server, then closes its channels. In a process that
    /// was forked from the server's it does neither.
    ~RequestServer();

private:
    RequestServer(const SysInterfaceTable* table, ChannelHandle parent);

    void Run();
    [[nodiscard]] ChannelHandle Open() const;
    bool Announce();
    Heard HearOne();
    bool Accept(const ReceivedMessage& request);
    bool HasRoom();

    std::list<std::unique_ptr<RequestConnection>> m_connections; ///< of the server's thread
    const SysInterfaceTable* m_table;
    ChannelHandle m_parent;
    OwnedChannel m_channel;
    std::int32_t m_stop = 0;
    ServiceThread m_thread;
};

} // namespace nqp2::bridge
