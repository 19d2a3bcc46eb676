// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/listener.h"

#include "channel/rendezvous.h"

#include <algorithm>
#include <cerrno>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace nqp2::channel {
namespace {

constexpr std::uint32_t kHelloTime = 1000; ///< milliseconds for a connection to say what it wants
constexpr std::size_t kMaxVisitors = 64;   ///< the rest waits in the system's queue
/// How often deadlines are looked at, and a connection for which there was no descriptor.
constexpr int kTick = 50;

} // namespace

std::unique_ptr<Listener> Listener::Start(const std::string& path, WorkerStatus& status) {
    platform::Descriptor socket;
    status = ListenOn(path, socket);
    if (!status) {
        return nullptr;
    }
    platform::Descriptor wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wake) {
        status = Failure(path);
        unlink(path.c_str());
        return nullptr;
    }
    std::unique_ptr<Listener> listener(new Listener(path, std::move(socket), std::move(wake)));
    listener->m_thread = std::thread([raw = listener.get()] { raw->Run(); });
    return listener;
}

Listener::Listener(std::string path, platform::Descriptor socket, platform::Descriptor wake)
    : m_path(std::move(path)), m_socket(std::move(socket)), m_wake(std::move(wake)) {}

Listener::~Listener() {
    Stop();
}

void Listener::Stop() {
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_isStopped, true)) {
            return;
        }
    }
    m_changed.notify_all();
    Wake();
    if (m_thread.joinable()) {
        m_thread.join();
    }
    m_visitors.clear();
    unlink(m_path.c_str());
    m_socket = {};
}

void Listener::Wake() {
    eventfd_write(m_wake.Get(), 1);
}

std::shared_ptr<ChannelEnd> Listener::Take(std::uint32_t channelId, TimeOuts timeOuts) {
    const platform::Deadline deadline(timeOuts.receive);
    std::unique_lock lock(m_mutex);
    while (!m_isStopped) {
        const auto visitor =
            std::find_if(m_visitors.begin(), m_visitors.end(), [&](const Visitor& candidate) {
                return candidate.link && candidate.channelId == channelId;
            });
        if (visitor != m_visitors.end()) {
            Link link = std::move(*visitor->link);
            m_visitors.erase(visitor);
            Wake(); // there is room for another
            Packet acknowledge;
            acknowledge.kind = PacketKind::Acknowledge;
            acknowledge.id = channelId;
            if (SendPacketOn(link.socket.Get(), acknowledge) == Traffic::Done) {
                return std::make_shared<ChannelEnd>(std::move(link), Role::Takes, timeOuts);
            }
        } else if (deadline.HasPassed()) {
            break;
        } else if (const int left = deadline.Left(); left < 0) {
            m_changed.wait(lock);
        } else {
            m_changed.wait_for(lock, std::chrono::milliseconds(left));
        }
    }
    return nullptr;
}

void Listener::Run() {
    while (true) {
        std::vector<pollfd> watched = {{m_wake.Get(), POLLIN, 0}};
        {
            const std::lock_guard lock(m_mutex);
            if (m_isStopped) {
                return;
            }
            for (const Visitor& visitor : m_visitors) {
                const auto& socket = visitor.link ? visitor.link->socket : visitor.socket;
                watched.push_back({socket.Get(), POLLIN, 0});
            }
        }
        const bool hasVisitors = watched.size() > 1;
        if (watched.size() <= kMaxVisitors) {
            watched.push_back({m_socket.Get(), POLLIN, 0});
        }
        platform::Wait(watched, hasVisitors ? kTick : -1);
        eventfd_t ignored = 0;
        eventfd_read(m_wake.Get(), &ignored);
        Hear();
        if (watched.back().fd == m_socket.Get() && watched.back().revents != 0) {
            Accept();
        }
    }
}

void Listener::Accept() {
    platform::Descriptor socket(accept4(m_socket.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!socket) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
            // The connection stays in the queue and would be found again at once.
            platform::Wait({}, kTick);
        }
        return;
    }
    std::shared_ptr<const Peer> peer = PeerOf(socket.Get());
    if (peer != nullptr) {
        const std::lock_guard lock(m_mutex);
        m_visitors.push_back(
            {std::move(socket), std::move(peer), platform::Deadline(kHelloTime), 0, {}});
    }
}

void Listener::Hear() {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_visitors, [](Visitor& visitor) { return !HearOne(visitor); });
    m_changed.notify_all();
}

bool Listener::HearOne(Visitor& visitor) {
    if (visitor.link) {
        // Nothing may come before the answer but the end.
        return !IsReadable(visitor.link->socket.Get()) && !visitor.link->peer->HasEnded();
    }
    ReceivedPacket received;
    const Traffic traffic = ReceivePacketFrom(visitor.socket.Get(), received);
    if (traffic == Traffic::Nothing) {
        return !visitor.deadline.HasPassed();
    }
    if (traffic == Traffic::Ended || received.packet.kind != PacketKind::Hello) {
        return false;
    }
    visitor.channelId = received.packet.id;
    auto link = AcceptLink(received, std::move(visitor.socket), std::move(visitor.peer));
    if (link) {
        visitor.link.emplace(std::move(*link));
    }
    return link.has_value();
}

} // namespace nqp2::channel
