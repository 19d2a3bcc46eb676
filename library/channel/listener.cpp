// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/listener.h"

#include "channel/rendezvous.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace nqp2::channel {
namespace {

constexpr std::uint32_t kHelloTime = 1000; ///< milliseconds for a connection to say what it wants
constexpr std::size_t kMaxWaiting = 64;    ///< the rest waits in the lines
constexpr std::size_t kMaxLines = 256;     ///< the rest waits in the system's queue
/// How often deadlines are looked at, and a connection for which there was no descriptor.
constexpr int kTick = 50;

} // namespace

std::unique_ptr<Listener> Listener::Start(const ListenSettings& settings, WorkerStatus& status) {
    platform::Descriptor wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wake) {
        status = Failure("eventfd");
        return nullptr;
    }
    std::unique_ptr<Listener> listener(new Listener(settings, std::move(wake)));
    const bool hasHost = settings.hostDescriptor >= 0;
    if (hasHost && !listener->AdoptHost(settings.hostDescriptor)) {
        // Often one that has ended since: with a socket alone the worker would never end.
        status = {false, "no line to a host"};
        return nullptr;
    }
    status = {hasHost, {}};
    if (!settings.socket.empty() || !hasHost) {
        status = ListenOn(settings.socket, listener->m_socket);
        listener->m_path = status ? settings.socket : "";
        status.ready = status.ready || hasHost;
    }
    if (!status) {
        return nullptr;
    }
    listener->m_thread = std::thread([raw = listener.get()] { raw->Run(); });
    if (hasHost) {
        Packet ready;
        ready.kind = PacketKind::Acknowledge;
        // A host that is gone already shows in the first look at its line.
        static_cast<void>(SendPacketOn(settings.hostDescriptor, ready));
    }
    return listener;
}

Listener::Listener(const ListenSettings& settings, platform::Descriptor wake)
    : m_whenAlone(settings.whenAlone), m_wake(std::move(wake)) {}

Listener::~Listener() {
    Stop();
}

/// Whoever made the socket pair is taken for the host: the system has written that down.
bool Listener::AdoptHost(int descriptor) {
    if (!IsPacketSocket(descriptor)) {
        return false;
    }
    platform::Descriptor socket(descriptor);
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    std::shared_ptr<const Peer> peer = PeerOf(descriptor);
    if (peer != nullptr) {
        m_lines.push_back(
            {std::move(socket), std::move(peer), platform::Deadline(kHelloTime), true});
        m_endsAlone = true;
    }
    return m_endsAlone;
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
    m_offers.clear();
    m_lines.clear();
    if (!m_path.empty()) {
        unlink(m_path.c_str());
    }
    m_socket = {};
}

void Listener::Wake() {
    eventfd_write(m_wake.Get(), 1);
}

/// Nothing when the one that offers has gone.
std::shared_ptr<ChannelEnd> Listener::Accept(Link link, std::uint32_t channelId,
                                             TimeOuts timeOuts) {
    auto channel = std::make_shared<ChannelEnd>(std::move(link), Role::Takes, timeOuts);
    if (!channel->Acknowledge(channelId)) {
        return nullptr;
    }
    std::erase_if(m_taken, [](const auto& each) { return each.expired(); });
    m_taken.push_back(channel);
    return channel;
}

