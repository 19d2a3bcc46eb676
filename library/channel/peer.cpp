// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/peer.h"

#include "platform/wait.h"

#include <cerrno>
#include <map>
#include <mutex>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace nqp2::channel {
namespace {

constexpr long kMaxChannelsOfPeer = 4096;

struct Directory {
    std::mutex mutex;
    std::map<pid_t, std::weak_ptr<const Peer>> peers;
};

/// Never destroyed: threads of the library may outlive static objects.
Directory& Peers() {
    static auto& directory = *new Directory;
    return directory;
}

/// Older kernels, and filters of system calls that do not know the call.
bool IsMissingCall(int error) {
    return error == ENOSYS || error == EPERM;
}

} // namespace

std::shared_ptr<const Peer> PeerWithNumber(pid_t number) {
    Directory& directory = Peers();
    const std::lock_guard lock(directory.mutex);
    std::erase_if(directory.peers, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<const Peer>& entry = directory.peers[number];
    std::shared_ptr<const Peer> peer = entry.lock();
    // The number of a process that has ended may be another's by now.
    if (peer == nullptr || peer->HasEnded()) {
        platform::Descriptor process = OpenProcess(number);
        peer = process || IsMissingCall(errno) ? std::make_shared<const Peer>(std::move(process))
                                               : nullptr;
        entry = peer;
    }
    return peer;
}

bool Peer::HasEnded() const {
    return platform::HasNews(Watch(), POLLIN);
}

bool HasTooManyChannels(const std::shared_ptr<const Peer>& peer) {
    return peer.use_count() > kMaxChannelsOfPeer; // each channel holds it once
}

std::shared_ptr<const Peer> PeerOf(int connectedSocket) {
    ucred credentials{};
    socklen_t size = sizeof(credentials);
    if (getsockopt(connectedSocket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0 ||
        credentials.uid != geteuid()) {
        return nullptr;
    }
    std::shared_ptr<const Peer> peer = PeerWithNumber(credentials.pid);
    return peer != nullptr && !HasTooManyChannels(peer) ? peer : nullptr;
}

// Called by number: the C library's header declares these calls only since 2.36, and there not for
// C++.

platform::Descriptor OpenProcess(pid_t process) {
    return platform::Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0U)));
}

bool SignalProcess(int process, int signal) {
    return syscall(SYS_pidfd_send_signal, process, signal, nullptr, 0U) == 0;
}

} // namespace nqp2::channel
