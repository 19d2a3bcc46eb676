// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/SysInterface.h"

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace nqp2::worker {

/// Accepts library processes on a socket and serves each parser on threads of its own.
class Server {
public:
    explicit Server(const SysInterfaceTable& table) : m_table(table) {}
    ~Server() { Stop(); }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Begins to accept; the table's side must be listening.
    void Start();
    /// Ends everything that is under way and waits for it; the table's side must no longer listen.
    void Stop();

private:
    /// Something that serves one channel.
    struct Service {
        std::function<void()> stop;
        std::thread thread;
        bool ended = false;
    };
    using MakeService = void (Server::*)(ChannelHandle);

    void Accept(std::uint32_t channelId, MakeService make);
    void AddSession(ChannelHandle requests);
    /// Takes the request server of a library process, of which nothing is needed.
    void AddHost(ChannelHandle server);
    void Run(std::function<void()> serve, std::function<void()> stop);
    void JoinEnded();

    const SysInterfaceTable& m_table;
    std::mutex m_mutex;
    std::list<Service> m_services;
    bool m_stopping = false;
    std::thread m_sessions;
    std::thread m_hosts;
};

} // namespace nqp2::worker
