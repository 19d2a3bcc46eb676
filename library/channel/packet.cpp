// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/packet.h"

#include "platform/wait.h"

#include <cerrno>
#include <cstring>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <vector>

namespace nqp2::channel {
namespace {

bool IsKnown(PacketKind kind) {
    return kind >= PacketKind::Hello && kind <= PacketKind::Offer;
}

bool IsDirection(std::uint32_t size, std::uint32_t slots) {
    return size > 0 && size <= kMaxMessageSize && slots == SlotsFor(size);
}

// One more than any packet has, so that a packet with too many is seen as that.
constexpr std::size_t kDescriptorRoom = kMaxDescriptors + 1;

union ControlBuffer {
    cmsghdr alignment;
    std::byte bytes[CMSG_SPACE(kDescriptorRoom * sizeof(int))];
};

bool IsTransient(int error) {
    return error == EAGAIN || error == ENOBUFS || error == ENOMEM || error == ETOOMANYREFS;
}

void Attach(msghdr& message, ControlBuffer& control, std::span<const int> descriptors) {
    message.msg_control = control.bytes;
    message.msg_controllen = CMSG_SPACE(descriptors.size_bytes());
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(descriptors.size_bytes());
    std::memcpy(CMSG_DATA(header), descriptors.data(), descriptors.size_bytes());
}

/// Owns all descriptors that came with the message.
std::vector<platform::Descriptor> TakeDescriptors(msghdr& message) {
    std::vector<platform::Descriptor> descriptors;
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) {
            continue;
        }
        const std::size_t count = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(header) + i * sizeof(int), sizeof(int));
            descriptors.emplace_back(number);
        }
    }
    return descriptors;
}

ssize_t ReceiveOnce(int socket, msghdr& message) {
    return platform::Restarted(
        [&] { return recvmsg(socket, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC); });
}

} // namespace

std::optional<Packet> ReadPacket(std::span<const std::byte> bytes, std::size_t descriptorCount) {
    Packet packet;
    if (bytes.size() != sizeof(packet)) {
        return std::nullopt;
    }
    std::memcpy(&packet, bytes.data(), sizeof(packet));
    if (!IsKnown(packet.kind) || descriptorCount != DescriptorsWith(packet.kind)) {
        return std::nullopt;
    }
    if (descriptorCount > 0 && !(IsDirection(packet.sendSize, packet.sendSlots) &&
                                 IsDirection(packet.receiveSize, packet.receiveSlots))) {
        return std::nullopt;
    }
    return packet;
}

Traffic SendPacketOn(int socket, const Packet& packet, std::span<const int> descriptors) {
    Packet copy = packet;
    iovec bytes{&copy, sizeof(copy)};
    msghdr message{};
    message.msg_iov = &bytes;
    message.msg_iovlen = 1;
    ControlBuffer control{};
    if (!descriptors.empty()) {
        Attach(message, control, descriptors);
    }
    const ssize_t count =
        platform::Restarted([&] { return sendmsg(socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL); });
    if (count >= 0) {
        return Traffic::Done;
    }
    return IsTransient(errno) ? Traffic::Nothing : Traffic::Ended;
}

Traffic ReceivePacketFrom(int socket, ReceivedPacket& received) {
    // One byte more than a packet, so that a longer one is not taken for it.
    std::array<std::byte, sizeof(Packet) + 1> buffer{};
    iovec bytes{buffer.data(), buffer.size()};
    ControlBuffer control{};
    msghdr message{};
    message.msg_iov = &bytes;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes;
    message.msg_controllen = sizeof(control.bytes);
    ssize_t count = ReceiveOnce(socket, message);
    if (count < 0 && errno == ECONNRESET) {
        // Told once, ahead of the packets that arrived before.
        count = ReceiveOnce(socket, message);
    }
    if (count < 0) {
        return IsTransient(errno) ? Traffic::Nothing : Traffic::Ended;
    }
    std::vector<platform::Descriptor> descriptors = TakeDescriptors(message);
    const auto packet =
        ReadPacket(std::span(buffer).first(static_cast<std::size_t>(count)), descriptors.size());
    if ((message.msg_flags & MSG_CTRUNC) != 0 && descriptors.size() < kDescriptorRoom) {
        return Traffic::Lost;
    }
    if ((message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0 || !packet) {
        return Traffic::Ended;
    }
    received = {};
    received.packet = *packet;
    std::move(descriptors.begin(), descriptors.end(), received.descriptors.begin());
    return Traffic::Done;
}

std::optional<std::pair<platform::Descriptor, platform::Descriptor>> MakeSocketPair() {
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        return std::nullopt;
    }
    return std::pair(platform::Descriptor(ends[0]), platform::Descriptor(ends[1]));
}

bool IsPacketSocket(int socket) {
    int domain = 0;
    int type = 0;
    socklen_t size = sizeof(int);
    return getsockopt(socket, SOL_SOCKET, SO_DOMAIN, &domain, &size) == 0 && domain == AF_UNIX &&
           getsockopt(socket, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_SEQPACKET;
}

bool IsReadable(int socket) {
    return platform::HasNews(socket, POLLIN);
}

bool IsCrowded(int socket) {
    int waiting = 0;
    int room = 0;
    socklen_t size = sizeof(int);
    return ioctl(socket, SIOCOUTQ, &waiting) != 0 ||
           getsockopt(socket, SOL_SOCKET, SO_SNDBUF, &room, &size) != 0 || waiting > room / 2;
}

} // namespace nqp2::channel
