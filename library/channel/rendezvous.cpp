// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/rendezvous.h"

#include "platform/file_system.h"
#include "platform/wait.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace nqp2::channel {
namespace {

constexpr std::uint32_t kConnectTime = 5000; ///< milliseconds
constexpr std::uint32_t kLockTime = 5000;
constexpr int kBacklog = 128;

/// False with errno when the path is too long for the system.
bool FillAddress(const std::string& path, sockaddr_un& address) {
    address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof(address.sun_path)) {
        errno = path.empty() ? ENOENT : ENAMETOOLONG;
        return false;
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    return true;
}

const sockaddr* Plain(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

platform::Descriptor MakeSocket() {
    return platform::Descriptor(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
}

std::string FolderOf(const std::string& path) {
    const std::string above = platform::FolderPart(path);
    return above.empty() ? "." : above;
}

bool IsPrivate(int folder) {
    struct stat status {};
    return fstat(folder, &status) == 0 && status.st_uid == geteuid() &&
           (status.st_mode & 077U) == 0;
}

/// O_NOFOLLOW looks at the last name only when no slash follows it.
platform::Descriptor OpenFolder(std::string folder) {
    while (folder.size() > 1 && folder.back() == '/') {
        folder.pop_back();
    }
    return platform::Descriptor(
        open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

/// The folder's lock, so that no lock file is left; it goes with the result. Empty with errno.
platform::Descriptor LockFolder(const std::string& name) {
    platform::Descriptor folder = OpenFolder(name);
    return folder && platform::LockWithin(folder.Get(), platform::Deadline(kLockTime))
               ? std::move(folder)
               : platform::Descriptor();
}

/// A file that is no socket refuses connections too; it belongs to someone, and stays.
bool IsStale(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode) && !ConnectTo(path) &&
           errno == ECONNREFUSED;
}

/// Under the folder's lock: two workers could both find the same file stale, and the second would
/// remove what the first has just made.
bool BindReplacingStale(int socket, const std::string& path) {
    sockaddr_un address{};
    if (!FillAddress(path, address)) {
        return false;
    }
    if (bind(socket, Plain(address), sizeof(address)) == 0) {
        return true;
    }
    if (errno != EADDRINUSE || !IsStale(path)) {
        errno = EADDRINUSE;
        return false;
    }
    return unlink(path.c_str()) == 0 && bind(socket, Plain(address), sizeof(address)) == 0;
}

/// A socket whose queue is full makes the caller wait; each try has what is left of the time.
bool ConnectWithin(int socket, const sockaddr_un& address, const platform::Deadline& deadline) {
    return platform::Restarted([&] {
               const int left = std::max(deadline.Left(), 1); // 0 would be no limit
               const timeval limit{left / 1000, left % 1000 * 1000};
               return setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit)) != 0
                          ? -1
                          : connect(socket, Plain(address), sizeof(address));
           }) == 0;
}

using platform::Deadline;

/// A line on which many channels are being opened may have no room for a moment.
bool Offer(int line, const Packet& offer, std::span<const int> descriptors,
           const Deadline& deadline) {
    constexpr int kPause = 2; // milliseconds
    Traffic traffic = SendPacketOn(line, offer, descriptors);
    while (traffic == Traffic::Nothing && !deadline.HasPassed()) {
        platform::Wait({}, deadline.Left(kPause));
        traffic = SendPacketOn(line, offer, descriptors);
    }
    return traffic == Traffic::Done;
}

bool IsAcknowledged(int socket, const Peer& peer, std::uint32_t channelId,
                    const Deadline& deadline) {
    ReceivedPacket received;
    while (true) {
        const bool hasEnded = peer.HasEnded();
        const Traffic traffic = ReceivePacketFrom(socket, received);
        if (traffic != Traffic::Nothing) {
            return traffic == Traffic::Done && received.packet.kind == PacketKind::Acknowledge &&
                   received.packet.id == channelId;
        }
        if (hasEnded || deadline.HasPassed()) {
            return false;
        }
        pollfd watched[] = {{socket, POLLIN, 0}, {peer.Watch(), POLLIN, 0}};
        platform::Wait(watched, deadline.Left());
    }
}

} // namespace

WorkerStatus Failure(const std::string& what) {
    return {false, what + ": " + platform::SystemStatus(errno).reason};
}

platform::Descriptor ConnectTo(const std::string& path) {
    sockaddr_un address{};
    if (!FillAddress(path, address)) {
        return {};
    }
    platform::Descriptor end = MakeSocket();
    if (!end || !ConnectWithin(end.Get(), address, platform::Deadline(kConnectTime))) {
        const int error = errno;
        end = {};
        errno = error;
    }
    return end;
}

WorkerStatus ListenOn(const std::string& path, platform::Descriptor& listener) {
    const std::string name = FolderOf(path);
    // Held until the socket listens: before that it refuses connections as a stale one does.
    const platform::Descriptor folder = LockFolder(name);
    if (!folder) {
        return Failure(name);
    }
    if (!IsPrivate(folder.Get())) {
        return {false, name + ": the folder of a worker's socket must be the user's own alone"};
    }
    listener = MakeSocket();
    if (!listener || !BindReplacingStale(listener.Get(), path) || chmod(path.c_str(), 0600) != 0 ||
        listen(listener.Get(), kBacklog) != 0) {
        return Failure(path);
    }
    return {true, {}};
}

void RemoveStaleSocket(const std::string& path) {
    const platform::Descriptor folder = LockFolder(FolderOf(path));
    if (folder && IsStale(path)) {
        unlink(path.c_str());
    }
}

Line::~Line() {
    if (m_owner.IsThisProcess()) {
        // Children that the host forked may hold copies.
        shutdown(m_socket.Get(), SHUT_RDWR);
    }
}

std::shared_ptr<ChannelEnd> Line::Connect(std::uint32_t channelId, Sizes sizes,
                                          TimeOuts timeOuts) const {
    auto memory = MakeMemory(sizes.send, sizes.receive);
    auto ends = MakeSocketPair();
    if (!memory || !ends) {
        return nullptr;
    }
    const Deadline deadline(kTakeTime);
    const int descriptors[] = {ends->second.Get(), memory->sendFile.Get(),
                               memory->receiveFile.Get()};
    const bool isOffered = Offer(m_socket.Get(), Describe(PacketKind::Offer, channelId, *memory),
                                 descriptors, deadline);
    // The end of the worker, or its refusal, must show on the other one.
    ends->second = {};
    if (!isOffered || !IsAcknowledged(ends->first.Get(), *m_worker, channelId, deadline)) {
        return nullptr;
    }
    return std::make_shared<ChannelEnd>(
        Link{std::move(ends->first), m_worker, std::move(memory->send), std::move(memory->receive)},
        Role::Opens, timeOuts);
}

std::shared_ptr<const Line> LineTo(const std::string& path) {
    platform::Descriptor socket = ConnectTo(path);
    if (!socket) {
        return nullptr;
    }
    // Who answers later was alive now, so the number that the system names is still its own.
    std::shared_ptr<const Peer> worker = PeerOf(socket.Get());
    if (worker == nullptr || SendPacketOn(socket.Get(), Packet()) != Traffic::Done) {
        errno = EACCES;
        return nullptr;
    }
    return std::make_shared<const Line>(std::move(socket), std::move(worker));
}

} // namespace nqp2::channel