std::shared_ptr<ChannelEnd> Listener::Take(std::uint32_t channelId, TimeOuts timeOuts) {
    const platform::Deadline deadline(timeOuts.receive);
    std::unique_lock lock(m_mutex);
    while (!m_isStopped) {
        const auto offer =
            std::find_if(m_offers.begin(), m_offers.end(),
                         [&](const Offer& candidate) { return candidate.channelId == channelId; });
        if (offer != m_offers.end()) {
            Link link = std::move(offer->link);
            m_offers.erase(offer);
            Wake(); // there is room for another
            if (auto channel = Accept(std::move(link), channelId, timeOuts)) {
                return channel;
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

bool Listener::IsFull() const {
    return m_offers.size() >= kMaxWaiting;
}

/// The first entry is the eventfd, the last one the socket that listens.
std::vector<pollfd> Listener::Watched() {
    std::vector<pollfd> watched = {{m_wake.Get(), POLLIN, 0}};
    for (const HostLine& line : m_lines) {
        // Not listened to while there are too many offers: its packets wait.
        watched.push_back({IsFull() ? -1 : line.socket.Get(), POLLIN, 0});
        watched.push_back({line.peer->Watch(), POLLIN, 0});
    }
    for (const Offer& offer : m_offers) {
        watched.push_back({offer.link.socket.Get(), POLLIN, 0});
    }
    watched.push_back({m_lines.size() < kMaxLines ? m_socket.Get() : -1, POLLIN, 0});
    return watched;
}

void Listener::Run() {
    bool isTicking = false;
    while (true) {
        std::vector<pollfd> watched;
        {
            const std::lock_guard lock(m_mutex);
            if (m_isStopped) {
                return;
            }
            watched = Watched();
            isTicking = !m_offers.empty() || (m_endsAlone && m_lines.empty()) ||
                        std::any_of(m_lines.begin(), m_lines.end(),
                                    [](const HostLine& line) { return !line.isGreeted; });
        }
        platform::Wait(watched, isTicking ? kTick : -1);
        eventfd_t ignored = 0;
        eventfd_read(m_wake.Get(), &ignored);
        Hear();
        if (watched.back().revents != 0) {
            Accept();
        }
        if (m_endsAlone && IsAlone()) {
            m_endsAlone = false;
            if (m_whenAlone != nullptr) {
                m_whenAlone();
            }
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
        m_lines.push_back(
            {std::move(socket), std::move(peer), platform::Deadline(kHelloTime), false});
    }
}

void Listener::Hear() {
    const std::lock_guard lock(m_mutex);
    // Nothing may come on a channel before the answer but the end.
    std::erase_if(m_offers, [](const Offer& offer) {
        return IsReadable(offer.link.socket.Get()) || offer.link.peer->HasEnded() ||
               offer.deadline.HasPassed();
    });
    std::erase_if(m_lines, [this](HostLine& line) { return !HearLine(line); });
    m_changed.notify_all();
}

/// False when the line is to be dropped.
bool Listener::HearLine(HostLine& line) {
    // What a host that has ended still offers, is of no use.
    if (line.peer->HasEnded()) {
        return false;
    }
    while (!IsFull()) {
        ReceivedPacket received;
        const Traffic traffic = ReceivePacketFrom(line.socket.Get(), received);
        if (traffic == Traffic::Nothing) {
            return line.isGreeted || !line.deadline.HasPassed();
        }
        // A packet for whose descriptors there was no room is a channel that is refused.
        if (traffic == Traffic::Ended ||
            (traffic == Traffic::Done && !HearPacket(line, received))) {
            return false;
        }
    }
    return true;
}

/// False when no honest host would have sent that.
bool Listener::HearPacket(HostLine& line, ReceivedPacket& received) {
    const PacketKind kind = received.packet.kind;
    if (!line.isGreeted || kind != PacketKind::Offer) {
        return kind == PacketKind::Hello && !std::exchange(line.isGreeted, true);
    }
    platform::Descriptor& socket = received.descriptors[0];
    // A child that the host forked may offer as well: the system knows who made the socket.
    std::shared_ptr<const Peer> peer =
        IsPacketSocket(socket.Get()) ? PeerOf(socket.Get()) : nullptr;
    auto link =
        peer != nullptr ? AcceptLink(received, std::move(socket), std::move(peer)) : std::nullopt;
    if (link) {
        m_offers.push_back(
            {received.packet.id, std::move(*link), platform::Deadline(kTakeTime + kHelloTime)});
    }
    return true; // one that is refused finds its end of the channel closed
}

bool Listener::IsAlone() {
    const std::lock_guard lock(m_mutex);
    return m_lines.empty() && m_offers.empty() &&
           std::all_of(m_taken.begin(), m_taken.end(),
                       [](const auto& each) { return each.expired(); });
}

} // namespace nqp2::channel
