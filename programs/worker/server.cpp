// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/server.h"

#include "bridge/messages.h"
#include "platform/guard.h"
#include "worker/channel_line.h"
#include "worker/session.h"

#include <system_error>
#include <utility>

namespace nqp2::worker {

void Server::Start() {
    m_sessions = std::thread([this] { Accept(bridge::kProxyChannelId, &Server::AddSession); });
    m_hosts = std::thread([this] { Accept(bridge::kRequestServerId, &Server::AddHost); });
}

void Server::Accept(std::uint32_t channelId, MakeService make) {
    for (;;) {
        const ChannelHandle handle = m_table.CreateChannel(channelId, 0, 0, kNoTimeout, kNoTimeout);
        if (handle == 0) {
            return; // no longer listening
        }
        JoinEnded();
        try {
            (this->*make)(handle);
        } catch (const std::exception&) {
            // Out of memory or threads: this library process is sent away, the others are served.
            ChannelHandle refused = handle;
            m_table.CloseChannel(&refused);
        }
    }
}

void Server::AddSession(ChannelHandle requests) {
    const auto session = std::make_shared<Session>(m_table, requests);
    Run([session] { session->Serve(); }, [session] { session->Stop(); });
}

void Server::AddHost(ChannelHandle server) {
    const auto line = std::make_shared<ChannelLine>(m_table, server);
    Run([line] { line->DropAll(); }, [line] { line->Close(); });
}

void Server::Run(std::function<void()> serve, std::function<void()> stop) {
    const std::lock_guard lock(m_mutex);
    Service& service = m_services.emplace_back();
    service.stop = std::move(stop);
    if (m_stopping) {
        service.stop();
    }
    try {
        service.thread = std::thread([this, &service, work = std::move(serve)]() mutable {
            // One that has no thread for its channels, or no memory, ends alone.
            platform::Guarded(false, [&] {
                work();
                return true;
            });
            work = nullptr;
            // What was served goes now, a running recording with it, not when the next host comes;
            // who joins this thread must not wait for the card of that one.
            std::function<void()> last;
            {
                const std::lock_guard ending(m_mutex);
                last.swap(service.stop);
            }
            last = nullptr;
            const std::lock_guard ending(m_mutex);
            service.ended = true;
        });
    } catch (const std::system_error&) {
        m_services.pop_back();
        throw;
    }
}

void Server::JoinEnded() {
    std::list<Service> ended;
    {
        const std::lock_guard lock(m_mutex);
        for (auto service = m_services.begin(); service != m_services.end();) {
            const auto current = service++;
            if (current->ended) {
                ended.splice(ended.end(), m_services, current);
            }
        }
    }
    for (Service& service : ended) {
        service.thread.join();
    }
}

void Server::Stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        for (const Service& service : m_services) {
            if (service.stop) {
                service.stop();
            }
        }
    }
    for (std::thread* accepting : {&m_sessions, &m_hosts}) {
        if (accepting->joinable()) {
            accepting->join();
        }
    }
    // Nobody adds to the list any more.
    for (Service& service : m_services) {
        service.thread.join();
    }
    m_services.clear();
}

} // namespace nqp2::worker
